// SPDX-License-Identifier: Apache-2.0
#include "trend_view.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <vector>

#include "metric_text.h"
#include "printable.h"
#include "rounded_summary.h"
#include "summary_fields.h"
#include "table.h"
#include "value_text.h"

namespace zan::tool {

using namespace profile;

namespace {

constexpr double widest_bar = 12; // columns

// The greatest of all values has a bar of the full width; what is above 0 has at least the smallest one.
std::string bar_of(double value, double greatest, bool has_utf8) {
    if (!(value > 0))
        return {};
    constexpr const char* eighths[] = {"", "▏", "▎", "▍", "▌", "▋", "▊", "▉"};
    constexpr long steps = static_cast<long>(std::size(eighths));
    const double columns = value / greatest * widest_bar;
    if (!has_utf8)
        return std::string(static_cast<std::size_t>(std::max(std::lround(columns), 1L)), '#');
    const long length = std::max(std::lround(columns * steps), 1L);
    std::string bar;
    for (long i = 0; i < length / steps; ++i)
        bar += "█";
    return bar + eighths[length % steps];
}

struct TrendRow {
    std::string date;
    std::string label;
    std::string value;
    std::string bar;
};

std::vector<TrendRow> rows_of(const TrendView& view, bool has_utf8) {
    double greatest = 0;
    for (const TrendPoint& point : view.line.points)
        greatest = std::max(greatest, point.value);
    std::vector<TrendRow> rows;
    for (const TrendPoint& point : view.line.points)
        rows.push_back({printable(point.run.date), printable(label_text(view, point.run)),
                        value_text(view, point.value), bar_of(point.value, greatest, has_utf8)});
    return rows;
}

std::string padded(const std::string& text, std::size_t width) {
    return text + std::string(width - std::min(width, display_width(text)), ' ');
}

std::string runs_before(std::size_t count) {
    const std::string number = count_text(static_cast<double>(count));
    return "the " + number + (count == 1 ? " run before " : " runs before ");
}

void print_number(JsonOutput& json, const std::string& key, const Value& value) {
    if (value && std::isfinite(*value))
        json.member(key, rounded_value(*value));
    else
        json.member(key, nullptr);
}

const char* verdict_word(const TrendView& view) {
    switch (view.verdict) {
        case TrendVerdict::fails:
            return "failed";
        case TrendVerdict::too_few:
            return "too-few";
        case TrendVerdict::holds:
            break;
    }
    return "holds";
}

} // namespace

std::string value_text(const TrendView& view, double value) {
    return metric_text(view.metric->unit, value, view.line.time_unit);
}

std::string deviation_text(const TrendView& view, double deviation, double median) {
    const std::string text = value_text(view, median);
    std::string number;
    std::copy_if(text.begin(), text.end(), std::back_inserter(number),
                 [](char c) { return (c >= '0' && c <= '9') || c == '.'; });
    const std::size_t point = number.find('.');
    const int decimals = point == std::string::npos ? 0 : static_cast<int>(number.size() - point - 1);
    // The text rounds the median in a unit that is a power of ten.
    const double shown = number.empty() ? 0 : std::stod(number);
    const double unit =
        shown > 0 && median > 0 ? std::pow(10.0, std::round(std::log10(median / shown))) : 1.0;
    const std::string fixed = fixed_text(deviation / unit, decimals);
    const bool is_zero = fixed.find_first_not_of("0.") == std::string::npos;
    return is_zero && deviation > 0 ? number_text(deviation / unit) : fixed;
}

std::string change_text(const TrendView& view) {
    if (!view.statistics)
        return {};
    return delta_text(view.metric->unit, view.statistics->median, view.statistics->newest,
                      view.line.time_unit);
}

std::string label_text(const TrendView& view, const HistoryRun& run) {
    const auto found = run.labels.find(view.label);
    if (found == run.labels.end() || found->second.empty())
        return "-";
    return found->second;
}

std::string trend_sentence(const TrendView& view) {
    if (view.limit && view.verdict == TrendVerdict::too_few)
        return "too few runs to tell: " + count_text(static_cast<double>(view.line.points.size() - 1)) +
               " before the newest, and it takes " + std::to_string(fewest_before);
    if (!view.statistics)
        return {};
    const TrendStatistics& found = *view.statistics;
    std::string median = "median of " + runs_before(found.num_before) + value_text(view, found.median) +
                         " (deviation " + deviation_text(view, found.deviation, found.median) + ")";
    if (!view.limit)
        return median;
    return std::string(verdict_word(view)) + ": " + std::string(view.metric->name) + " of " +
           printable(view.subject) + " is " + value_text(view, found.newest) + ", " + median;
}

std::string trend_text(const TrendView& view, bool has_utf8, bool colors) {
    const std::vector<TrendRow> rows = rows_of(view, has_utf8);
    std::string TrendRow::*const columns[] = {&TrendRow::date, &TrendRow::label, &TrendRow::value,
                                              &TrendRow::bar};
    std::size_t widths[std::size(columns)] = {};
    for (std::size_t i = 0; i < std::size(columns); ++i) {
        for (const TrendRow& row : rows)
            widths[i] = std::max(widths[i], display_width(row.*columns[i]));
    }
    const Style style = view.fails() ? Style::bad : Style::plain;
    std::string text;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const TrendRow& row = rows[i];
        const std::string value = std::string(widths[2] - display_width(row.value), ' ') + row.value;
        std::string line = padded(row.date, widths[0]) + "  " + padded(row.label, widths[1]) + "  " + value;
        const std::string change = i + 1 == rows.size() ? change_text(view) : "";
        if (!change.empty())
            line += "  " + padded(row.bar, widths[3]) + "  " + styled(change, style, colors);
        else if (!row.bar.empty())
            line += "  " + row.bar;
        text += line + "\n";
    }
    const std::string sentence = trend_sentence(view);
    if (!sentence.empty())
        text += styled(sentence, style, colors) + "\n";
    return text;
}

void print_trend_json(const TrendView& view, TextTarget target) {
    JsonOutput json("zanl-profile/history-trend", 1, std::move(target));
    const std::string suffix = unit_suffix(view.metric->unit, view.line.time_unit);
    json.member("subject", view.subject);
    json.member("metric", view.metric->name);
    json.begin_array("runs");
    for (const TrendPoint& point : view.line.points) {
        json.begin_object();
        json.member("id", point.run.id);
        json.member("date", point.run.date);
        json.begin_object("labels");
        for (const auto& [name, value] : point.run.labels)
            json.member(name, value);
        json.end_object();
        print_number(json, "value" + suffix, point.value);
        json.end_object();
    }
    json.end_array();
    const auto& found = view.statistics;
    json.member("runs_before", found ? found->num_before : std::uint64_t{0});
    print_number(json, "median" + suffix, found ? Value(found->median) : Value());
    print_number(json, "deviation" + suffix, found ? Value(found->deviation) : Value());
    const bool has_share = found && found->median != 0;
    print_number(
        json, "change_percent",
        has_share ? Value((found->newest - found->median) / std::abs(found->median) * 100) : Value());
    if (view.limit) {
        print_number(json, "limit_percent", view.limit);
        json.member("verdict", verdict_word(view));
    }
    json.finish();
}

} // namespace zan::tool
