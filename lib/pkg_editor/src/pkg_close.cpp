// SPDX-License-Identifier: Apache-2.0
// Writing edits to the file, and the end of a handle.
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "contract.h"
#include "pkg_handle.h"

using namespace zan::pkg;

bool zan::pkg::flush_elf_edits(zan_pkg_file* pkg) {
    if (pkg->fd == -1)
        return true;
    report_progress(pkg, "flush_elf_edits: Pkg fd is live\n");
    if (!pkg->dirty)
        return true;
    report_progress(pkg, "flush_elf_edits: Pkg is dirty\n");
    if (pkg->broken || elf_update(pkg->elf, ELF_C_WRITE) < 0) {
        std::fprintf(stderr, " elf_update ()  failed : %s.", elf_message(-1));
        return false;
    }
    report_progress(pkg, "flush_elf_edits: Pkg update is ok\n");
    return true;
}

namespace {

void free_blocks(zan_pkg_file* pkg) {
    while (pkg->allocated_blocks) {
        void** block = static_cast<void**>(pkg->allocated_blocks);
        pkg->allocated_blocks = *block;
        std::free(block);
    }
}

// A writable package has its name table in storage of its own, since the library's can't grow.
void free_name_table(zan_pkg_file* pkg) {
    Elf_Data* data = name_table(pkg);
    ZAN_CONTRACT(data != nullptr, "data");
    std::free(data->d_buf);
    data->d_buf = nullptr;
}

bool close_descriptor(const zan_pkg_file* pkg) {
    if (pkg->dirty && ::fsync(pkg->fd) != 0)
        report_error(pkg, "zan_pkg_close_file: Failed to flush data on %s: %s\n", pkg->fname,
                     std::strerror(errno));
    if (::close(pkg->fd) == 0)
        return true;
    report_error(pkg, "zan_pkg_close_file: Failed to close %s: %s\n", pkg->fname, std::strerror(errno));
    return false;
}

} // namespace

int zan_pkg_close_file(zan_pkg_file* pkg) {
    if (!pkg)
        return 0;
    flush_elf_edits(pkg); // reports a failure itself; the result is that of closing the file
    free_blocks(pkg);
    forget_index(pkg);
    if (pkg->writable)
        free_name_table(pkg);
    // The library counts references to a handle; only the last elf_end() releases it.
    while (elf_end(pkg->elf) != 0)
        report_progress(pkg, "zan_pkg_close_file: elf_end returned non-zero.  Do it again.\n");
    const bool closed = pkg->fd == -1 || close_descriptor(pkg);
    std::free(pkg);
    return closed;
}
