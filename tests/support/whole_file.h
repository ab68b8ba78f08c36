// SPDX-License-Identifier: Apache-2.0
// Whole files as bytes.
#pragma once

#include <filesystem>
#include <fstream>
#include <ios>
#include <stdexcept>
#include <string>
#include <string_view>

// All bytes of a file. Throws std::runtime_error if it can't be opened. It is read in pieces, since byte by
// byte takes a sixth of the time of a test that looks at files.
inline std::string read_file(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw std::runtime_error("can't read " + path.string());
    std::string bytes;
    char piece[4096];
    while (file.read(piece, sizeof piece), file.gcount() > 0)
        bytes.append(piece, static_cast<std::size_t>(file.gcount()));
    return bytes;
}

// Makes or replaces a file. Throws std::runtime_error if the bytes can't be stored.
inline void write_file(const std::filesystem::path& path, std::string_view bytes) {
    std::ofstream file(path, std::ios::binary);
    if (!file.write(bytes.data(), static_cast<std::streamsize>(bytes.size())).flush())
        throw std::runtime_error("can't write " + path.string());
}
