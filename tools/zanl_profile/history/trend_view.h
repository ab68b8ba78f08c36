// SPDX-License-Identifier: Apache-2.0
// What `history trend` shows, as text, JSON or a page.
#pragma once

#include <optional>
#include <string>

#include "history_store.h"
#include "json_output.h"
#include "trend.h"

namespace zan::tool {

struct TrendView {
    std::string database;
    std::string subject; // "aggregate", "aggregate/load"
    const profile::MetricRow* metric = nullptr;
    std::string label; // the name of the label that stands beside the date
    profile::TrendLine line;
    std::optional<profile::TrendStatistics> statistics;
    std::optional<double> limit; // percent of the median; nothing without --fail-on
    profile::TrendVerdict verdict = profile::TrendVerdict::holds;

    bool fails() const { return limit && verdict == profile::TrendVerdict::fails; }
};

// A value with its unit.
std::string value_text(const TrendView& view, double value);
// A deviation as people read it beside its median: in the same unit, which it doesn't repeat, with as many
// decimals, or more if it would be 0.
std::string deviation_text(const TrendView& view, double deviation, double median);
// By how much the newest value differs from the median: "+17.9%"; empty if there are no runs before it.
std::string change_text(const TrendView& view);
// The label of a run; "-" if it has none.
std::string label_text(const TrendView& view, const profile::HistoryRun& run);
// The sentence below the rows: the verdict, the median, the deviation. Empty if there is nothing to say.
std::string trend_sentence(const TrendView& view);

// The rows with a plot, and the sentence. Bars are of ASCII if `has_utf8` is false.
std::string trend_text(const TrendView& view, bool has_utf8, bool colors);
void print_trend_json(const TrendView& view, TextTarget target);

} // namespace zan::tool
