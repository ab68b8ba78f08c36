// Reading sections and listing them.
#include <cstdio>
#include <cstring>

#include "contract.h"
#include "pkg_handle.h"

using namespace zan::pkg;

namespace {

constexpr const char* section_not_found = "Couldn't find section with name '%s'.\n";
constexpr const char* no_data_for_section = "No data for section '%s'.\n";

// A section that a read function was asked for, and its data if it is valid.
struct Found {
    Elf_Scn* section;
    Elf_Data* data;
};

Found look_up(const zan_pkg_file* pkg, const char* name) {
    Elf_Scn* section = section_by_name(pkg, name);
    return {section, section ? valid_data(pkg, section) : nullptr};
}

// Whether what was found can be read into `target`; tells what is wrong, `null_target` for no target.
bool check_readable(const zan_pkg_file* pkg, const char* name, const Found& found, const void* target,
                    const char* null_target) {
    if (!target)
        tell_error(pkg, "%s", null_target);
    else if (!found.section)
        tell_error(pkg, section_not_found, name);
    else if (found.data && has_bytes(found.data))
        return true;
    else {
        if (found.data) // a size, but no bytes in the file
            tell_error(pkg, "No data for section.\n");
        tell_error(pkg, no_data_for_section, name);
    }
    return false;
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
    const Found found = look_up(pkg, name);
    if (!check_readable(pkg, name, found, buffer, "Buffer argument is NULL\n"))
        return 0;
    if (found.data->d_size >= capacity) {
        tell_error(pkg, "Target buffer for section '%s' is too small.\n", name);
        return 0;
    }
    if (found.data->d_size != 0)
        std::memcpy(buffer, found.data->d_buf, found.data->d_size);
    static_cast<char*>(buffer)[found.data->d_size] = 0;
    return 1;
}

int zan_pkg_read_section_transient(zan_pkg_file* pkg, const char* name, void** data) {
    if (!pkg || !name)
        return 0;
    const Found found = look_up(pkg, name);
    if (!check_readable(pkg, name, found, data, "Buffer pointer argument is NULL\n"))
        return 0;
    *data = found.data->d_buf;
    return 1;
}

int zan_pkg_read_section_into_file(zan_pkg_file* pkg, const char* name, const char* filename) {
    if (!pkg || !name || !filename)
        return 0;
    Elf_Scn* section = section_by_name(pkg, name);
    if (!section) {
        tell_error(pkg, section_not_found, name);
        return 0;
    }
    Elf_Data* data = nullptr;
    const DataFault fault = find_data(section, data);
    if (fault == DataFault::multiple) {
        tell_error(pkg, "Multiple data descriptors for '%s'.\n", name);
        return 0;
    }
    if (fault == DataFault::missing || !has_bytes(data)) {
        tell_error(pkg, no_data_for_section, name);
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
        tell_error(pkg, "Wrote only %zu out of %zu bytes into %s for writing", written, data->d_size,
                   filename);
        return 0;
    }
    tell_info(pkg, "Wrote %zu bytes from section '%s' to file %s\n", written, name, filename);
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
