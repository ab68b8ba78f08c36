// SPDX-License-Identifier: Apache-2.0
// What the package functions share: the handle, its messages, and checked access to a package's parts.
#pragma once

#include <libelf.h>

#include <cstddef>
#include <string_view>

#include "pkg_editor.h"
#include "pkg_name_index.h"
#include "pkg_names.h"

// Plain data from malloc, since callers may release it with free().
struct zan_pkg_file {
    const char* fname; // the caller's; null for a package in memory
    int fd;            // -1 for a package in memory
    Elf* elf;
    void* allocated_blocks; // file buffers; the first word of each points to the next one
    // Of a writable package, whose handle isn't released by free(). Null until a name is looked up.
    mutable zan::pkg::NameIndex* name_index;
    bool writable : 1;
    bool dirty : 1; // set by the first edit, and never cleared
    bool show_error : 1;
    bool show_info : 1;
    bool broken : 1; // has a section that would crash the library; may only be closed
};

namespace zan::pkg {

// Messages under the show flags; `format` is that of printf.
[[gnu::format(printf, 2, 3)]] void report_error(const zan_pkg_file* pkg, const char* format, ...);
[[gnu::format(printf, 2, 3)]] void report_progress(const zan_pkg_file* pkg, const char* format, ...);

// The library's text for an error number, never null. The number is that of an elf_errmsg call.
const char* elf_message(int error);
// Reports a failed library call under show_error, with the library's last error.
void report_elf_failure(const zan_pkg_file* pkg, const char* function);

// The descriptor of the section-name table; null if there is none, which is reported under show_info. The
// table of a writable package is a copy from malloc.
Elf_Data* name_table(const zan_pkg_file* pkg);

// The name at an offset of the table; empty, with null data, where the table has no such name.
std::string_view name_at(const Elf_Data* table, std::size_t offset);

// Copies a section's header; false if it has none of the 32-bit class. A damaged file may put headers at odd
// addresses, so they are never used in place.
bool copy_header(Elf_Scn* section, Elf32_Shdr& header);

// The first section of that name, or null. Looks through all headers, or for a writable package, in an index.
Elf_Scn* section_by_name(const zan_pkg_file* pkg, const char* name);
// Has to be called for each section that was added, as it is then; and when names have changed.
void index_section(const zan_pkg_file* pkg, Elf_Scn* section);
void forget_index(const zan_pkg_file* pkg);

// Calls `visit(section, name)` for each section that lists show, in order, until it returns false.
template <class Visit>
void for_each_listed_section(const zan_pkg_file* pkg, Visit visit) {
    const Elf_Data* table = pkg->broken ? nullptr : name_table(pkg);
    if (!table)
        return;
    for (Elf_Scn* section = elf_nextscn(pkg->elf, nullptr); section;
         section = elf_nextscn(pkg->elf, section)) {
        Elf32_Shdr header;
        if (!copy_header(section, header))
            continue;
        const std::string_view name = name_at(table, header.sh_name);
        if (!name.empty() && name != name_table_section && !visit(section, name))
            return;
    }
}

// Only a section with exactly one descriptor is valid.
enum class DataFault { none, missing, multiple };
DataFault find_data(Elf_Scn* section, Elf_Data*& data);

// The same, with the message for a fault; null if there is one.
Elf_Data* valid_data(const zan_pkg_file* pkg, Elf_Scn* section);

// Whether the descriptor's bytes are there to be read: a section may have a size and no bytes.
bool has_bytes(const Elf_Data* data);

// A new section; null on failure, which is reported and may break the package.
Elf_Scn* new_section(zan_pkg_file* pkg);

// Makes a descriptor hold `size` bytes of plain data at `bytes`.
void describe_bytes(Elf_Data* data, void* bytes, std::size_t size);

// A new block of `size` bytes that lives until the package is closed; null if there is no memory, which is
// reported on standard error.
void* allocate_block(zan_pkg_file* pkg, std::size_t size);

// Writes edits to the file; false if that fails, which is reported on standard error.
bool flush_elf_edits(zan_pkg_file* pkg);

} // namespace zan::pkg
