// SPDX-License-Identifier: Apache-2.0
// Whether the newest of some values is worse than those before it.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

#include "metric_table.h"

namespace zan::profile {

// Below that many values before it, a newest value can't be judged.
inline constexpr std::size_t fewest_before = 5;
// A newest value that is nearer to the median than that many deviations may be one like the others.
inline constexpr double most_deviations = 3;

// Where the newest value stands among those before it.
struct TrendStatistics {
    std::size_t num_before = 0;
    double newest = 0;
    double median = 0;    // of those before it, by nearest rank
    double deviation = 0; // the median of their distances from that median
};

// Nothing below two values. Oldest first; the last one is the newest.
std::optional<TrendStatistics> statistics_of(std::span<const double> values);

enum class TrendVerdict { holds, fails, too_few };

// Fails if the newest value is worse than the median by more than `percent` of the median, and by more than
// three deviations. `better` says which way is worse; neither way is for Better::neither.
TrendVerdict judge(const std::optional<TrendStatistics>& statistics, Better better, double percent);

// The 5 of "+5%"; nothing if a text isn't written so. Never negative.
std::optional<double> percent_of_limit(std::string_view text);

} // namespace zan::profile
