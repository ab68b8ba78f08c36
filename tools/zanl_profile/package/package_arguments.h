// What the command line says of sections.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zan::tool {

// NAME=FILE: what a section is to be called, and where its bytes are ("-": standard input).
struct NamedFile {
    std::string name;
    std::string file;
};
// The name ends at the first "=". Throws Failure if there is none, or nothing on one side of it.
NamedFile parse_named_file(const std::string& argument);

// PACKAGE:SECTION: a section as a place for a stream.
struct SectionPlace {
    std::string package;
    std::string section;
};
// Empty for a plain path: one that exists, or one without a ":" behind a name that ends in "zanx" or is an
// existing file's.
std::optional<SectionPlace> parse_section_place(const std::string& argument);

} // namespace zan::tool
