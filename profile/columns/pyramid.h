// SPDX-License-Identifier: Apache-2.0
// The level of 256 values of a long series: what a chart shows of them without reading them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zan::profile {

inline constexpr std::size_t pyramid_step = 256;
// Shorter series have no stored pyramid: a page builds it of the values.
inline constexpr std::uint64_t pyramid_from = std::uint64_t{1} << 16;

// One entry for each 256 values, the last one for fewer.
class Pyramid {
  public:
    // `shown`: what charts show; not a number where the value doesn't count. `product`: value · weight.
    void add(double shown, double product, double weight) { add_range(shown, shown, product, weight); }
    // The same of several samples that became one.
    void add_range(double low, double high, double product, double weight);
    // Values that don't count, up to that length.
    void fill_up_to(std::uint64_t length);
    // Closes the last entry.
    void finish();
    // As if `offset` had been added to each value, of weight 1. After finish().
    void shift(double offset);

    std::uint64_t size() const { return m_size; }
    // All values count, and each once.
    bool all_count() const { return m_all_count; }
    void count_by_weights() { m_all_count = false; }
    // Where no value of an entry counts, those of the entry before it.
    const std::vector<double>& least() const { return m_least; }
    const std::vector<double>& range() const { return m_range; } // greatest minus least
    const std::vector<double>& sums() const { return m_sums; }   // of the products
    const std::vector<double>& weights() const { return m_weights; }

  private:
    void close();

    std::vector<double> m_least;
    std::vector<double> m_range;
    std::vector<double> m_sums;
    std::vector<double> m_weights;
    std::uint64_t m_size = 0;
    bool m_all_count = true;
    // The open entry.
    bool m_has_shown = false;
    double m_low = 0.0;
    double m_high = 0.0;
    double m_sum = 0.0;
    double m_weight = 0.0;
};

} // namespace zan::profile
