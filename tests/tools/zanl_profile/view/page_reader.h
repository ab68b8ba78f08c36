// SPDX-License-Identifier: Apache-2.0
// A page, read as its script reads it, in other words: elements by their names, and the numbers of chunks.
#pragma once

#include <rapidjson/document.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "page_numbers.h"

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
            std::string packed;
            if (width != 0)
                packed = chunk(first + number);
            ++number;
            const std::vector<std::int64_t> part = units_of_chunk(packed, encoding.GetInt(), count);
            EXPECT_EQ(part.size(), count);
            values.insert(values.end(), part.begin(), part.end());
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
