// SPDX-License-Identifier: Apache-2.0
#include "diff_command.h"

#include <unistd.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>

#include "diff_json.h"
#include "diff_markdown.h"
#include "diff_text.h"
#include "failure.h"
#include "inputs.h"
#include "metric_text.h"
#include "nearest_word.h"
#include "progress.h"

namespace zan::tool {

using namespace profile;

namespace {

void check_choice(const char* option, const std::string& value, const std::vector<std::string>& choices) {
    if (std::ranges::find(choices, value) != choices.end())
        return;
    std::string text = choices[0];
    for (std::size_t i = 1; i < choices.size(); ++i)
        text += (i + 1 == choices.size() ? " or " : ", ") + choices[i];
    throw Failure(std::string(option) + " takes " + text + ", not " + in_quotes(value));
}

GateRule rule_from(const std::string& text) {
    auto parsed = parse_gate_rule(text);
    const auto* const fault = std::get_if<GateRuleFault>(&parsed);
    if (!fault)
        return std::get<GateRule>(std::move(parsed));
    std::string why = printable(fault->text);
    if (!fault->unknown_metric.empty()) {
        std::vector<std::string> metrics;
        for (const MetricRow& row : metric_table())
            metrics.emplace_back(row.name);
        why += did_you_mean(fault->unknown_metric, metrics);
    }
    throw Failure("--fail-on: " + why);
}

std::vector<Input> two_inputs(const std::vector<std::string>& words) {
    auto inputs = inputs_of(words);
    if (const auto* const fault = std::get_if<InputFault>(&inputs))
        throw Failure(printable(fault->text));
    auto list = std::get<std::vector<Input>>(std::move(inputs));
    if (list.size() != 2)
        throw Failure("diff takes two inputs, BASE and NEW, not " + std::to_string(list.size()));
    return list;
}

ProfileSummary read_input(const Input& input, const Console& console) {
    Progress progress(console, "reading " + printable(input.name), size_of(input));
    InputOptions options;
    options.progress = [&](std::uint64_t done) { progress.at(done); };
    auto summary = summarize_inputs(std::span(&input, 1), options);
    if (const auto* const fault = std::get_if<InputFault>(&summary))
        throw Failure(printable(fault->text));
    auto& read = std::get<ProfileSummary>(summary);
    // A saved summary names what it was made of.
    read.input = input.capture.empty() ? input.name : input.name + " " + input.capture;
    return std::move(read);
}

// Throws Failure if a kernel or a block that is asked for is in neither run.
void check_filter(const SubjectFilter& filter, const RunComparison& comparison) {
    std::vector<std::string> kernels;
    std::vector<std::string> blocks;
    for (const SubjectComparison& subject : comparison.subjects) {
        if (subject.scope == MetricScope::kernel)
            kernels.push_back(subject.kernel);
        if (subject.scope == MetricScope::block) {
            blocks.push_back(subject.name);
            blocks.push_back(subject.kernel + "/" + subject.name);
        }
    }
    const auto is_known = [&](const SubjectFilter& one, MetricScope scope) {
        return std::ranges::any_of(comparison.subjects, [&](const SubjectComparison& subject) {
            return subject.scope == scope && one.takes(subject);
        });
    };
    for (const std::string& kernel : filter.kernels) {
        if (!is_known({{kernel}, {}}, MetricScope::kernel))
            throw Failure("neither run has a kernel " + in_quotes(kernel) + did_you_mean(kernel, kernels));
    }
    for (const std::string& block : filter.blocks) {
        if (!is_known({{}, {block}}, MetricScope::block))
            throw Failure("no kernel of both runs has a block " + in_quotes(block) +
                          did_you_mean(block, blocks));
    }
}

void check_rules(DiffResult& result) {
    for (const GateRule& rule : result.rules) {
        result.results.push_back(check_rule(rule, result.comparison, result.filter));
        if (result.results.back().num_compared == 0)
            throw Failure("the rule " + in_quotes(rule.text) +
                          " has nothing to compare: no value of it is known of both runs");
    }
}

void print_result(const DiffResult& result, const std::string& format, const Console& console) {
    if (format == "json") {
        print_diff_json(result, standard_output_target());
        return;
    }
    const DiffView view = make_view(result);
    standard_output_target()(format == "markdown" ? diff_markdown(view)
                                                  : diff_text(view, {line_columns(STDOUT_FILENO),
                                                                     console.has_colors(STDOUT_FILENO)}));
}

// The first failure, in words, with the number of the others.
Failure failure_of(const DiffResult& result) {
    const GateFailure* first = nullptr;
    std::size_t count = 0;
    for (const GateResult& checked : result.results) {
        count += checked.failures.size();
        if (!first && !checked.failures.empty())
            first = checked.failures.data();
    }
    const MetricUnit unit = row_of(first->rule->metric).unit;
    const bool time_unit = result.comparison.after->nanoseconds.has_value();
    std::string text = "the rule " + in_quotes(first->rule->text) + " fails for " +
                       in_quotes(label_of(*first->subject)) + ": " +
                       metric_text(unit, first->before, time_unit) + ", now " +
                       metric_text(unit, first->after, time_unit);
    if (count > 1)
        text += " (and " + std::to_string(count - 1) + " more)";
    return Failure(text, status_no);
}

} // namespace

void diff_summaries(const DiffOptions& options, const Console& console, const SummariesToCompare& read) {
    check_choice("--match", options.match, {"name", "source"});
    check_choice("--format", options.format, {"text", "markdown", "json"});
    DiffResult result;
    result.match = options.match == "name" ? MatchBy::name : MatchBy::source;
    result.filter = {options.kernels, options.blocks};
    for (const std::string& text : options.rules)
        result.rules.push_back(rule_from(text));
    const auto [before, after] = read();
    result.comparison = compare(before, after, result.match);
    check_filter(result.filter, result.comparison);
    check_rules(result);
    print_result(result, console.json ? "json" : options.format, console);
    if (result.has_failures())
        throw failure_of(result);
}

void add_diff_options(CLI::App& app, Console& console, DiffOptions* options) {
    app.add_option("--match", options->match, "match blocks by name, or by source where names are generated")
        ->type_name("HOW");
    app.add_option("--format", options->format, "text, markdown or json")->type_name("FORMAT");
    app.add_option("--fail-on", options->rules,
                   "exit with 1 if a metric changes by more: kernel_time:+3%, stall:+5")
        ->type_name("RULE");
    app.add_option("--kernel", options->kernels, "only this kernel and its blocks")->type_name("NAME");
    app.add_option("--block", options->blocks, "of blocks only those of this name, or KERNEL/NAME")
        ->type_name("NAME");
    add_json_option(app, console);
}

namespace {

void diff_inputs(const DiffOptions& options, const std::vector<std::string>& words, const Console& console) {
    diff_summaries(options, console, [&] {
        const std::vector<Input> inputs = two_inputs(words);
        ProfileSummary before = read_input(inputs[0], console);
        return std::pair(std::move(before), read_input(inputs[1], console));
    });
}

void define_diff(CLI::App& app, Console& console) {
    const auto options = std::make_shared<DiffOptions>();
    const auto inputs = std::make_shared<std::vector<std::string>>();
    app.add_option("INPUT", *inputs, "BASE and NEW: a report, a saved summary, or a package and its capture")
        ->required();
    add_diff_options(app, console, options.get());
    app.callback([options, inputs, &console] { diff_inputs(*options, *inputs, console); });
}

} // namespace

const Command diff_command = {"diff", "compare two runs, and fail if the new one is worse", define_diff,
                              "zanl-profile diff base.json new.json\n"
                              "zanl-profile diff base.json design.zanx run.mon --fail-on kernel_time:+3%",
                              "a rule of --fail-on is broken"};

} // namespace zan::tool
