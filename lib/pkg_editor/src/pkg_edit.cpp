// SPDX-License-Identifier: Apache-2.0
// Adding sections and replacing their contents.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "contract.h"
#include "pkg_handle.h"

using namespace zan::pkg;

namespace {

constexpr const char* read_only = "Cannot add section to read-only binary\n";
constexpr const char* section_missing = "Section '%s' does not exist.\n";

// What an empty section points to. Null would leave the old size of a section that the file has already.
char no_bytes;

// Whether a section can hold the caller's bytes: sizes have 32 bits in the file.
bool can_hold(const void* data, std::size_t size) {
    return size <= std::numeric_limits<Elf32_Word>::max() && (data || size == 0);
}

// The library doesn't change the bytes, but takes them as if it could.
void* bytes_of(const void* data, std::size_t size) {
    return size == 0 ? &no_bytes : const_cast<void*>(data);
}

// Whether a section of that name can be added; reports why not.
bool check_addable(const zan_pkg_file* pkg, const char* name) {
    if (!pkg->writable) {
        report_error(pkg, read_only);
        return false;
    }
    if (section_by_name(pkg, name)) {
        report_error(pkg, "Section '%s' already exists.\n", name);
        return false;
    }
    return true;
}

// Appends a name to the name table and returns its offset; 0 on failure, as offset 0 is the empty name.
std::size_t append_name(zan_pkg_file* pkg, const char* name) {
    const std::size_t length = std::strlen(name);
    if (length > ZAN_PKG_MAX_SECTION_NAME) {
        report_error(pkg, "Section name length %u exceeds limit of %d bytes. Section name is %s\n",
                     static_cast<unsigned>(length), ZAN_PKG_MAX_SECTION_NAME, name);
        return 0;
    }
    Elf_Data* data = name_table(pkg);
    ZAN_CONTRACT(data != nullptr, "data");
    const std::size_t offset = data->d_size;
    const std::size_t new_size = offset + length + 1;
    void* grown = std::realloc(data->d_buf, new_size);
    if (!grown) {
        report_error(pkg, " Failed to allocate %u bytes for string table", static_cast<unsigned>(new_size));
        return 0;
    }
    std::memcpy(static_cast<char*>(grown) + offset, name, length + 1);
    data->d_buf = grown;
    data->d_size = new_size;
    pkg->dirty = true;
    return offset;
}

// Makes a section with the bytes and a name; false on failure. That may leave an empty section without a
// name, as the library can't remove one; lists skip it.
bool make_section(zan_pkg_file* pkg, const char* name, const void* bytes, std::size_t size) {
    Elf_Scn* section = new_section(pkg);
    if (!section)
        return false;
    Elf_Data* data = elf_newdata(section);
    if (!data) {
        report_elf_failure(pkg, "elf_newdata");
        return false;
    }
    describe_bytes(data, bytes_of(bytes, size), size);
    pkg->dirty = true; // also if a later step fails, since the section stays
    // Without this, if the table of headers stays where it was in the file, the library writes that of the
    // new section from after the end of its own table.
    elf_flagelf(pkg->elf, ELF_C_SET, ELF_F_DIRTY);

    Elf32_Shdr* shdr = elf32_getshdr(section);
    if (!shdr)
        report_elf_failure(pkg, "elf32_getshdr");
    ZAN_CONTRACT(shdr != nullptr, "shdr");
    shdr->sh_type = SHT_PROGBITS;
    shdr->sh_flags = 0;
    shdr->sh_entsize = 0;
    const std::size_t offset = append_name(pkg, name);
    if (offset == 0)
        describe_bytes(data, &no_bytes, 0); // the caller frees its bytes now
    shdr->sh_name = static_cast<Elf32_Word>(offset);
    index_section(pkg, section);
    return offset != 0;
}

// Reads a whole file into a block that lives as long as the handle; null on failure.
void* read_file_into_buffer(zan_pkg_file* pkg, const char* filename, std::size_t* size) {
    std::FILE* file = std::fopen(filename, "rb");
    if (!file) {
        std::fprintf(stderr, "Couldn't open file %s for reading\n", filename);
        return nullptr;
    }
    const long end = std::fseek(file, 0, SEEK_END) == 0 ? std::ftell(file) : -1;
    if (end < 0) {
        std::fprintf(stderr, "Couldn't determine size of file %s\n", filename);
        std::fclose(file);
        return nullptr;
    }
    std::rewind(file);
    const auto expected = static_cast<std::size_t>(end);
    void* block = allocate_block(pkg, expected);
    if (block) {
        *size = std::fread(block, 1, expected, file);
        if (*size < expected) {
            std::fprintf(stderr, "Error reading %s. Read only %zu out of %zu bytes\n", filename, *size,
                         expected);
            block = nullptr;
        }
    }
    std::fclose(file);
    return block;
}

// Adds a section of size 0. It reaches the file with one byte first and is emptied after that; callers see
// both steps in the messages.
int add_empty_section(zan_pkg_file* pkg, const char* name) {
    report_progress(pkg, "Empty input file. Creating section using dummy file and then updating it.\n");
    constexpr std::size_t dummy_size = 1;
    void* dummy = allocate_block(pkg, dummy_size);
    if (!dummy)
        return 0;
    std::memset(dummy, 0, dummy_size);
    if (!zan_pkg_add_data_section(pkg, name, dummy, dummy_size) || !flush_elf_edits(pkg))
        return 0;
    return zan_pkg_update_section(pkg, name, dummy, 0);
}

// The name table's bytes belong to the handle, which reallocates and frees them, so new ones are copied.
bool replace_name_table(zan_pkg_file* pkg, Elf_Data* table, const void* bytes, std::size_t size) {
    void* copy = std::malloc(size + 1);
    if (!copy) {
        report_error(pkg, " Failed to allocate %u bytes for string table", static_cast<unsigned>(size));
        return false;
    }
    std::memcpy(copy, bytes, size);
    std::free(table->d_buf);
    table->d_buf = copy;
    table->d_size = size;
    forget_index(pkg);
    return true;
}

} // namespace

