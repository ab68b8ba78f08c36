// SPDX-License-Identifier: Apache-2.0
#include "summary_command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <memory>
#include <numeric>

#include <unistd.h>

#include "failure.h"
#include "inputs.h"
#include "json_output.h"
#include "nearest_word.h"
#include "plain_summary.h"
#include "printable.h"
#include "progress.h"
#include "run_reader.h"
#include "summary_json.h"
#include "summary_tables.h"
#include "time_option.h"

namespace zan::tool {

using namespace profile;

namespace {

struct SummaryOptionTexts {
    std::vector<std::string> inputs;
    std::string kernel;
    std::string sort;
    std::optional<std::size_t> top;
    std::string unit;
    std::string time_unit;
    bool plain = false;
};

// Names of the metrics of a block, or of all.
std::vector<std::string> metric_names() {
    std::vector<std::string> names;
    for (const MetricRow& row : metric_table()) {
        if (row.scope == MetricScope::block)
            names.emplace_back(row.name);
    }
    return names;
}

std::optional<Metric> metric_of(const std::string& name) {
    if (name.empty())
        return {};
    const MetricRow* row = find_metric(name);
    if (row == nullptr || row->scope != MetricScope::block)
        throw Failure(in_quotes(name) + " is no metric of a block" + did_you_mean(name, metric_names()));
    return row->metric;
}

int unit_of(const std::string& text) {
    if (text == "all")
        return all_compute_units;
    int unit = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), unit);
    if (read.ec != std::errc() || read.ptr != text.data() + text.size() || unit < 0)
        throw Failure("--unit takes a number or 'all', not " + in_quotes(text));
    return unit;
}

ProfileSummary read_summary(const SummaryOptionTexts& options, const Console& console) {
    const auto split = inputs_of(options.inputs);
    if (const auto* fault = std::get_if<InputFault>(&split))
        throw Failure(printable(fault->text));
    const auto& inputs = std::get<std::vector<Input>>(split);
    InputOptions input_options;
    input_options.nanoseconds = nanoseconds_of_unit(options.time_unit);
    if (!options.unit.empty()) {
        input_options.compute_unit = unit_of(options.unit);
        for (const Input& input : inputs) {
            if (input.capture.empty())
                throw Failure(in_quotes(input.name) +
                              " has compute unit 0 alone; --unit takes a package and its capture");
        }
    }
    // Several inputs are one work: a progress that begins again is the next one of them.
    const std::uint64_t total =
        std::accumulate(inputs.begin(), inputs.end(), std::uint64_t{0},
                        [](std::uint64_t sum, const Input& input) { return sum + size_of(input); });
    Progress progress(console, "reading", total);
    std::uint64_t before = 0;
    std::uint64_t last = 0;
    input_options.progress = [&](std::uint64_t done) {
        before += done < last ? last : 0;
        last = done;
        progress.at(before + done);
    };
    auto result = summarize_inputs(inputs, input_options);
    if (const auto* fault = std::get_if<InputFault>(&result))
        throw Failure(printable(fault->text));
    return std::get<ProfileSummary>(std::move(result));
}

void check_kernel(const ProfileSummary& summary, const std::string& kernel) {
    std::vector<std::string> names;
    for (const KernelSummary& known : summary.kernels)
        names.push_back(known.name);
    if (!kernel.empty() && std::ranges::count(names, kernel) == 0)
        throw Failure("no kernel is called " + in_quotes(kernel) + did_you_mean(kernel, names));
}

void summarize_run(const SummaryOptionTexts& options, const Console& console) {
    SummaryView view;
    view.kernel = options.kernel;
    view.sort = metric_of(options.sort);
    view.top = options.top;
    view.width = line_columns(STDOUT_FILENO);
    view.colors = console.has_colors(STDOUT_FILENO);
    const ProfileSummary summary = read_summary(options, console);
    check_kernel(summary, options.kernel);
    const TextTarget output = standard_output_target();
    if (console.json)
        output(summary_to_json(summary));
    else
        output(options.plain ? plain_summary_text(summary, view) : summary_text(summary, view));
}

void define_summary(CLI::App& app, Console& console) {
    const auto options = std::make_shared<SummaryOptionTexts>();
    app.add_option("INPUT", options->inputs,
                   "a report, a saved summary, or a package (*zanx) and its capture")
        ->required();
    app.add_option("--kernel", options->kernel, "show this kernel alone")->type_name("NAME");
    app.add_option("--sort", options->sort, "sort blocks by this metric, greatest first")
        ->type_name("METRIC");
    app.add_option("--top", options->top, "show that many blocks, and all of the rest")->type_name("N");
    app.add_option("--unit", options->unit, "of a package: read this compute unit, or 'all' of them")
        ->type_name("N|all");
    app.add_option("--time-unit", options->time_unit, "the unit of times, if it isn't found: ns, us, ms or s")
        ->type_name("UNIT");
    app.add_flag("--plain", options->plain,
                 "print tables for scripts: separated by tabs, all rows, numbers in full");
    add_json_option(app, console, "print JSON, which can be kept and read again as an INPUT");
    app.callback([options, &console] { summarize_run(*options, console); });
}

} // namespace

const Command summary_command = {
    "summary", "show which kernel took the time, which block holds it up, and why", define_summary,
    "zanl-profile summary report.json\n"
    "zanl-profile summary design.zanx profile.mon --kernel blur --sort stall\n"
    "zanl-profile summary report.json --json > baseline.json"};

} // namespace zan::tool
