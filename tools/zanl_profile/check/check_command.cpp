// SPDX-License-Identifier: Apache-2.0
#include "check_command.h"

#include <sys/stat.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <optional>

#include "excerpt.h"
#include "failure.h"
#include "files.h"
#include "json_output.h"
#include "progress.h"
#include "run_check.h"
#include "table.h"
#include "value_text.h"

namespace zan::tool {

namespace {

using profile::CheckResult;
using profile::Finding;
using profile::FindingLevel;
using profile::LoggedFault;

struct CheckArguments {
    std::string package;
    std::optional<std::string> capture;
    bool strict = false;
};

std::string count(std::uint64_t number) {
    return profile::count_text(static_cast<double>(number));
}

std::string count_of(std::uint64_t number, const std::string& what) {
    return count(number) + " " + what + (number == 1 ? "" : "s");
}

// "1,200 lines: 5, 10, 16, 22, 28, ...; 56 is 2 compute units". Empty if all of it is in the first line.
std::string where(const Finding& finding) {
    std::string text;
    if (finding.count > 1 && finding.lines.empty())
        text = count(finding.count) + " times";
    else if (finding.count > 1)
        text = count(finding.count) + " lines: ";
    for (std::size_t i = 0; i < finding.lines.size() && finding.count > 1; ++i)
        text += (i == 0 ? "" : ", ") + count(finding.lines[i]);
    if (finding.lines.size() > 1 && finding.count > finding.lines.size())
        text += ", ...";
    if (!finding.detail.empty())
        text += (text.empty() ? "" : "; ") + finding.detail;
    return text;
}

Style style_of(FindingLevel level) {
    switch (level) {
        case FindingLevel::error:
            return Style::bad;
        case FindingLevel::warning:
            return Style::warning;
        case FindingLevel::note:
            break;
    }
    return Style::plain;
}

void print_finding(const Finding& finding, std::size_t width, bool colors) {
    constexpr std::size_t indent = 4;
    constexpr std::size_t level_width = 7; // of "warning"
    std::string level(name_of(finding.row->level));
    level.resize(level_width, ' ');
    const LoggedFault& first = finding.first;
    std::string text = styled(level, style_of(finding.row->level), colors) + " [" +
                       std::string(finding.row->code) + "] " +
                       printable(place_of(first) + ": " + first.message) + "\n";
    if (!first.line_text.empty()) {
        const std::size_t column = first.column == 0 ? 0 : first.column - first.cut_size;
        text += indented(excerpt(first.line_text, column, width - indent, first.cut_size > 0, first.is_cut),
                         indent) +
                "\n";
    }
    if (const std::string more = where(finding); !more.empty())
        text += wrapped(printable(more), width, indent) + "\n";
    text += wrapped(std::string(finding.row->advice), width, indent) + "\n";
    std::fputs(text.c_str(), stdout);
}

// The worst findings come first, else those of the package before those of the capture.
std::vector<const Finding*> sorted(const std::vector<Finding>& findings) {
    std::vector<const Finding*> result;
    result.reserve(findings.size());
    for (const Finding& finding : findings)
        result.push_back(&finding);
    std::ranges::stable_sort(result, std::ranges::greater(),
                             [](const Finding* finding) { return finding->row->level; });
    return result;
}

void print_findings(const CheckResult& result, const Console& console) {
    const std::size_t width = line_columns(STDOUT_FILENO);
    const bool colors = console.has_colors(STDOUT_FILENO);
    for (const Finding* finding : sorted(result.log.findings()))
        print_finding(*finding, width, colors);
    const std::string numbers = count_of(result.log.count(FindingLevel::error), "error") + ", " +
                                count_of(result.log.count(FindingLevel::warning), "warning") + ", " +
                                count_of(result.log.count(FindingLevel::note), "note") + "\n";
    std::fputs(numbers.c_str(), stdout);
    if (std::fflush(stdout) != 0)
        throw system_failure(std::string("can't write ") + standard_output);
}

void write_finding(JsonOutput& json, const Finding& finding) {
    const LoggedFault& first = finding.first;
    json.begin_object();
    json.member("level", name_of(finding.row->level));
    json.member("code", finding.row->code);
    json.member("file", first.file);
    if (!first.section.empty())
        json.member("section", first.section);
    if (first.line > 0)
        json.member("line", first.line);
    if (first.column > 0)
        json.member("column_bytes", std::uint64_t{first.column});
    json.member("message", first.message);
    json.member("count", finding.count);
    if (!finding.lines.empty()) {
        json.begin_array("first_lines");
        for (const std::uint64_t line : finding.lines)
            json.element(line);
        json.end_array();
    }
    if (!first.line_text.empty())
        json.member("line_text", first.line_text);
    if (!finding.detail.empty())
        json.member("detail", finding.detail);
    json.member("advice", finding.row->advice);
    json.end_object();
}

void write_json(const CheckArguments& arguments, const CheckResult& result) {
    JsonOutput json("zanl-profile/check", 1, standard_output_target());
    json.member("package", arguments.package);
    if (arguments.capture) {
        json.member("capture", *arguments.capture);
        json.member("lines_read", result.num_lines);
    }
    json.member("errors", std::uint64_t{result.log.count(FindingLevel::error)});
    json.member("warnings", std::uint64_t{result.log.count(FindingLevel::warning)});
    json.member("notes", std::uint64_t{result.log.count(FindingLevel::note)});
    json.begin_array("findings");
    for (const Finding* finding : sorted(result.log.findings()))
        write_finding(json, *finding);
    json.end_array();
    json.finish();
}

CheckResult checked(const CheckArguments& arguments, const Console& console) {
    struct stat status {};
    const bool has_size = arguments.capture && ::stat(arguments.capture->c_str(), &status) == 0;
    Progress progress(console, "checking", has_size ? static_cast<std::uint64_t>(status.st_size) : 0);
    return profile::check_run(arguments.package, arguments.capture,
                              [&](std::uint64_t bytes) { progress.at(bytes); });
}

void check(const CheckArguments& arguments, const Console& console) {
    if (arguments.package == standard_stream && arguments.capture == standard_stream)
        throw Failure("the package and the capture can't both be standard input");
    const CheckResult result = checked(arguments, console);
    if (!result.trouble.empty())
        throw Failure(printable(result.trouble));
    if (console.json)
        write_json(arguments, result);
    else
        print_findings(result, console);
    const bool has_warnings = arguments.strict && result.log.count(FindingLevel::warning) > 0;
    if (has_warnings || result.log.count(FindingLevel::error) > 0)
        throw QuietEnd{status_no};
}

void define_check(CLI::App& app, Console& console) {
    const auto arguments = std::make_shared<CheckArguments>();
    app.add_option("DESIGN", arguments->package, "package of the design, or - for standard input")
        ->required();
    app.add_option("PROFILE", arguments->capture, "capture of a run, or - for standard input");
    app.add_flag("--strict", arguments->strict, "exit status 1 for a warning, too");
    add_json_option(app, console);
    app.callback([arguments, &console] { check(*arguments, console); });
}

} // namespace

const Command check_command = {"check", "find what is wrong with a package and its capture", define_check,
                               "zanl-profile check design.zanx profile.mon",
                               "there is an error, or with --strict a warning"};

} // namespace zan::tool
