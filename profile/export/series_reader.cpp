// SPDX-License-Identifier: Apache-2.0
#include "series_reader.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "report_numbers.h"

namespace zan::profile {

OddNumbers& OddNumbers::operator+=(const OddNumbers& other) {
    num_nan += other.num_nan;
    num_inf += other.num_inf;
    return *this;
}

double SeriesChunk::value(std::size_t i) const {
    return are_counts ? static_cast<double>(counts[i]) : written_value(rates[i]);
}

double written_value(float value) {
    constexpr float exact_floats = 1e7f; // below it whole numbers have seven digits at most
    if (std::fabs(value) < exact_floats && std::trunc(value) == value)
        return static_cast<double>(value);
    char text[max_number_text];
    const char* const end = write_number(text, value);
    double number = static_cast<double>(value);
    std::from_chars(text, end, number);
    return number;
}

bool SeriesReader::next(SeriesChunk& chunk) {
    chunk.size = std::min(SeriesChunk::most, m_series.size - m_position);
    chunk.first = m_position;
    if (chunk.size == 0)
        return false;
    const std::size_t num_times = m_series.lines_up ? m_series.times->size() : 0;
    m_series.times->read(m_position, chunk.size, chunk.times.data());
    const auto known_up_to = [&](std::size_t size) {
        return m_series.measured ? std::min(chunk.size, size - std::min(size, m_position)) : 0;
    };
    for (std::size_t i = 0; i < chunk.size; ++i)
        chunk.timed[i] = m_position + i < num_times;
    chunk.known.fill(false);
    if (const auto* counts = std::get_if<const SampleList<long long>*>(&m_series.values)) {
        chunk.are_counts = true;
        (*counts)->read(m_position, chunk.size, chunk.counts.data());
        for (std::size_t i = 0; i < known_up_to((*counts)->size()); ++i)
            chunk.known[i] = chunk.counts[i] >= 0;
    } else {
        const SampleList<float>& rates = *std::get<const SampleList<float>*>(m_series.values);
        chunk.are_counts = false;
        rates.read(m_position, chunk.size, chunk.rates.data());
        for (std::size_t i = 0; i < known_up_to(rates.size()); ++i) {
            chunk.known[i] = std::isfinite(chunk.rates[i]);
            m_odd.num_nan += std::isnan(chunk.rates[i]) ? 1 : 0;
            m_odd.num_inf += std::isinf(chunk.rates[i]) ? 1 : 0;
        }
    }
    m_position += chunk.size;
    return true;
}

} // namespace zan::profile
