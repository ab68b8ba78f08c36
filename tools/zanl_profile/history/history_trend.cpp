// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <vector>

#include <unistd.h>

#include "history_arguments.h"
#include "history_commands.h"
#include "named_file.h"
#include "nearest_word.h"
#include "trend_page.h"
#include "trend_view.h"

namespace zan::tool {

using namespace profile;

namespace {

struct HistoryTrendOptions {
    std::string database;
    std::string kernel;
    std::string block;
    std::string metric;
    std::vector<std::string> where;
    std::string label = "package";
    std::optional<std::size_t> last;
    std::string html;
    std::string limit;
    bool strict = false;
};

const MetricRow& metric_from(const HistoryTrendOptions& options) {
    const MetricRow* const row = find_metric(options.metric);
    if (!row) {
        std::vector<std::string> names;
        for (const MetricRow& known : metric_table()) {
            if (known.scope == MetricScope::kernel || known.scope == MetricScope::block)
                names.emplace_back(known.name);
        }
        throw Failure("there is no metric " + in_quotes(options.metric) +
                      did_you_mean(options.metric, names));
    }
    if (row->scope != MetricScope::kernel && row->scope != MetricScope::block)
        throw Failure(in_quotes(options.metric) + " is no metric of a kernel or a block");
    if (row->scope == MetricScope::block && options.block.empty())
        throw Failure(in_quotes(options.metric) + " is a metric of blocks: name one with --block");
    if (row->scope == MetricScope::kernel && !options.block.empty())
        throw Failure(in_quotes(options.metric) + " is a metric of kernels, and --block names a block");
    return *row;
}

std::optional<double> limit_from(const HistoryTrendOptions& options, const MetricRow& metric) {
    if (options.limit.empty()) {
        if (options.strict)
            throw Failure("--strict is for --fail-on");
        return std::nullopt;
    }
    const auto percent = percent_of_limit(options.limit);
    if (!percent)
        throw Failure("--fail-on takes a share of the median, such as +5%, not " + in_quotes(options.limit));
    if (metric.better == Better::neither)
        throw Failure("--fail-on: no value of " + in_quotes(options.metric) + " is worse than another");
    return percent;
}

// Why there is no value.
Failure no_values(HistoryStore& store, const HistoryTrendOptions& options, const std::string& subject) {
    const auto is_among = [](const std::vector<std::string>& names, const std::string& name) {
        return std::find(names.begin(), names.end(), name) != names.end();
    };
    const std::vector<std::string> kernels = store.names();
    if (!is_among(kernels, options.kernel))
        return Failure("no run has a kernel " + in_quotes(options.kernel) +
                       did_you_mean(options.kernel, kernels));
    const std::vector<std::string> blocks = store.names(options.kernel);
    if (!options.block.empty() && !is_among(blocks, options.block))
        return Failure("no run has a block " + in_quotes(options.block) + " in " + in_quotes(options.kernel) +
                       did_you_mean(options.block, blocks));
    return Failure("no run" + std::string(options.where.empty() ? "" : " with these labels") + " has " +
                   in_quotes(options.metric) + " of " + in_quotes(subject));
}

TrendView read_trend(const HistoryTrendOptions& options) {
    TrendView view;
    view.database = options.database;
    view.metric = &metric_from(options);
    view.limit = limit_from(options, *view.metric);
    view.label = options.label;
    view.subject = options.kernel + (options.block.empty() ? "" : "/" + options.block);
    if (options.last == std::size_t{0})
        throw Failure("--last takes a number of runs from 1 on");
    TrendQuery query{options.kernel, options.block, view.metric->metric,
                     labels_from(options.where, "--where"), options.last};
    if (query.most)
        ++*query.most; // the newest
    with_history([&] {
        HistoryStore store(options.database, OpenMode::read);
        view.line = store.trend(query);
        if (view.line.points.empty())
            throw no_values(store, options, view.subject);
    });
    std::vector<double> values;
    for (const TrendPoint& point : view.line.points)
        values.push_back(point.value);
    view.statistics = statistics_of(values);
    if (view.limit)
        view.verdict = judge(view.statistics, view.metric->better, *view.limit);
    return view;
}

void print_view(const TrendView& view, const Console& console) {
    if (console.json)
        print_trend_json(view, standard_output_target());
    else
        standard_output_target()(trend_text(view, has_utf8(), console.has_colors(STDOUT_FILENO)));
}

void show_trend(const HistoryTrendOptions& options, const Console& console) {
    const TrendView view = read_trend(options);
    const bool newest_is_missing = !view.line.newest_without.empty();
    if (newest_is_missing)
        print_note(console, "the newest run, " + view.line.newest_without.substr(0, 12) + ", has no " +
                                options.metric + " of " + printable(view.subject));
    if (!options.html.empty()) {
        OutputFile page(options.html);
        page.write(trend_page(view));
        page.commit();
    }
    if (!is_standard_stream(options.html))
        print_view(view, console);
    const bool is_unknown = view.verdict == TrendVerdict::too_few || newest_is_missing;
    if (view.fails() || (options.strict && is_unknown))
        throw QuietEnd{status_no};
}

void define_history_trend(CLI::App& app, Console& console) {
    const auto options = std::make_shared<HistoryTrendOptions>();
    app.add_option("DB", options->database, "the history")->required();
    app.add_option("--kernel", options->kernel, "the kernel; 'NAME#1' is its compute unit 1")
        ->type_name("NAME")
        ->required();
    app.add_option("--block", options->block, "a block of the kernel")->type_name("NAME");
    app.add_option("--metric", options->metric, "what is shown: kernel_time, or of a block stall")
        ->type_name("METRIC")
        ->required();
    app.add_option("--where", options->where, "only runs with this label")->type_name("NAME=VALUE");
    app.add_option("--label", options->label, "the label beside the date; by default 'package'")
        ->type_name("NAME");
    app.add_option("--last", options->last, "the newest run and that many before it; by default all")
        ->type_name("N");
    app.add_option("--html", options->html, "also write a page with a chart; '-': in place of the text")
        ->type_name("FILE");
    app.add_option("--fail-on", options->limit,
                   "exit with 1 if the newest is worse than the median by more: +5%")
        ->type_name("LIMIT");
    app.add_flag("--strict", options->strict, "with --fail-on, exit with 1 also if it can't be decided");
    add_json_option(app, console);
    app.callback([options, &console] { show_trend(*options, console); });
}

} // namespace

const Command history_trend_command = {
    "trend", "show a metric over the runs, and fail if the newest is worse", define_history_trend,
    "zanl-profile history trend runs.db --kernel aggregate --metric kernel_time --last 20\n"
    "zanl-profile history trend runs.db --kernel blur --block load --metric stall --fail-on +5%",
    "the newest run is worse, or with --strict it can't be decided"};

} // namespace zan::tool
