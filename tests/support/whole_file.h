// Whole files as bytes.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

// All bytes of a file. Throws std::runtime_error if it can't be opened.
inline std::string read_file(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw std::runtime_error("can't read " + path.string());
    return std::string(std::istreambuf_iterator<char>(file), {});
}

// Makes or replaces a file. Throws std::runtime_error if the bytes can't be stored.
inline void write_file(const std::filesystem::path& path, std::string_view bytes) {
    std::ofstream file(path, std::ios::binary);
    if (!file.write(bytes.data(), static_cast<std::streamsize>(bytes.size())).flush())
        throw std::runtime_error("can't write " + path.string());
}
