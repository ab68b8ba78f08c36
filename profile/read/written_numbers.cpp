// SPDX-License-Identifier: Apache-2.0
#include "written_numbers.h"

#include <array>
#include <charconv>
#include <cmath>
#include <type_traits>

namespace zan::profile {

namespace {

// Floats from the least to below the limit are written without an exponent, and a double holds their product
// with a power of ten that makes seven digits of them.
constexpr double least_plain = 1e-4;
constexpr double plain_limit = 1e7;
constexpr double seven_digits = 1e6; // the least number that has them
constexpr std::array<double, 11> decimal_scales = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10};

float read_back(float value) {
    char text[max_number_text];
    const char* const end = write_number(text, value);
    float read = value;
    std::from_chars(text, end, read); // infinities are read, too; a NaN stays one in any case
    return read;
}

} // namespace

float as_written(float value) {
    const double magnitude = std::fabs(static_cast<double>(value));
    if (magnitude == 0)
        return value;
    if (!(magnitude >= least_plain && magnitude < plain_limit))
        return read_back(value);
    std::size_t decimals = 0;
    while (decimals + 1 < decimal_scales.size() && magnitude * decimal_scales[decimals] < seven_digits)
        ++decimals;
    const double digits = std::nearbyint(magnitude * decimal_scales[decimals]);
    return std::copysign(static_cast<float>(digits / decimal_scales[decimals]), value);
}

template <class Write>
void WrittenNumbers::write(const ReportArray& values, Write write_as) {
    values.visit([&](const auto& numbers) {
        if constexpr (std::is_same_v<std::decay_t<decltype(numbers[0])>, float>) {
            m_floats.resize(numbers.size());
            for (std::size_t i = 0; i < numbers.size(); ++i)
                m_floats[i] = as_written(numbers[i]);
            write_as(std::span<const float>(m_floats));
        } else {
            write_as(values);
        }
    });
}

void WrittenNumbers::array(std::string_view key, const ReportArray& values) {
    write(values, [&](const ReportArray& written) { m_sink.array(key, written); });
}

void WrittenNumbers::elements(const ReportArray& values) {
    write(values, [&](const ReportArray& written) { m_sink.elements(written); });
}

} // namespace zan::profile
