// SPDX-License-Identifier: Apache-2.0
// Quantiles, and how sure a median is.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <utility>

namespace zan::profile {

// The value that the share `part` (0 to 1) of the sorted values doesn't exceed, by nearest rank: always one
// of them. There must be at least one.
double quantile(std::span<const double> sorted, double part);

// The places, from 0, of the two of `count` sorted values between which the true median lies with a
// probability of 95% or more, whatever the distribution. Below 5 values there are no such places; 5 have 94%.
std::optional<std::pair<std::size_t, std::size_t>> median_interval(std::size_t count);

} // namespace zan::profile
