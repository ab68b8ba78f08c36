// SPDX-License-Identifier: Apache-2.0
#include "facts.h"

#include <algorithm>
#include <iterator>

namespace zan::profile {

namespace {

constexpr auto num_metrics = static_cast<std::size_t>(Metric::count);

// In the order of Fact.
constexpr std::string_view fact_names[] = {
    "shared",
    "shared_stall",
    "autorun",
    "innermost",
    "counted",
    "kernel_stall",
    "kernel_valid",
    "loops_valid",
    "own_share",
    "port_sharers",
    "clock_reach",
    "read_share",
    "write_share",
    "interfaces",
    "bank_share",
    "bank_use",
    "lower_bound",
    "free",
    "free_memory",
    "free_stages",
    "samples",
    "calm_part",
    "from",
    "to",
    "clock",
    "max_burst",
    "max_valid",
    "iterations",
    "invocation_cycles",
    "host_longest",
    "transfers_longest",
    "reprogramming_share",
    "nothing_share",
    "transfer_share",
    "lead_autorun",
    "invocations",
    "busy",
    "kernel_total",
    "kernel_time",
    "gap",
    "gaps_share",
    "has_culprit",
    "unknown_blocks",
    "more_places",
};
static_assert(std::size(fact_names) == static_cast<std::size_t>(Fact::count));

// In the order of FactText.
constexpr std::string_view text_names[] = {"memory",         "port",   "what",    "sharer", "rivals", "stage",
                                           "stalling_block", "kernel", "culprit", "place",  "caller"};
static_assert(std::size(text_names) == static_cast<std::size_t>(FactText::count));

template <class Names>
std::optional<std::size_t> place_in(const Names& names, std::string_view name) {
    const auto* found = std::ranges::find(names, name);
    if (found == std::end(names))
        return std::nullopt;
    return static_cast<std::size_t>(found - std::begin(names));
}

} // namespace

std::optional<std::size_t> find_number(std::string_view name) {
    // Names of the run and of its leading kernel, which metrics of kernels have too, are facts.
    if (const auto place = place_in(fact_names, name))
        return num_metrics + *place;
    const MetricRow* row = find_metric(name);
    if (row == nullptr || row->scope != MetricScope::block)
        return std::nullopt;
    return static_cast<std::size_t>(row->metric);
}

std::optional<FactText> find_text(std::string_view name) {
    const auto place = place_in(text_names, name);
    return place ? std::optional(static_cast<FactText>(*place)) : std::nullopt;
}

const Value& Facts::number(std::size_t place) const {
    return place < num_metrics ? m_metrics[static_cast<Metric>(place)] : m_numbers[place - num_metrics];
}

} // namespace zan::profile
