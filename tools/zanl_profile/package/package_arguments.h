// SPDX-License-Identifier: Apache-2.0
// What the package commands take from the command line alike.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace zan::tool {

// FILE: the package, which has to be given.
void add_package_argument(CLI::App& app, std::string& package);

// NAME=FILE: a section's name, and the file with its bytes ("-": standard input). Any number of them.
CLI::Option* add_named_files(CLI::App& app, std::vector<std::string>& arguments);

struct NamedFile {
    std::string name;
    std::string file;
};
// The name ends at the first "=". Throws Failure for an argument with none, or with nothing on one side of
// it.
std::vector<NamedFile> parse_named_files(const std::vector<std::string>& arguments);

// PACKAGE:SECTION: a section as a place for a stream.
struct SectionPlace {
    std::string package;
    std::string section;
};
// The package's name ends at the first ":" that has a name ending in "zanx", or an existing file's, before
// it. Empty for a plain path: one that exists, or one without such a ":".
std::optional<SectionPlace> parse_section_place(const std::string& argument);

} // namespace zan::tool
