// SPDX-License-Identifier: Apache-2.0
// All sections of a package at once, and edits that report whether they reached the disk: for C++ callers who
// need more than the plain functions offer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "pkg_editor.h"

namespace zan::pkg {

enum class Contents {
    in_file, // all bytes are there
    none,    // it has a size but no bytes, as memory that a program finds empty
    missing, // some or all of its bytes are beyond the end of the file
};

struct SectionInfo {
    std::string name;
    std::uint64_t offset; // of its bytes in the file
    std::size_t size;     // in bytes
    Contents contents;
    std::size_t index;  // as in the file's table of sections, which begins with 0
    std::uint32_t type; // SHT_PROGBITS and so on
};

// Whether the file is an ELF file of the 32-bit class with a table of section names. Others can be opened for
// reading, but nothing is found in them, and they must not be opened for writing.
bool is_package(const zan_pkg_file* pkg);

// Whether it is an ELF file of the 64-bit class, which is none of a package's.
bool is_of_64_bits(const zan_pkg_file* pkg);
// Whether it has program headers: a program or a library. Its parts have to lie where these say, and an edit
// would move them.
bool is_program(const zan_pkg_file* pkg);

// Opens the package for editing; nothing is printed. Null on failure, with errno if the system has a reason:
// also for a file without a table of section names, or with one that can't be read.
zan_pkg_file* open_to_edit(const char* filename);

// All sections that lists show, in order, as their headers describe them: their bytes are not read. The
// package must have been opened from a file, and have no edits.
std::vector<SectionInfo> list_sections(const zan_pkg_file* pkg);

// The package's open file, which stays the package's.
int file_descriptor(const zan_pkg_file* pkg);

// Writes the edits to the disk and closes the package. Returns an empty text, or why that failed; the handle
// is gone in either case. Nothing is printed. A file of more than `max_size` bytes is not begun. Gaps between
// sections count: each section's header asks for an alignment of its own, of up to 2 GiB.
std::string close_edited(zan_pkg_file* pkg, std::uint64_t max_size);

// Closes the package without writing the edits. Nothing is printed.
void discard_edited(zan_pkg_file* pkg);

} // namespace zan::pkg
