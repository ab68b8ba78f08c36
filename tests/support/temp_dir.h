// SPDX-License-Identifier: Apache-2.0
// A folder of a test's own, removed with all it holds when the test is over.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

class TempDir {
  public:
    TempDir() {
        std::string pattern = (std::filesystem::temp_directory_path() / "zan_test_XXXXXX").string();
        if (!::mkdtemp(pattern.data()))
            throw std::runtime_error("cannot make " + pattern);
        m_path = pattern;
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    const std::string& path() const { return m_path; }
    // The path of an entry in the folder.
    std::string path(const std::string& name) const { return m_path + "/" + name; }

  private:
    std::string m_path;
};
