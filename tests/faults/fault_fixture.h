// SPDX-License-Identifier: Apache-2.0
// A folder for runs that meet faults, whose contents can be restored before each run.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <set>
#include <string>

#include "temp_dir.h"
#include "whole_file.h"

// Files with their bytes, folders with a slash at the end of their names.
using Tree = std::map<std::string, std::string>;

using Words = std::set<std::string>;

class FaultTest : public testing::Test {
  protected:
    std::string read(const std::string& name) const { return read_file(dir.path(name)); }
    void write(const std::string& name, const std::string& bytes) const {
        std::filesystem::create_directories(std::filesystem::path(dir.path(name)).parent_path());
        write_file(dir.path(name), bytes);
    }
    Tree tree() const {
        namespace fs = std::filesystem;
        Tree found;
        for (const auto& entry : fs::recursive_directory_iterator(dir.path())) {
            const std::string name = fs::relative(entry.path(), dir.path());
            if (entry.is_directory())
                found[name + "/"];
            else
                found[name] = read_file(entry.path());
        }
        return found;
    }
    // Makes the folder hold just these.
    void restore(const Tree& wanted) const {
        namespace fs = std::filesystem;
        if (tree() == wanted) // true after most runs, and comparing takes less time than writing
            return;
        for (const auto& entry : fs::directory_iterator(dir.path()))
            fs::remove_all(entry.path());
        for (const auto& [name, bytes] : wanted) {
            if (name.ends_with('/'))
                fs::create_directories(dir.path(name));
            else
                write(name, bytes);
        }
    }

    const TempDir dir;
};
