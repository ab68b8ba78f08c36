// SPDX-License-Identifier: Apache-2.0
// Reading sections and listing them.
#include <cstdio>
#include <cstring>

#include "contract.h"
#include "pkg_handle.h"

using namespace zan::pkg;

namespace {

constexpr const char* section_not_found = "Couldn't find section with name '%s'.\n";
constexpr const char* no_data_for_section = "No data for section '%s'.\n";

// The section's data, to be copied or pointed to at `target`. Null, after the message for the first of these
// faults: no target, no such section, no data. Data is looked at last: a caller without a target gets
// no other message.
const Elf_Data* find_readable(const zan_pkg_file* pkg, const char* name, const void* target,
                              const char* null_target) {
    Elf_Scn* section = section_by_name(pkg, name);
    if (!target) {
        report_error(pkg, "%s", null_target);
        return nullptr;
    }
    if (!section) {
        report_error(pkg, section_not_found, name);
        return nullptr;
    }
    const Elf_Data* data = valid_data(pkg, section);
    if (data && has_bytes(data))
        return data;
    if (data) // a size, but no bytes in the file
        report_error(pkg, "No data for section.\n");
    report_error(pkg, no_data_for_section, name);
    return nullptr;
}

// Writes all bytes, unbuffered so that the count of written bytes is that of the file.
std::size_t write_file(std::FILE* file, const Elf_Data* data) {
    std::setvbuf(file, nullptr, _IONBF, 0);
    const std::size_t written = data->d_size == 0 ? 0 : std::fwrite(data->d_buf, 1, data->d_size, file);
    std::fclose(file);
    return written;
}

} // namespace

int zan_pkg_section_exists(zan_pkg_file* pkg, const char* name, size_t* size) {
    Elf_Scn* section = pkg ? section_by_name(pkg, name) : nullptr;
    Elf_Data* data = section ? valid_data(pkg, section) : nullptr;
    if (!data)
        return 0;
    if (size)
        *size = data->d_size;
    return 1;
}

int zan_pkg_read_section(zan_pkg_file* pkg, const char* name, void* buffer, size_t capacity) {
    if (!pkg || !name)
        return 0;
    const Elf_Data* found = find_readable(pkg, name, buffer, "Buffer argument is NULL\n");
    if (!found)
        return 0;
    if (found->d_size >= capacity) {
        report_error(pkg, "Target buffer for section '%s' is too small.\n", name);
        return 0;
    }
    if (found->d_size != 0)
        std::memcpy(buffer, found->d_buf, found->d_size);
    static_cast<char*>(buffer)[found->d_size] = 0;
    return 1;
}

int zan_pkg_read_section_transient(zan_pkg_file* pkg, const char* name, void** data) {
    if (!pkg || !name)
        return 0;
    const Elf_Data* found = find_readable(pkg, name, data, "Buffer pointer argument is NULL\n");
    if (!found)
        return 0;
    *data = found->d_buf;
    return 1;
}

int zan_pkg_read_section_into_file(zan_pkg_file* pkg, const char* name, const char* filename) {
    if (!pkg || !name || !filename)
        return 0;
    Elf_Scn* section = section_by_name(pkg, name);
    if (!section) {
        report_error(pkg, section_not_found, name);
        return 0;
    }
    Elf_Data* data = nullptr;
    const DataFault fault = find_data(section, data);
    if (fault == DataFault::multiple) {
        report_error(pkg, "Multiple data descriptors for '%s'.\n", name);
        return 0;
    }
    if (fault == DataFault::missing || !has_bytes(data)) {
        report_error(pkg, no_data_for_section, name);
        return 0;
    }
    std::FILE* file = std::fopen(filename, "wb");
    if (!file) {
        if (pkg->show_error)
            std::perror("Couldn't open file for writing");
        return 0;
    }
    const std::size_t written = write_file(file, data);
    if (written < data->d_size) {
        report_error(pkg, "Wrote only %zu out of %zu bytes into %s for writing", written, data->d_size,
                     filename);
        return 0;
    }
    report_progress(pkg, "Wrote %zu bytes from section '%s' to file %s\n", written, name, filename);
    return 1;
}

int zan_pkg_section_names(zan_pkg_file* pkg, char* buffer, size_t capacity) {
    if (!pkg || !buffer)
        return 0;
    std::size_t length = 0; // of the text so far, without its NUL
    bool all_fit = true;
    for_each_listed_section(pkg, [&](Elf_Scn*, std::string_view name) {
        all_fit = length + name.size() + 1 < capacity;
        if (!all_fit)
            return false;
        if (length != 0)
            buffer[length++] = '\n';
        std::memcpy(buffer + length, name.data(), name.size());
        length += name.size();
        buffer[length] = 0;
        return true;
    });
    return all_fit;
}

int zan_pkg_list_file_sections(zan_pkg_file* pkg) {
    if (!pkg)
        return 0;
    std::puts("Sections in package file:");
    for_each_listed_section(pkg, [&](Elf_Scn* section, std::string_view name) {
        const Elf_Data* sdata = valid_data(pkg, section);
        ZAN_CONTRACT(sdata != nullptr, "sdata");
        std::printf("  %.*s, %zu bytes\n", static_cast<int>(name.size()), name.data(), sdata->d_size);
        return true;
    });
    return 1;
}
