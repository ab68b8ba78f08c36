// SPDX-License-Identifier: Apache-2.0
#include "page_json.h"

#include <cmath>

#include "printable.h"

namespace zan::tool {

void PageJsonText::Put(char c) {
    switch (c) {
        case '<':
            m_text += "\\u003c";
            break;
        case '>':
            m_text += "\\u003e";
            break;
        case '&':
            m_text += "\\u0026";
            break;
        default:
            m_text += c;
    }
}

PageJson& PageJson::key(std::string_view name) {
    const std::string valid = valid_utf8(name);
    m_writer.Key(valid.data(), static_cast<rapidjson::SizeType>(valid.size()));
    return *this;
}

void PageJson::text(std::string_view value) {
    const std::string valid = valid_utf8(value);
    m_writer.String(valid.data(), static_cast<rapidjson::SizeType>(valid.size()));
}

void PageJson::number(double value) {
    if (!std::isfinite(value))
        m_writer.Null();
    else if (value == std::trunc(value) && std::fabs(value) < 9e15)
        m_writer.Int64(static_cast<std::int64_t>(value)); // without ".0"
    else
        m_writer.Double(value);
}

void PageJson::number(const std::optional<double>& value) {
    number(value.value_or(std::nan("")));
}

void PageJson::decimal(std::int64_t units, int digits) {
    const bool is_negative = units < 0;
    const auto magnitude =
        is_negative ? 0 - static_cast<std::uint64_t>(units) : static_cast<std::uint64_t>(units);
    std::string text = std::to_string(magnitude);
    const auto decimals = static_cast<std::size_t>(digits);
    if (text.size() <= decimals)
        text.insert(0, decimals + 1 - text.size(), '0');
    if (decimals != 0)
        text.insert(text.size() - decimals, 1, '.');
    if (is_negative)
        text.insert(0, 1, '-');
    m_writer.RawValue(text.data(), text.size(), rapidjson::kNumberType);
}

} // namespace zan::tool
