// SPDX-License-Identifier: Apache-2.0
#include "order_statistics.h"

#include <algorithm>
#include <cmath>

namespace zan::profile {

double quantile(std::span<const double> sorted, double part) {
    const double count = static_cast<double>(sorted.size());
    // 0.95 · 20 is a little more than 19 in binary.
    const auto rank = static_cast<std::size_t>(std::ceil(part * count * (1.0 - 1e-12)));
    return sorted[std::clamp<std::size_t>(rank, 1, sorted.size()) - 1];
}

// How many of n values lie below the median is a binomial number of probability 1/2. The interval leaves out
// the `below` least and as many of the greatest, such that each end is wrong in at most 2.5% of cases.
std::optional<std::pair<std::size_t, std::size_t>> median_interval(std::size_t count) {
    constexpr std::size_t fewest = 5;
    constexpr std::size_t most_exact = 1000; // 2^-1000 is still a double
    if (count < fewest)
        return std::nullopt;
    std::size_t below = 0;
    if (count > most_exact) {
        const double n = static_cast<double>(count);
        below = static_cast<std::size_t>(std::floor(n / 2.0 - 0.98 * std::sqrt(n) - 1.0));
    } else {
        double term = std::ldexp(1.0, -static_cast<int>(count)); // P(exactly k below), with k from 0
        double sum = term;
        for (std::size_t k = 1;
             sum + term * static_cast<double>(count - k + 1) / static_cast<double>(k) <= 0.025; ++k) {
            term *= static_cast<double>(count - k + 1) / static_cast<double>(k);
            sum += term;
            below = k;
        }
        if (sum > 0.025)
            below = 0;
    }
    return std::pair{below, count - 1 - below};
}

} // namespace zan::profile
