// SPDX-License-Identifier: Apache-2.0
// The numbers of a page, unpacked in other words than the program packs them, and texts of numbers to
// compare.
#pragma once

#include <zlib.h>

#include <cstdint>
#include <string>
#include <vector>

// The bytes of a deflate stream without a header; what is broken or longer than `limit` comes out empty.
inline std::string inflated(const std::string& packed, std::size_t limit) {
    z_stream stream{};
    inflateInit2(&stream, -15);
    std::string bytes(limit + 1, '\0');
    std::string in = packed;
    stream.next_in = reinterpret_cast<unsigned char*>(in.data());
    stream.avail_in = static_cast<uInt>(in.size());
    stream.next_out = reinterpret_cast<unsigned char*>(bytes.data());
    stream.avail_out = static_cast<uInt>(bytes.size());
    const int status = inflate(&stream, Z_FINISH);
    inflateEnd(&stream);
    bytes.resize(status == Z_STREAM_END && stream.avail_out > 0 ? bytes.size() - stream.avail_out : 0);
    return bytes;
}

// The values of a packed chunk; none if it is broken or has another number of them.
inline std::vector<std::int64_t> units_of_chunk(const std::string& packed, int encoding, std::size_t count) {
    const auto width = static_cast<std::size_t>(encoding % 10);
    const std::string planes = width == 0 ? std::string() : inflated(packed, width * count);
    std::vector<std::int64_t> values;
    std::uint64_t last = 0;
    for (std::size_t i = 0; i < count && planes.size() == width * count; ++i) {
        std::uint64_t number = 0;
        for (std::size_t k = width; k-- > 0;)
            number = number << 8 | static_cast<unsigned char>(planes[k * count + i]);
        const std::uint64_t step = (number >> 1) ^ (0 - (number & 1));
        last = encoding < 10 ? last + step : step;
        values.push_back(static_cast<std::int64_t>(last));
    }
    return values;
}

// A number in one way of writing, whatever its zeros and its exponent, with at most that many decimals:
// "12e2", "-5e-1", "0". Other texts stay as they are.
inline std::string plain_number(std::string text, long decimals = 9) {
    if (text.empty() || text.find_first_not_of("0123456789+-.e") != std::string::npos || text == "-0")
        return text;
    long exponent = 0;
    if (const std::size_t at = text.find('e'); at != std::string::npos) {
        exponent = std::stol(text.substr(at + 1));
        text.resize(at);
    }
    const bool is_negative = text[0] == '-';
    if (is_negative)
        text.erase(0, 1);
    if (const std::size_t point = text.find('.'); point != std::string::npos) {
        exponent -= static_cast<long>(text.size() - point - 1);
        text.erase(point, 1);
    }
    // Rounded away from zero at a half.
    if (const long too_many = -decimals - exponent; too_many > 0) {
        const long kept = static_cast<long>(text.size()) - too_many;
        const bool up = kept >= 0 && text[static_cast<std::size_t>(kept)] >= '5';
        text =
            std::to_string((kept > 0 ? std::stoll(text.substr(0, static_cast<std::size_t>(kept))) : 0) + up);
        exponent = -decimals;
    }
    text.erase(0, text.find_first_not_of('0'));
    while (!text.empty() && text.back() == '0') {
        text.pop_back();
        ++exponent;
    }
    return text.empty() ? "0" : (is_negative ? "-" : "") + text + "e" + std::to_string(exponent);
}
