// The commands of `zanl-profile package`, one function each. A command that can't do its work throws Failure.
#pragma once

#include <string>
#include <vector>

namespace zan::tool {

// NAME=FILE arguments stand as they were given. Paths may be "-" for standard input or output where a stream
// of bytes is meant.

struct CreateOptions {
    std::string package;
    std::vector<std::string> sections; // NAME=FILE
    std::string from;                  // a folder laid out as a sample is; may be empty
};
// Makes a package of these sections, in place of a file of its name.
void create_package(const CreateOptions& options);

struct ListOptions {
    std::string package;
    bool json = false;
};
// Prints each section with its size and what it is.
void list_package(const ListOptions& options);

struct ShowOptions {
    std::string package;
    std::string section;
};
// Writes the section's bytes to standard output.
void show_section(const ShowOptions& options);

struct ExtractOptions {
    std::string package;
    std::string folder;
    std::vector<std::string> sections; // all of them if it is empty
};
// Writes sections into files of a folder.
void extract_sections(const ExtractOptions& options);

struct EditOptions {
    std::string package;
    std::vector<std::string> sections; // NAME=FILE
};
void add_sections(const EditOptions& options);
void update_sections(const EditOptions& options);

struct CopyOptions {
    std::string from;
    std::string to;
    std::vector<std::string> sections;
};
// Adds sections of one package to another, or replaces those of their names there.
void copy_sections(const CopyOptions& options);

struct PackOptions {
    std::string output; // a file, "-", or PACKAGE:SECTION
    std::vector<std::string> paths;
    std::string directory; // that the paths are relative to; may be empty
};
// Packs files and folders into a directory stream.
void pack_stream(const PackOptions& options);

struct UnpackOptions {
    std::string stream; // a file, "-", or PACKAGE:SECTION
    std::string folder;
    bool trust_names = false;
    bool dry_run = false;
    bool json = false; // of the dry run
};
// Unpacks a directory stream into a folder.
void unpack_stream(const UnpackOptions& options);

} // namespace zan::tool
