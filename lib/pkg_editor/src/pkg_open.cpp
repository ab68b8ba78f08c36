// SPDX-License-Identifier: Apache-2.0
// Opening packages: checks of the mode, the file, and what a new or writable package needs.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "contract.h"
#include "pkg_handle.h"
#include "pkg_sections.h"

using namespace zan::pkg;

namespace {

// Contents of the nameless section that every new package has.
char empty_data_section_buf[4096];

constexpr std::size_t new_table_capacity = 4096;

// Reports wrong arguments of an open call, before there is a handle with show flags.
[[gnu::format(printf, 2, 3)]] zan_pkg_file* refuse(int mode, const char* format, ...) {
    if (mode & ZAN_PKG_SHOW_ERROR) {
        va_list arguments;
        va_start(arguments, format);
        std::vfprintf(stderr, format, arguments);
        va_end(arguments);
    }
    return nullptr;
}

bool check_mode(const char* filename, int mode) {
    const auto bits = static_cast<unsigned>(mode);
    const bool reads = mode & ZAN_PKG_READ;
    const bool writes = mode & ZAN_PKG_READ_WRITE;
    if (!reads && !writes)
        refuse(mode, "Binary package open mode 0x%x must include either read-only or read-write\n", bits);
    else if (reads && writes)
        refuse(mode, "Binary package open mode 0x%x cannot include both read-only and read-write\n", bits);
    else if ((mode & ZAN_PKG_CREATE) && !writes)
        refuse(mode, "Binary package creation flag can only be used with read-write mode.\n");
    else if (!filename)
        refuse(mode, "No filename specified\n");
    else
        return true;
    return false;
}

bool start_elf_library(int mode) {
    if (elf_version(EV_CURRENT) != EV_NONE)
        return true;
    // Here, and for elf_begin, elf_newehdr and elf_memory, the library is asked for the text of the system's
    // errno, for which it may have none. Callers know the messages like this.
    refuse(mode, "elf_version failed: %s\n", elf_message(errno));
    return false;
}

int open_descriptor(const char* filename, int mode) {
    if (mode & ZAN_PKG_READ)
        return ::open(filename, O_RDONLY | O_CLOEXEC, 0);
    const int creation = (mode & ZAN_PKG_CREATE) ? O_CREAT : 0;
    // Without O_TRUNC: the library sets the file's size when it writes.
    return ::open(filename, O_RDWR | O_CLOEXEC | creation, 0666);
}

zan_pkg_file* make_handle(const char* filename, int fd, int mode) {
    auto* pkg = static_cast<zan_pkg_file*>(std::malloc(sizeof(zan_pkg_file)));
    if (!pkg)
        return nullptr;
    *pkg = zan_pkg_file{};
    pkg->fname = filename;
    pkg->fd = fd;
    zan_pkg_set_show_mode(pkg, mode);
    return pkg;
}

// Releases a handle whose opening has failed, without any message. `own_table` is the table's copy, if there
// is one.
zan_pkg_file* discard(zan_pkg_file* pkg, void* own_table = nullptr) {
    std::free(own_table);
    forget_index(pkg);
    if (pkg->elf)
        elf_end(pkg->elf);
    ::close(pkg->fd);
    std::free(pkg);
    return nullptr;
}

// Puts a copy of the name table in place of the library's own, so that it can grow by realloc().
zan_pkg_file* prepare_for_writing(zan_pkg_file* pkg, Elf_Data* data) {
    if (data->d_size == 0) // malloc(0) may return null, and an empty table has no name to begin with
        return discard(pkg);
    void* copy = std::malloc(data->d_size);
    if (!copy) {
        report_error(pkg, " Failed to allocate %u bytes for string table",
                     static_cast<unsigned>(data->d_size));
        return discard(pkg);
    }
    data->d_buf = std::memcpy(copy, data->d_buf, data->d_size);
    return pkg;
}

bool make_header(zan_pkg_file* pkg) {
    Elf32_Ehdr* header = elf32_newehdr(pkg->elf);
    if (!header) {
        report_error(pkg, "elf_newehdr failed: %s\n", elf_message(errno));
        return false;
    }
    header->e_ident[EI_DATA] = ELFDATA2LSB;
    header->e_type = ET_NONE;
    header->e_machine = EM_X86_64;
    return true;
}

// Makes the section of section names, which holds its own name; null on failure. `*bytes` is its new storage,
// also on failure.
Elf_Scn* make_name_table(zan_pkg_file* pkg, char** bytes) {
    Elf_Scn* section = new_section(pkg);
    if (!section)
        return nullptr;
    Elf_Data* data = elf_newdata(section);
    if (!data) {
        report_elf_failure(pkg, "elf_newdata");
        return nullptr;
    }
    *bytes = static_cast<char*>(std::calloc(1, new_table_capacity));
    if (!*bytes) {
        report_error(pkg, " Failed to allocate %d bytes for string table",
                     static_cast<int>(new_table_capacity));
        return nullptr;
    }
    std::memcpy(*bytes + 1, name_table_section,
                sizeof name_table_section); // after the NUL that is the empty name
    describe_bytes(data, *bytes, 1 + sizeof name_table_section);

    Elf32_Shdr* header = elf32_getshdr(section);
    if (!header) {
        report_elf_failure(pkg, "elf32_getshdr");
        return nullptr;
    }
    header->sh_name = 1;
    header->sh_type = SHT_STRTAB;
    header->sh_flags = SHF_STRINGS;
    header->sh_entsize = 0;
    return section;
}

// Names the section of section names in the header. An index that doesn't fit there stands in section 0.
bool set_name_table_index(zan_pkg_file* pkg, Elf_Scn* table) {
    const std::size_t index = elf_ndxscn(table);
    Elf_Scn* section_0 = elf_getscn(pkg->elf, 0);
    Elf32_Shdr* header_0 = section_0 ? elf32_getshdr(section_0) : nullptr;
    Elf32_Ehdr* header = elf32_getehdr(pkg->elf);
    if (!header_0 || !header) {
        report_elf_failure(pkg, section_0 ? "elf32_getshdr" : "elf_getscn");
        report_error(pkg, " Failed to set e_shstrndx\n");
        return false;
    }
    const bool fits = index < SHN_LORESERVE;
    header->e_shstrndx = static_cast<Elf32_Half>(fits ? index : SHN_XINDEX);
    header_0->sh_link = static_cast<Elf32_Word>(fits ? 0 : index);
    elf_flagehdr(pkg->elf, ELF_C_SET, ELF_F_DIRTY);
    elf_flagshdr(section_0, ELF_C_SET, ELF_F_DIRTY);
    return true;
}

zan_pkg_file* create_contents(zan_pkg_file* pkg) {
    char* table_bytes = nullptr;
    Elf_Scn* table = make_header(pkg) ? make_name_table(pkg, &table_bytes) : nullptr;
    if (!table || !set_name_table_index(pkg, table))
        return discard(pkg, table_bytes);
    // Its failure doesn't matter: a package without the nameless section is read and edited all the same.
    zan_pkg_add_data_section(pkg, "", empty_data_section_buf, sizeof empty_data_section_buf);
    pkg->dirty = true;
    return pkg;
}

// Opens the file, and begins to use it as the mode says.
zan_pkg_file* begin(const char* filename, int mode) {
    if (!check_mode(filename, mode) || !start_elf_library(mode))
        return nullptr;
    const int fd = open_descriptor(filename, mode);
    if (fd < 0)
        return refuse(mode, "Couldn't open %s: %s\n", filename, std::strerror(errno));
    zan_pkg_file* pkg = make_handle(filename, fd, mode);
    if (!pkg) {
        ::close(fd);
        return refuse(mode, "Failed to allocate %d bytes of memory\n",
                      static_cast<int>(sizeof(zan_pkg_file)));
    }
    pkg->writable = !(mode & ZAN_PKG_READ);
    const bool creates = mode & ZAN_PKG_CREATE;
    const Elf_Cmd writing = creates ? ELF_C_WRITE : ELF_C_RDWR;
    pkg->elf = elf_begin(fd, pkg->writable ? writing : ELF_C_READ, nullptr);
    if (!pkg->elf) {
        report_error(pkg, "elf_begin failed: %s\n", elf_message(errno));
        return discard(pkg);
    }
    return pkg;
}

} // namespace

