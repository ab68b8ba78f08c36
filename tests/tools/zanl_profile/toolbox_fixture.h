// SPDX-License-Identifier: Apache-2.0
// The toolbox as a user runs it, in a folder of the test.
#pragma once

#include <elf.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "make_package.h"
#include "run_program.h"
#include "temp_dir.h"
#include "whole_file.h"

class Toolbox : public testing::Test {
  protected:
    // `zanl-profile` with these arguments.
    Outcome run(const std::vector<std::string>& arguments) const {
        return run_program(ZAN_TOOLBOX, arguments, dir.path());
    }
    // A line of a shell, where $T is the toolbox.
    Outcome shell(const std::string& line) const {
        return run_program("/bin/bash", {"-c", std::string("T=") + ZAN_TOOLBOX + "; " + line}, dir.path());
    }
    void write(const std::string& name, const std::string& bytes) const {
        std::filesystem::create_directories(std::filesystem::path(dir.path(name)).parent_path());
        write_file(dir.path(name), bytes);
    }
    std::string read(const std::string& name) const { return read_file(dir.path(name)); }
    bool exists(const std::string& name) const {
        return std::filesystem::exists(std::filesystem::symlink_status(dir.path(name)));
    }
    // Makes the package `name`.
    void make(const std::string& name, const PackageSections& sections) const {
        make_package(dir.path(name), sections);
    }
    // Changes the header of a section of a package that the library has made; sections count from 0 here.
    template <typename Change>
    void change_header(const std::string& name, std::size_t section, Change change) const {
        constexpr std::size_t own_sections = 3; // null, names, and the nameless one
        std::string file = read(name);
        Elf32_Ehdr header;
        std::memcpy(&header, file.data(), sizeof header);
        Elf32_Shdr changed;
        char* const place = file.data() + header.e_shoff + (own_sections + section) * sizeof changed;
        std::memcpy(&changed, place, sizeof changed);
        change(changed);
        std::memcpy(place, &changed, sizeof changed);
        write(name, file);
    }
    // Names and bytes of all sections, read with the library.
    PackageSections sections(const std::string& name) const {
        zan_pkg_file* const package = zan_pkg_open_file(dir.path(name).c_str(), ZAN_PKG_READ);
        std::string names(1 << 20, '\0');
        EXPECT_EQ(zan_pkg_section_names(package, names.data(), names.size()), 1);
        names.resize(names.find('\0'));
        PackageSections found;
        for (std::size_t begin = 0; begin < names.size();) {
            const std::size_t end = std::min(names.find('\n', begin), names.size());
            const std::string section = names.substr(begin, end - begin);
            std::size_t size = 0;
            EXPECT_EQ(zan_pkg_section_exists(package, section.c_str(), &size), 1);
            std::string bytes(size + 1, '#');
            EXPECT_EQ(zan_pkg_read_section(package, section.c_str(), bytes.data(), bytes.size()), 1);
            bytes.pop_back();
            found.emplace_back(section, bytes);
            begin = end + 1;
        }
        zan_pkg_close_file(package);
        return found;
    }
    // All in a folder of the test: files with their bytes, folders with a slash at the end of their names.
    std::map<std::string, std::string> tree(const std::string& folder = ".") const {
        namespace fs = std::filesystem;
        std::map<std::string, std::string> found;
        for (const auto& entry : fs::recursive_directory_iterator(dir.path(folder))) {
            const std::string name = fs::relative(entry.path(), dir.path(folder));
            if (entry.is_directory())
                found[name + "/"];
            else
                found[name] = entry.is_regular_file() ? read_file(entry.path()) : "";
        }
        return found;
    }

    const TempDir dir;
};

using Tree = std::map<std::string, std::string>;

// A run that prints nothing and succeeds.
const inline Outcome silent_success = {"", "", "0"};

inline Outcome trouble(const std::string& text) {
    return {"", "zanl-profile: " + text + "\n", "2"};
}
inline Outcome not_found(const std::string& text) {
    return {"", "zanl-profile: " + text + "\n", "1"};
}
