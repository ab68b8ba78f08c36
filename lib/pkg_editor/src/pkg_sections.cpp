#include "pkg_sections.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <limits>

#include "pkg_handle.h"

namespace zan::pkg {

namespace {

// The file's size; if it is unknown, the largest number, so that reading a section finds out whether its
// bytes are there.
std::uint64_t file_size(int descriptor) {
    struct stat status;
    return ::fstat(descriptor, &status) == 0 ? static_cast<std::uint64_t>(status.st_size)
                                             : std::numeric_limits<std::uint64_t>::max();
}

// Why the library couldn't write: its own text, and the system's if there is one.
std::string update_failure() {
    const int error = errno;
    const std::string text = elf_message(-1);
    return error == 0 ? text : text + ": " + std::strerror(error);
}

// Writes the edits; returns an empty text, or why that failed.
std::string write_edited(zan_pkg_file* pkg, std::uint64_t max_size) {
    errno = 0;
    const off_t size = elf_update(pkg->elf, ELF_C_NULL);
    if (size >= 0 && static_cast<std::uint64_t>(size) > max_size)
        return "the gaps between its sections would make it " + std::to_string(size) + " bytes long";
    if (size < 0 || elf_update(pkg->elf, ELF_C_WRITE) < 0)
        return update_failure();
    return ::fsync(pkg->fd) == 0 ? std::string() : std::strerror(errno);
}

// Closes the package without writing or printing anything.
int close_quietly(zan_pkg_file* pkg) {
    pkg->dirty = false;
    pkg->show_error = false;
    pkg->show_info = false;
    return zan_pkg_close_file(pkg);
}

} // namespace

bool is_package(const zan_pkg_file* pkg) {
    const Elf32_Ehdr* const header = elf32_getehdr(pkg->elf);
    const Elf_Data* const table = header ? name_table(pkg) : nullptr;
    return table && table->d_size != 0;
}

std::vector<SectionInfo> list_sections(const zan_pkg_file* pkg) {
    const std::uint64_t end = file_size(pkg->fd);
    std::vector<SectionInfo> sections;
    for_each_listed_section(pkg, [&](Elf_Scn* section, std::string_view name) {
        Elf32_Shdr header;
        copy_header(section, header);
        const bool in_file = header.sh_type != SHT_NOBITS && header.sh_offset <= end &&
                             header.sh_size <= end - header.sh_offset;
        sections.push_back({std::string(name), header.sh_offset, header.sh_size, in_file});
        return true;
    });
    return sections;
}

int file_descriptor(const zan_pkg_file* pkg) {
    return pkg->fd;
}

std::string close_edited(zan_pkg_file* pkg, std::uint64_t max_size) {
    std::string failure = write_edited(pkg, max_size);
    if (close_quietly(pkg) == 0 && failure.empty())
        return std::strerror(errno);
    return failure;
}

void discard_edited(zan_pkg_file* pkg) {
    close_quietly(pkg);
}

} // namespace zan::pkg
