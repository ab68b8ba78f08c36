// SPDX-License-Identifier: Apache-2.0
// Any bytes as a package, in memory and in a file, read in every way; and edited, if they can be.
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "pkg_editor.h"
#include "pkg_sections.h"

namespace {

constexpr int show = ZAN_PKG_SHOW_ERROR | ZAN_PKG_SHOW_INFO;

void read_section(zan_pkg_file* package, const char* name) {
    std::size_t size = 0;
    if (!zan_pkg_section_exists(package, name, &size))
        return;
    // A section may claim any size; where its bytes are not there, nothing is written.
    void* data = nullptr;
    if (!zan_pkg_read_section_transient(package, name, &data))
        return;
    std::string bytes(size + 1, '#');
    if (!zan_pkg_read_section(package, name, bytes.data(), bytes.size()) || bytes.back() != 0)
        std::abort();
}

void read_all(zan_pkg_file* package) {
    std::string names(1 << 16, '\0');
    zan_pkg_section_names(package, names.data(), names.size());
    for (std::size_t begin = 0; names[begin] != 0;) {
        const std::size_t end = names.find_first_of(std::string("\n\0", 2), begin);
        read_section(package, names.substr(begin, end - begin).c_str());
        begin = names[end] == 0 ? end : end + 1;
    }
    read_section(package, ".zan.version");
    read_section(package, "");
}

void edit(const char* path) {
    zan_pkg_file* const package = zan_pkg_open_file(path, ZAN_PKG_READ_WRITE | show);
    if (!package)
        return;
    zan_pkg_add_data_section(package, "added", "bytes", 5);
    zan_pkg_update_section(package, ".zan.version", "2", 1);
    read_all(package);
    zan_pkg_close_file(package);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (zan_pkg_file* const package = zan_pkg_open_file_from_memory(data, size, show)) {
        read_all(package);
        zan_pkg_close_file(package);
    }
    const int file = ::memfd_create("package", 0);
    if (::write(file, data, size) != static_cast<ssize_t>(size))
        std::abort();
    const std::string path = "/proc/self/fd/" + std::to_string(file);
    zan_pkg_file* const package = zan_pkg_open_file(path.c_str(), ZAN_PKG_READ | show);
    const bool is_editable = package && zan::pkg::is_package(package);
    if (package) {
        read_all(package);
        zan::pkg::list_sections(package);
        zan_pkg_close_file(package);
    }
    if (is_editable)
        edit(path.c_str()); // other files stop the process, as pkg_editor.h says
    ::close(file);
    return 0;
}
