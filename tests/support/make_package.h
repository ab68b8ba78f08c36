// SPDX-License-Identifier: Apache-2.0
// Packages for tests.
#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "pkg_editor.h"

// Section names with their bytes, in the order of the package.
using PackageSections = std::vector<std::pair<std::string, std::string>>;

// Makes a package that holds the sections. Throws std::runtime_error if that fails.
inline void make_package(const std::filesystem::path& path, const PackageSections& sections) {
    zan_pkg_file* const package =
        zan_pkg_open_file(path.c_str(), ZAN_PKG_READ_WRITE | ZAN_PKG_CREATE | ZAN_PKG_SHOW_ERROR);
    bool good = package != nullptr;
    for (const auto& [name, bytes] : sections)
        good = good && zan_pkg_add_data_section(package, name.c_str(), bytes.data(), bytes.size()) == 1;
    // Closing writes the file, so the sections have to be there until then.
    zan_pkg_close_file(package);
    if (!good)
        throw std::runtime_error("can't make the package " + path.string());
}
