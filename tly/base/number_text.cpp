// SPDX-License-Identifier: Apache-2.0
#include "number_text.h"

#include <algorithm>
#include <charconv>
#include <limits>

std::optional<long long> parse_long_long(std::string_view text) {
    constexpr std::string_view white_space = " \t\n\v\f\r";
    text.remove_prefix(std::min(text.find_first_not_of(white_space), text.size()));
    // std::from_chars reads a minus and no plus; std::stoll reads one sign, either of the two.
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-'))
            return std::nullopt;
    }
    long long value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc())
        return std::nullopt;
    return value;
}

std::optional<int> parse_int(std::string_view text) {
    return narrow_to_int(parse_long_long(text));
}

std::optional<int> narrow_to_int(std::optional<long long> number) {
    if (!number || *number < std::numeric_limits<int>::min() || *number > std::numeric_limits<int>::max())
        return std::nullopt;
    return static_cast<int>(*number);
}
