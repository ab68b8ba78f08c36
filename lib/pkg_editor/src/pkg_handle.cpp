// SPDX-License-Identifier: Apache-2.0
#include "pkg_handle.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

namespace zan::pkg {

void report_error(const zan_pkg_file* pkg, const char* format, ...) {
    if (!pkg->show_error)
        return;
    va_list arguments;
    va_start(arguments, format);
    std::vfprintf(stderr, format, arguments);
    va_end(arguments);
}

void report_progress(const zan_pkg_file* pkg, const char* format, ...) {
    if (!pkg->show_info)
        return;
    va_list arguments;
    va_start(arguments, format);
    std::vfprintf(stdout, format, arguments);
    va_end(arguments);
}

const char* elf_message(int error) {
    const char* text = elf_errmsg(error);
    return text ? text : "(null)";
}

void report_elf_failure(const zan_pkg_file* pkg, const char* function) {
    constexpr int last_error = -1;
    report_error(pkg, " %s ()  failed : %s.", function, elf_message(last_error));
}

Elf_Data* name_table(const zan_pkg_file* pkg) {
    // By the library's function: an index that doesn't fit the file's header stands in section 0.
    std::size_t index = 0;
    Elf_Scn* section = elf_getshdrstrndx(pkg->elf, &index) == 0 ? elf_getscn(pkg->elf, index) : nullptr;
    Elf_Data* data = section ? elf_getdata(section, nullptr) : nullptr;
    if (data && has_bytes(data))
        return data;
    if (pkg->show_info) // unlike all other progress, on standard error
        std::fputs("No string table section\n", stderr);
    return nullptr;
}

std::string_view name_at(const Elf_Data* table, std::size_t offset) {
    if (offset >= table->d_size)
        return {};
    const char* name = static_cast<const char*>(table->d_buf) + offset;
    const void* end = std::memchr(name, 0, table->d_size - offset);
    return end ? std::string_view(name, static_cast<const char*>(end)) : std::string_view();
}

bool copy_header(Elf_Scn* section, Elf32_Shdr& header) {
    const void* found = elf32_getshdr(section);
    if (found)
        std::memcpy(&header, found, sizeof header);
    return found != nullptr;
}

namespace {

// Takes a section into the index, unless its name can't be read: no search finds such a section.
void take_in(NameIndex& index, const Elf_Data* table, Elf_Scn* section) {
    Elf32_Shdr header;
    const bool has_header = copy_header(section, header);
    const std::string_view name = has_header ? name_at(table, header.sh_name) : std::string_view();
    if (name.data())
        index.add(name, section);
}

// The index of all sections; null if there is no memory for it.
NameIndex* make_index(const zan_pkg_file* pkg, const Elf_Data* table) {
    try {
        auto index = std::make_unique<NameIndex>();
        for (Elf_Scn* section = elf_nextscn(pkg->elf, nullptr); section;
             section = elf_nextscn(pkg->elf, section))
            take_in(*index, table, section);
        return index.release();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

Elf_Scn* search_headers(const zan_pkg_file* pkg, const Elf_Data* table, const char* name) {
    const std::size_t size_with_nul = std::strlen(name) + 1;
    const char* names = static_cast<const char*>(table->d_buf);
    for (Elf_Scn* section = elf_nextscn(pkg->elf, nullptr); section;
         section = elf_nextscn(pkg->elf, section)) {
        Elf32_Shdr header;
        if (!copy_header(section, header) || header.sh_name >= table->d_size)
            continue;
        // The NUL is compared too, so a match lies inside the table and ends there.
        if (table->d_size - header.sh_name >= size_with_nul &&
            std::memcmp(names + header.sh_name, name, size_with_nul) == 0)
            return section;
    }
    return nullptr;
}

} // namespace

Elf_Scn* section_by_name(const zan_pkg_file* pkg, const char* name) {
    const Elf_Data* table = name && !pkg->broken ? name_table(pkg) : nullptr;
    if (!table)
        return nullptr;
    if (pkg->writable && !pkg->name_index)
        pkg->name_index = make_index(pkg, table);
    return pkg->name_index ? pkg->name_index->find(name) : search_headers(pkg, table, name);
}

void index_section(const zan_pkg_file* pkg, Elf_Scn* section) {
    const Elf_Data* table = pkg->name_index ? name_table(pkg) : nullptr;
    if (!table)
        return forget_index(pkg);
    try {
        take_in(*pkg->name_index, table, section);
    } catch (const std::bad_alloc&) {
        forget_index(pkg); // one that lacks a section would be wrong
    }
}

void forget_index(const zan_pkg_file* pkg) {
    delete std::exchange(pkg->name_index, nullptr);
}

DataFault find_data(Elf_Scn* section, Elf_Data*& data) {
    data = elf_getdata(section, nullptr);
    if (!data)
        return DataFault::missing;
    return elf_getdata(section, data) ? DataFault::multiple : DataFault::none;
}

Elf_Data* valid_data(const zan_pkg_file* pkg, Elf_Scn* section) {
    Elf_Data* data = nullptr;
    switch (find_data(section, data)) {
        case DataFault::none:
            return data;
        case DataFault::missing:
            report_error(pkg, "No data for section.\n");
            return nullptr;
        case DataFault::multiple:
            report_error(pkg, "Multiple data descriptors for section.\n");
            return nullptr;
    }
    return nullptr;
}

// Without memory for the section's header elf_newscn() returns the section all the same, and the library's
// other functions crash on it. Only the last error shows it.
Elf_Scn* new_section(zan_pkg_file* pkg) {
    constexpr int pending_error = 0;
    elf_errno(); // forgets earlier failures
    Elf_Scn* section = pkg->broken ? nullptr : elf_newscn(pkg->elf);
    if (section && !elf_errmsg(pending_error))
        return section;
    pkg->broken = true;
    report_elf_failure(pkg, "elf_newscn");
    return nullptr;
}

// A section of type SHT_NOBITS claims a size and has no bytes in the file.
bool has_bytes(const Elf_Data* data) {
    return data->d_size == 0 || data->d_buf != nullptr;
}

void describe_bytes(Elf_Data* data, void* bytes, std::size_t size) {
    constexpr std::size_t alignment = 128; // part of the format: readers find sections at multiples of it
    data->d_buf = bytes;
    data->d_size = size;
    data->d_type = ELF_T_BYTE;
    data->d_off = 0;
    data->d_align = alignment;
    data->d_version = EV_CURRENT;
}

void* allocate_block(zan_pkg_file* pkg, std::size_t size) {
    const std::size_t size_with_link = size + sizeof(void*);
    void** block = static_cast<void**>(std::malloc(size_with_link));
    if (!block) {
        std::fprintf(stderr, "Could not allocated %zu bytes of memory\n", size_with_link);
        return nullptr;
    }
    *block = pkg->allocated_blocks; // a list through the first words, as the handle is plain data
    pkg->allocated_blocks = block;
    return block + 1;
}

} // namespace zan::pkg
