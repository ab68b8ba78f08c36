// SPDX-License-Identifier: Apache-2.0
#include "package_use.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "pkg_editor.h"

namespace {

// Opens a package, uses it, and closes it.
template <typename Use>
bool with_package(const char* name, int mode, Use use) {
    zan_pkg_file* const package = zan_pkg_open_file(name, mode);
    const bool used = package && use(package);
    return package && zan_pkg_close_file(package) == 1 && used;
}

bool read_package() {
    return with_package("p.zanx", ZAN_PKG_READ, [](zan_pkg_file* package) {
        std::array<char, 500> buffer;
        void* data = nullptr;
        return zan_pkg_read_section(package, "a", buffer.data(), buffer.size()) == 1 &&
               zan_pkg_section_names(package, buffer.data(), buffer.size()) == 1 &&
               zan_pkg_read_section_transient(package, "a", &data) == 1;
    });
}

bool extract_section() {
    return with_package("p.zanx", ZAN_PKG_READ, [](zan_pkg_file* package) {
        return zan_pkg_read_section_into_file(package, "a", "section") == 1;
    });
}

bool create_package() {
    return with_package("new", ZAN_PKG_READ_WRITE | ZAN_PKG_CREATE, [](zan_pkg_file* package) {
        return zan_pkg_add_data_section(package, "x", "1", 1) == 1 &&
               zan_pkg_add_data_section_from_file(package, "y", "f") == 1;
    });
}

bool edit_package() {
    return with_package("p.zanx", ZAN_PKG_READ_WRITE, [](zan_pkg_file* package) {
        return zan_pkg_add_data_section_from_file(package, "x", "empty") == 1 &&
               zan_pkg_update_section_from_file(package, "a", "f") == 1;
    });
}

// A file's bytes, without any that a test could miss where it counts what is allocated.
std::string_view bytes_of(const char* name) {
    static std::array<char, 1 << 16> bytes;
    const int file = ::open(name, O_RDONLY);
    const ssize_t size = ::read(file, bytes.data(), bytes.size());
    ::close(file);
    return std::string_view(bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
}

bool read_from_memory() {
    const std::string_view bytes = bytes_of("p.zanx");
    zan_pkg_file* const package = zan_pkg_open_file_from_memory(bytes.data(), bytes.size(), 0);
    const bool found = package && zan_pkg_section_exists(package, "a", nullptr) == 1;
    return package && zan_pkg_close_file(package) == 1 && found;
}

bool pack_folder() {
    const char* const paths[] = {"d", nullptr};
    return zan_pkg_pack("packed", paths) == 1;
}

bool unpack_file() {
    return zan_pkg_unpack("s", "to") == 1;
}

bool unpack_bytes() {
    const std::string_view bytes = bytes_of("s");
    return zan_pkg_unpack_buffer(bytes.data(), bytes.size(), "to") == 1;
}

} // namespace

const std::vector<PackageUse>& package_uses() {
    static const std::vector<PackageUse> uses = {
        {"Read", read_package},  {"Extract", extract_section},  {"Create", create_package},
        {"Edit", edit_package},  {"Memory", read_from_memory},  {"Pack", pack_folder},
        {"Unpack", unpack_file}, {"UnpackBytes", unpack_bytes},
    };
    return uses;
}

int num_open_files() {
    constexpr int more_than_there_are = 256;
    int count = 0;
    for (int file = 0; file < more_than_there_are; ++file)
        count += ::fcntl(file, F_GETFD) >= 0 ? 1 : 0;
    return count;
}
