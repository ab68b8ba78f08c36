// SPDX-License-Identifier: Apache-2.0
#include "pkg_sections.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <limits>

#include "pkg_handle.h"
#include "pkg_write.h"

namespace zan::pkg {

namespace {

// The file's size; if it is unknown, the largest number, so that reading a section finds out whether its
// bytes are there.
std::uint64_t file_size(int descriptor) {
    struct stat status;
    return ::fstat(descriptor, &status) == 0 ? static_cast<std::uint64_t>(status.st_size)
                                             : std::numeric_limits<std::uint64_t>::max();
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

bool is_of_64_bits(const zan_pkg_file* pkg) {
    const char* const ident = elf_getident(pkg->elf, nullptr);
    return elf_kind(pkg->elf) == ELF_K_ELF && ident && ident[EI_CLASS] == ELFCLASS64;
}

bool is_program(const zan_pkg_file* pkg) {
    std::size_t count = 0;
    return elf_getphdrnum(pkg->elf, &count) == 0 && count != 0;
}

std::vector<SectionInfo> list_sections(const zan_pkg_file* pkg) {
    const std::uint64_t end = file_size(pkg->fd);
    std::vector<SectionInfo> sections;
    for_each_listed_section(pkg, [&](Elf_Scn* section, std::string_view name) {
        Elf32_Shdr header;
        copy_header(section, header);
        const bool in_file = header.sh_offset <= end && header.sh_size <= end - header.sh_offset;
        const Contents contents = header.sh_type == SHT_NOBITS ? Contents::none
                                  : in_file                    ? Contents::in_file
                                                               : Contents::missing;
        sections.push_back({std::string(name), header.sh_offset, header.sh_size, contents,
                            elf_ndxscn(section), header.sh_type});
        return true;
    });
    return sections;
}

int file_descriptor(const zan_pkg_file* pkg) {
    return pkg->fd;
}

std::string close_edited(zan_pkg_file* pkg, std::uint64_t max_size) {
    std::string failure = write_elf(pkg->elf, pkg->fd, max_size);
    if (close_quietly(pkg) == 0 && failure.empty())
        return std::strerror(errno);
    return failure;
}

void discard_edited(zan_pkg_file* pkg) {
    close_quietly(pkg);
}

} // namespace zan::pkg
