// SPDX-License-Identifier: Apache-2.0
// The values of a series, some hundred at a time, with what no one measured left out.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "export_writer.h"

namespace zan::profile {

// Values of a report that are no numbers. They become null.
struct OddNumbers {
    std::int64_t num_nan = 0;
    std::int64_t num_inf = 0;
    OddNumbers& operator+=(const OddNumbers& other);
};

struct SeriesChunk {
    static constexpr std::size_t most = 256;

    std::size_t size = 0;
    std::size_t first = 0; // place in the series
    bool are_counts = true;
    std::array<long long, most> counts; // if they are
    std::array<float, most> rates;      // else
    std::array<long long, most> times;
    std::array<bool, most> known; // the value isn't null
    std::array<bool, most> timed; // the time isn't null
    // The values of a counter that the design doesn't have are below 0, and null.
    double value(std::size_t i) const;
};

// Goes over a series, which must outlive it.
class SeriesReader {
  public:
    explicit SeriesReader(const SampleSeries& series) : m_series(series) {}

    // Reads the next values; false at the end.
    bool next(SeriesChunk& chunk);
    const OddNumbers& odd() const { return m_odd; }

  private:
    const SampleSeries& m_series;
    std::size_t m_position = 0;
    OddNumbers m_odd;
};

// The number that the report has for a float: of its seven digits, so "0.8" is 0.8, and not the float next to
// it.
double written_value(float value);

} // namespace zan::profile