zan_pkg_file* zan_pkg_open_file(const char* filename, int mode) {
    zan_pkg_file* pkg = begin(filename, mode);
    if (!pkg || !pkg->writable)
        return pkg;
    if (mode & ZAN_PKG_CREATE)
        return create_contents(pkg);
    Elf_Data* data = name_table(pkg);
    ZAN_CONTRACT(data != nullptr, "data"); // a package without names can't be edited
    return prepare_for_writing(pkg, data);
}

zan_pkg_file* zan::pkg::open_to_edit(const char* filename) {
    zan_pkg_file* pkg = begin(filename, ZAN_PKG_READ_WRITE);
    Elf_Data* data = pkg ? name_table(pkg) : nullptr;
    if (!data)
        return pkg ? discard(pkg) : nullptr;
    return prepare_for_writing(pkg, data);
}

zan_pkg_file* zan_pkg_open_file_from_memory(const void* data, size_t size, int mode) {
    if (mode & ~(ZAN_PKG_SHOW_ERROR | ZAN_PKG_SHOW_INFO))
        return refuse(mode, "Invalid mode %d for opening a binary in memory\n", mode);
    if (!data || size == 0 || !start_elf_library(mode))
        return nullptr;
    // The library's parameter isn't const, but it doesn't change the bytes.
    Elf* elf = elf_memory(static_cast<char*>(const_cast<void*>(data)), size);
    if (!elf)
        return refuse(mode, "elf_memory failed: %s\n", elf_message(errno));
    zan_pkg_file* pkg = make_handle(nullptr, -1, mode);
    if (!pkg) {
        elf_end(elf);
        return refuse(mode, "Failed to allocated %d bytes of memory\n",
                      static_cast<int>(sizeof(zan_pkg_file)));
    }
    pkg->elf = elf;
    return pkg;
}

void zan_pkg_set_show_mode(zan_pkg_file* pkg, int mode) {
    if (!pkg)
        return;
    pkg->show_error = mode & ZAN_PKG_SHOW_ERROR;
    pkg->show_info = mode & ZAN_PKG_SHOW_INFO;
}
