// SPDX-License-Identifier: Apache-2.0
// A folder to pack from and to unpack into.
#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "capture.h"
#include "pkg_editor.h"
#include "stream_records.h"
#include "temp_dir.h"
#include "whole_file.h"

// The result of a call, and its text on standard error.
struct Called {
    int result;
    std::string text;
    friend bool operator==(const Called&, const Called&) = default;
    friend void PrintTo(const Called& called, std::ostream* os) {
        *os << called.result << " " << called.text;
    }
};

class StreamTest : public testing::Test {
  protected:
    // The test works inside its folder, so that paths in streams and messages are short.
    StreamTest() : m_before(std::filesystem::current_path()) { std::filesystem::current_path(dir.path()); }
    ~StreamTest() override { std::filesystem::current_path(m_before); }

    template <typename Call>
    static Called called(Call call) {
        Called outcome{};
        outcome.text = stderr_of([&] { outcome.result = call(); });
        return outcome;
    }
    static Called pack(const std::vector<const char*>& paths, const char* output = "out") {
        std::vector<const char*> ended = paths;
        ended.push_back(nullptr);
        return called([&] { return zan_pkg_pack(output, ended.data()); });
    }
    static Called unpack(const char* input = "out", const char* directory = "to") {
        return called([&] { return zan_pkg_unpack(input, directory); });
    }
    static Called unpack_bytes(const std::string& stream, const char* directory = "to") {
        return called([&] { return zan_pkg_unpack_buffer(stream.data(), stream.size(), directory); });
    }
    // Puts the stream into a file and unpacks that.
    static Called unpack_as_file(const std::string& stream, const char* directory = "to") {
        write_file("stream", stream);
        return unpack("stream", directory);
    }

    // All below a folder: files with their bytes, folders with a slash at the end of their names and no
    // bytes.
    static std::map<std::string, std::string> tree(const std::string& folder) {
        std::map<std::string, std::string> found;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
            const std::string name = std::filesystem::relative(entry.path(), folder);
            if (entry.is_directory())
                found[name + "/"];
            else
                found[name] = read_file(entry.path());
        }
        return found;
    }

    const TempDir dir;

  private:
    const std::filesystem::path m_before;
};

const inline Called good = {1, ""};

// Takes the rights of root away during its lifetime, so that permissions count.
class PlainUser {
  public:
    PlainUser() {
        if (::geteuid() == 0 && ::seteuid(plain_user) != 0)
            throw std::runtime_error("can't become a plain user");
    }
    PlainUser(const PlainUser&) = delete;
    PlainUser& operator=(const PlainUser&) = delete;
    ~PlainUser() {
        if (::getuid() == 0 && ::seteuid(0) != 0)
            std::abort();
    }

  private:
    static constexpr uid_t plain_user = 65534;
};
