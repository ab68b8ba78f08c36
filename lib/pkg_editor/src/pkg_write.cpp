// SPDX-License-Identifier: Apache-2.0
#include "pkg_write.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "pkg_handle.h"

namespace zan::pkg {

namespace {

// Why the library couldn't write: its own text, and the system's if there is one.
std::string update_failure() {
    const int error = errno;
    const std::string text = elf_message(-1);
    return error == 0 ? text : text + ": " + std::strerror(error);
}

// How long the file will be once its headers are laid out. They have offsets of 32 bits, as does the
// library's own result: what lies beyond 4 GiB shows by an offset that is less than the end of what comes
// before it.
std::uint64_t laid_out_size(Elf* elf) {
    std::uint64_t end = 0;
    const auto place = [&](std::uint64_t offset, std::uint64_t size) {
        constexpr std::uint64_t wrap = 1ull << 32;
        while (offset < end)
            offset += wrap;
        end = offset + size;
    };
    std::uint64_t count = 1;
    for (Elf_Scn* section = elf_nextscn(elf, nullptr); section; section = elf_nextscn(elf, section)) {
        Elf32_Shdr header{};
        copy_header(section, header);
        place(header.sh_offset, header.sh_type == SHT_NOBITS ? 0 : header.sh_size);
        ++count;
    }
    const Elf32_Ehdr* const header = elf32_getehdr(elf);
    place(header ? header->e_shoff : 0, count * sizeof(Elf32_Shdr));
    return end;
}

} // namespace

std::string size_fault(std::uint64_t size, std::uint64_t max_size) {
    if (size > max_package_size)
        return "it would be " + std::to_string(size) + " bytes long, and a package has at most " +
               std::to_string(max_package_size);
    if (size > max_size)
        return "the gaps between its sections would make it " + std::to_string(size) + " bytes long";
    return {};
}

std::string write_elf(Elf* elf, int to, std::uint64_t max_size) {
    errno = 0;
    if (elf_update(elf, ELF_C_NULL) < 0)
        return update_failure();
    std::string fault = size_fault(laid_out_size(elf), max_size);
    if (!fault.empty())
        return fault;
    if (elf_update(elf, ELF_C_WRITE) < 0)
        return update_failure();
    return ::fsync(to) == 0 ? std::string() : std::strerror(errno);
}

} // namespace zan::pkg
