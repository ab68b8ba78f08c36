// SPDX-License-Identifier: Apache-2.0
#include "utf8_text.h"

#include <cstdint>

namespace zan::profile {

namespace {

// The length of the character that the text begins with, 1 to 4; 0 if it begins with none.
std::size_t character_length(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned first = byte(0);
    if (first < 0x80)
        return 1;
    const std::size_t length = first < 0xC2 ? 0 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : first < 0xF5 ? 4 : 0;
    if (length == 0 || text.size() < length)
        return 0;
    for (std::size_t i = 1; i < length; i++) {
        if ((byte(i) & 0xC0u) != 0x80)
            return 0;
    }
    const unsigned second = byte(1);
    const bool overlong = (first == 0xE0 && second < 0xA0) || (first == 0xF0 && second < 0x90);
    const bool surrogate = first == 0xED && second >= 0xA0;
    const bool too_great = first == 0xF4 && second >= 0x90;
    return overlong || surrogate || too_great ? 0 : length;
}

} // namespace

std::string valid_utf8_text(std::string_view text) {
    constexpr std::string_view replacement = "\xEF\xBF\xBD";
    std::string valid;
    valid.reserve(text.size());
    while (!text.empty()) {
        const std::size_t length = character_length(text);
        valid += length == 0 ? replacement : text.substr(0, length);
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return valid;
}

} // namespace zan::profile
