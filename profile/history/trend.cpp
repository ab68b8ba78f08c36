// SPDX-License-Identifier: Apache-2.0
#include "trend.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <vector>

#include "order_statistics.h"

namespace zan::profile {

namespace {

double median_of(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return quantile(values, 0.5);
}

// Differences of doubles are off by some of the last digits.
bool is_beyond(double change, double limit) {
    return change > 0 && change > limit * (1 + 1e-9);
}

} // namespace

std::optional<TrendStatistics> statistics_of(std::span<const double> values) {
    if (values.size() < 2)
        return std::nullopt;
    TrendStatistics statistics;
    statistics.num_before = values.size() - 1;
    statistics.newest = values.back();
    std::vector<double> before(values.begin(), values.end() - 1);
    statistics.median = median_of(before);
    for (double& value : before)
        value = std::abs(value - statistics.median);
    statistics.deviation = median_of(std::move(before));
    return statistics;
}

TrendVerdict judge(const std::optional<TrendStatistics>& statistics, Better better, double percent) {
    if (!statistics || statistics->num_before < fewest_before)
        return TrendVerdict::too_few;
    if (better == Better::neither)
        return TrendVerdict::holds;
    const double rise = statistics->newest - statistics->median;
    const double worse_by = better == Better::less ? rise : -rise;
    const bool fails = is_beyond(worse_by, std::abs(statistics->median) * percent / 100) &&
                       is_beyond(worse_by, statistics->deviation * most_deviations);
    return fails ? TrendVerdict::fails : TrendVerdict::holds;
}

std::optional<double> percent_of_limit(std::string_view text) {
    if (text.size() < 3 || text.front() != '+' || text.back() != '%')
        return std::nullopt;
    text = text.substr(1, text.size() - 2);
    double percent = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), percent);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(percent) ||
        std::signbit(percent))
        return std::nullopt;
    return percent;
}

} // namespace zan::profile
