// SPDX-License-Identifier: Apache-2.0
// Packages and files of a test's own.
#pragma once

#include <elf.h>
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "capture.h"
#include "pkg_editor.h"
#include "temp_dir.h"
#include "whole_file.h"

using Bytes = std::string;

struct CloseFile {
    void operator()(zan_pkg_file* pkg) const { zan_pkg_close_file(pkg); }
};
using Package = std::unique_ptr<zan_pkg_file, CloseFile>;

constexpr int create_mode = ZAN_PKG_READ_WRITE | ZAN_PKG_CREATE;

class PackageTest : public testing::Test {
  protected:
    Package open(int mode) const { return Package(zan_pkg_open_file(path.c_str(), mode)); }
    // Makes the package at `path`; the bytes are any that live until the call returns.
    void make(const std::vector<std::pair<std::string, Bytes>>& sections) const {
        const Package pkg = open(create_mode);
        for (const auto& [name, bytes] : sections)
            ASSERT_EQ(zan_pkg_add_data_section(pkg.get(), name.c_str(), bytes.data(), bytes.size()), 1);
    }
    // The section's bytes; "(none)" if there is no such section, "(unreadable)" if it can't be read.
    static Bytes section(zan_pkg_file* pkg, const std::string& name) {
        std::size_t size = 0;
        if (!zan_pkg_section_exists(pkg, name.c_str(), &size))
            return "(none)";
        Bytes bytes(size + 1, 'x');
        if (!zan_pkg_read_section(pkg, name.c_str(), bytes.data(), bytes.size()))
            return "(unreadable)";
        EXPECT_EQ(bytes.back(), '\0');
        bytes.pop_back();
        return bytes;
    }
    Bytes section(const std::string& name) const { return section(open(ZAN_PKG_READ).get(), name); }
    static std::string names(zan_pkg_file* pkg) {
        std::string buffer(1 << 20, '\0');
        EXPECT_EQ(zan_pkg_section_names(pkg, buffer.data(), buffer.size()), 1);
        return buffer.substr(0, buffer.find('\0'));
    }
    std::string names() const { return names(open(ZAN_PKG_READ).get()); }

    // The file as a table of headers, to be looked at and damaged.
    template <class T>
    static T get(const Bytes& file, std::size_t offset) {
        T value;
        EXPECT_LE(offset + sizeof(T), file.size());
        std::memcpy(&value, file.data() + offset, sizeof(T));
        return value;
    }
    template <class T>
    static void put(Bytes& file, std::size_t offset, const T& value) {
        ASSERT_LE(offset + sizeof(T), file.size());
        std::memcpy(file.data() + offset, &value, sizeof(T));
    }
    static std::size_t header_offset(const Bytes& file, std::size_t index) {
        return get<Elf32_Ehdr>(file, 0).e_shoff + index * sizeof(Elf32_Shdr);
    }
    static Elf32_Shdr header(const Bytes& file, std::size_t index) {
        return get<Elf32_Shdr>(file, header_offset(file, index));
    }
    // Changes one section's header in the file at `path`.
    template <class Change>
    void change_header(std::size_t index, Change change) const {
        Bytes file = read_file(path);
        Elf32_Shdr changed = header(file, index);
        change(changed);
        put(file, header_offset(file, index), changed);
        write_file(path, file);
    }

    const TempDir dir;
    const std::string path = dir.path("design.zanx");
};

// Indices of the sections of a package that this library has made.
constexpr std::size_t name_table_index = 1;
constexpr std::size_t hidden_index = 2;
constexpr std::size_t first_index = 3;