int zan_pkg_add_data_section(zan_pkg_file* pkg, const char* name, const void* data, size_t size) {
    if (!pkg || !name || !check_addable(pkg, name) || !can_hold(data, size) ||
        !make_section(pkg, name, data, size))
        return 0;
    report_progress(pkg, "zan_pkg_add_data_section: Added section %s with %zu bytes\n", name, size);
    return 1;
}

int zan_pkg_add_data_section_from_file(zan_pkg_file* pkg, const char* name, const char* filename) {
    if (!pkg || !name || !filename || !check_addable(pkg, name))
        return 0;
    std::size_t size = 0;
    const void* block = read_file_into_buffer(pkg, filename, &size);
    if (!block)
        return 0;
    const int added =
        size == 0 ? add_empty_section(pkg, name) : zan_pkg_add_data_section(pkg, name, block, size);
    if (added)
        report_progress(pkg, "Read %zu bytes from file %s and created new section '%s'.\n", size, filename,
                        name);
    return added;
}

int zan_pkg_update_section(zan_pkg_file* pkg, const char* name, const void* data, size_t size) {
    if (!pkg || !name)
        return 0;
    Elf_Scn* section = section_by_name(pkg, name);
    if (!pkg->writable) {
        report_error(pkg, read_only);
        return 0;
    }
    if (!section) {
        report_error(pkg, section_missing, name);
        return 0;
    }
    Elf_Data* descriptor = valid_data(pkg, section);
    if (!descriptor || !can_hold(data, size))
        return 0;
    report_progress(pkg, "zan_pkg_update_section: Updating section %s with %zu bytes of new data\n", name,
                    size);
    void* const bytes = bytes_of(data, size);
    if (descriptor == name_table(pkg)) {
        if (!replace_name_table(pkg, descriptor, bytes, size))
            return 0;
    } else {
        descriptor->d_buf = bytes;
        descriptor->d_size = size;
    }
    // The library writes only what is marked as changed.
    if (elf_flagdata(descriptor, ELF_C_SET, ELF_F_DIRTY) == 0) {
        report_error(pkg, "Failed to mark section '%s' data as dirty.\n", name);
        return 0;
    }
    pkg->dirty = true;
    return 1;
}

int zan_pkg_update_section_from_file(zan_pkg_file* pkg, const char* name, const char* filename) {
    if (!pkg || !name || !filename)
        return 0;
    if (!pkg->writable) {
        report_error(pkg, read_only);
        return 0;
    }
    if (!section_by_name(pkg, name)) {
        report_error(pkg, section_missing, name);
        return 0;
    }
    std::size_t size = 0;
    const void* block = read_file_into_buffer(pkg, filename, &size);
    if (!block || !zan_pkg_update_section(pkg, name, block, size))
        return 0;
    report_progress(pkg, "Read %zu bytes from file %s and updated section '%s'.\n", size, filename, name);
    return 1;
}
