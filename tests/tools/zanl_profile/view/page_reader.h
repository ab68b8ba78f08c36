// SPDX-License-Identifier: Apache-2.0
// A page, read as its script reads it, in other words: elements by their names, and the numbers of chunks.
#pragma once

#include <rapidjson/document.h>
#include <zlib.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// What stands between the tags of the element with that name; empty if there is none.
inline std::string page_element(const std::string& page, const std::string& id) {
    const std::size_t name = page.find(" id=\"" + id + "\">");
    if (name == std::string::npos)
        return {};
    const std::size_t begin = page.find('>', name) + 1;
    return page.substr(begin, page.find("</script>", begin) - begin);
}

inline std::string bytes_of_base64(std::string_view text) {
    static constexpr std::string_view letters =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bytes;
    unsigned bits = 0;
    int num_bits = 0;
    for (const char c : text) {
        if (c == '=')
            break;
        bits = bits << 6 | static_cast<unsigned>(letters.find(c));
        num_bits += 6;
        if (num_bits >= 8) {
            num_bits -= 8;
            bytes += static_cast<char>(bits >> num_bits & 255);
        }
    }
    return bytes;
}

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

// A number in one way of writing, whatever its zeros and its exponent, with at most that many decimals:
// "12e2",
// "-5e-1", "0". Other texts stay as they are.
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

class PageReader {
  public:
    // `of_base`: the run that a page compares with.
    explicit PageReader(const std::string& page, bool of_base = false)
        : m_page(page), m_prefix(of_base ? "b" : "d") {
        m_head.Parse(page_element(page, of_base ? "base" : "head").c_str());
    }

    const rapidjson::Document& head() const { return m_head; }
    const rapidjson::Value& column(const char* name, int series) const {
        return m_head["series"][name][static_cast<rapidjson::SizeType>(series)];
    }
    std::string chunk(int number) const {
        return bytes_of_base64(page_element(m_page, m_prefix + std::to_string(number)));
    }

    // The whole units of each value; places without a number repeat the one before them.
    std::vector<std::int64_t> units(int series) const {
        const std::size_t size = column("n", series).GetUint64();
        const int first = column("chunk", series).GetInt();
        std::vector<std::int64_t> values;
        int number = 0;
        for (const auto& encoding : column("enc", series).GetArray()) {
            const std::size_t count = std::min(size - values.size(), std::size_t{1} << 18);
            const auto width = static_cast<std::size_t>(encoding.GetInt() % 10);
            std::string planes;
            if (width != 0)
                planes = inflated(chunk(first + number), width * count);
            ++number;
            EXPECT_EQ(planes.size(), width * count);
            std::uint64_t last = 0;
            for (std::size_t i = 0; i < count && planes.size() == width * count; ++i) {
                std::uint64_t number_of = 0;
                for (std::size_t k = width; k-- > 0;)
                    number_of = number_of << 8 | static_cast<unsigned char>(planes[k * count + i]);
                const std::uint64_t step = (number_of >> 1) ^ (0 - (number_of & 1));
                last = encoding.GetInt() < 10 ? last + step : step;
                values.push_back(static_cast<std::int64_t>(last));
            }
        }
        return values;
    }

    // As plain_number() has the texts of the report, and what is no number as the report has it; missing
    // ones are empty.
    std::vector<std::string> texts(int series) const {
        std::vector<std::string> result;
        const std::string exponent = "e-" + std::to_string(column("digits", series).GetInt());
        for (const std::int64_t value : units(series))
            result.push_back(plain_number(std::to_string(value) + exponent));
        static constexpr std::array names = {"", "nan", "inf", "-inf", "-0", "-nan"};
        const auto& marks = m_head["series"]["marks"];
        const auto found = marks.FindMember(std::to_string(series).c_str());
        if (found == marks.MemberEnd())
            return result;
        for (const auto& run : found->value.GetArray()) {
            for (std::uint64_t i = 0; i < run[1].GetUint64(); ++i)
                result.at(run[0].GetUint64() + i) = names.at(run[2].GetUint());
        }
        return result;
    }

  private:
    const std::string& m_page;
    std::string m_prefix;
    rapidjson::Document m_head;
};
