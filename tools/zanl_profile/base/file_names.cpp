// SPDX-License-Identifier: Apache-2.0
#include "file_names.h"

#include <fmt/format.h>

#include <algorithm>

namespace zan::tool {

namespace {

// File systems allow 255 bytes; the rest is for the number, and for the ending of an unfinished file.
constexpr std::size_t max_length = 220;

bool is_safe(unsigned char byte) {
    constexpr unsigned char first_printable = 0x20, del = 0x7F;
    return byte >= first_printable && byte != del && byte != '/' && byte != '%';
}

std::string safe_name(const std::string& section) {
    const bool means_a_folder = section == "." || section == "..";
    std::string name;
    for (const char c : section) {
        const auto byte = static_cast<unsigned char>(c);
        if (is_safe(byte) && !means_a_folder)
            name += c;
        else
            name += fmt::format("%{:02X}", byte);
    }
    return name;
}

} // namespace

std::string FileNames::next(const std::string& section) {
    std::string name = safe_name(section);
    const bool is_cut = name.size() > max_length;
    name.resize(std::min(name.size(), max_length));
    const int number = ++m_uses[name];
    return is_cut || number > 1 ? fmt::format("{}%~{}", name, number) : name;
}

} // namespace zan::tool
