// SPDX-License-Identifier: Apache-2.0
#include "run_command.h"

#include <sys/stat.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <optional>

#include "byte_target.h"
#include "excerpt.h"
#include "failure.h"
#include "fault_log.h"
#include "files.h"
#include "json_output.h"
#include "json_writer.h"
#include "progress.h"
#include "run_input.h"
#include "run_reader.h"
#include "unfinished_file.h"
#include "value_text.h"

namespace zan::tool {

namespace {

using profile::Fault;
using profile::FaultEffect;
using profile::FaultKind;
using profile::FaultLog;
using profile::LoggedFault;
using profile::RunResult;

struct RunArguments {
    std::string package;
    std::string capture;
    std::string report;
    bool strict = false;
};

std::optional<struct stat> status_of(const std::string& name, int standard_descriptor) {
    struct stat status {};
    const int result =
        name == standard_stream ? ::fstat(standard_descriptor, &status) : ::stat(name.c_str(), &status);
    return result == 0 ? std::optional(status) : std::nullopt;
}

// A report in the place of an input would be lost, or be read while it is written.
void refuse_same_file(const RunArguments& arguments) {
    if (arguments.package == standard_stream && arguments.capture == standard_stream)
        throw Failure("the package and the capture can't both be standard input");
    const auto report = status_of(arguments.report, STDOUT_FILENO);
    if (!report || !S_ISREG(report->st_mode))
        return;
    for (const auto& [what, name] :
         {std::pair("package", arguments.package), {"capture", arguments.capture}}) {
        const auto input = status_of(name, STDIN_FILENO);
        if (input && input->st_dev == report->st_dev && input->st_ino == report->st_ino)
            throw Failure("the report " + in_quotes(arguments.report) + " is the same file as the " + what +
                          " " + in_quotes(name));
    }
}

// A fault as people read it, the line and the caret below it.
std::string text_of(const LoggedFault& fault, std::size_t width) {
    constexpr std::size_t indent = 4;
    std::string text = printable(profile::place_of(fault) + ": " + fault.message);
    if (fault.line_text.empty())
        return text;
    const std::size_t column = fault.column == 0 ? 0 : fault.column - fault.cut_size;
    return text + "\n" +
           indented(excerpt(fault.line_text, column, width - indent, fault.cut_size > 0, fault.is_cut),
                    indent);
}

// Prints the first faults of each kind when they come, but for those that end the run, which are its failure.
class PrintedFaults final : public profile::FaultReceiver {
  public:
    explicit PrintedFaults(const Console& console) : m_console(console) {}
    void take(const Fault& fault) override {
        m_log.take(fault);
        const profile::FaultGroup& group = m_log[fault.kind];
        const bool is_failure = &group.first.back() == m_log.end();
        if (group.count <= FaultLog::shown && !is_failure)
            print_note(m_console, text_of(group.first.back(), line_columns(STDERR_FILENO)));
    }
    const FaultLog& log() const { return m_log; }

  private:
    const Console& m_console;
    FaultLog m_log;
};

void print_numbers(const Console& console, const FaultLog& log, const RunResult& result) {
    const auto count = [](std::uint64_t number) { return profile::count_text(static_cast<double>(number)); };
    for (int i = 0; i < static_cast<int>(FaultKind::count); ++i) {
        const auto kind = static_cast<FaultKind>(i);
        if (log[kind].count > FaultLog::shown)
            print_note(console, count(log[kind].count - FaultLog::shown) + " more of the kind " +
                                    std::string(profile::name_of(kind)));
    }
    std::string text = count(result.num_lines) + " lines read, " +
                       count(result.num_lines - result.num_left_out) + " used, " +
                       count(result.num_left_out) + " left out";
    if (result.num_left_out > 0)
        text += ": " + log.left_out_by_kind();
    print_note(console, text);
}

void write_json(const RunArguments& arguments, const FaultLog& log, const RunResult& result) {
    JsonOutput json("zanl-profile/run", 1, standard_output_target());
    json.member("package", arguments.package);
    json.member("capture", arguments.capture);
    json.member("report", arguments.report);
    json.member("lines_read", result.num_lines);
    json.member("lines_used", result.num_lines - result.num_left_out);
    json.member("lines_left_out", result.num_left_out);
    json.member("capture_bytes", result.num_bytes);
    json.begin_array("faults");
    for (int i = 0; i < static_cast<int>(FaultKind::count); ++i) {
        const auto kind = static_cast<FaultKind>(i);
        if (log[kind].count == 0)
            continue;
        json.begin_object();
        json.member("kind", profile::name_of(kind));
        json.member("leaves_line_out", profile::effect_of(kind) == FaultEffect::leaves_line_out);
        json.member("count", log[kind].count);
        json.begin_array("first_lines");
        for (const LoggedFault& fault : log[kind].first)
            json.element(fault.line);
        json.end_array();
        json.member("message", log[kind].first.front().message);
        json.end_object();
    }
    json.end_array();
    json.finish();
}

// Bytes to a descriptor, which isn't owned.
class DescriptorTarget final : public ByteTarget {
  public:
    DescriptorTarget(int fd, const std::string& name) : m_fd(fd), m_name(name) {}
    bool write(const char* bytes, std::size_t size) override {
        write_all(m_fd, bytes, size, m_name);
        return true;
    }

  private:
    int m_fd;
    const std::string& m_name;
};

// The report until it is whole.
class UnfinishedReport {
  public:
    explicit UnfinishedReport(const std::string& name) {
        if (name != standard_stream)
            m_file.emplace(name);
        else if (m_copy = Descriptor(profile::open_temporary()); m_copy.get() < 0)
            throw system_failure("can't make a temporary file");
    }
    int fd() const { return m_file ? m_file->fd() : m_copy.get(); }
    void commit() {
        if (m_file) {
            m_file->commit();
            return;
        }
        struct stat status {};
        ::fstat(fd(), &status);
        copy_range(fd(), 0, static_cast<std::uint64_t>(status.st_size), STDOUT_FILENO, "a temporary file",
                   standard_output);
    }

  private:
    std::optional<UnfinishedFile> m_file;
    Descriptor m_copy;
};

std::uint64_t size_of(const std::string& name) {
    const auto status = status_of(name, STDIN_FILENO);
    return status && S_ISREG(status->st_mode) ? static_cast<std::uint64_t>(status->st_size) : 0;
}

RunResult write_to(const UnfinishedReport& report, const RunArguments& arguments, const Console& console,
                   PrintedFaults& faults) {
    DescriptorTarget target(report.fd(), arguments.report);
    TextBuffer buffer(target);
    JsonWriter writer(buffer);
    Progress progress(console, "reading", size_of(arguments.capture));
    profile::RunOptions options{.reads_cut_sections = true};
    options.progress = [&](std::uint64_t bytes) { progress.at(bytes); };
    RunResult result = profile::read_run(arguments.package, arguments.capture, options, writer, faults);
    if (result.is_whole) {
        writer.finish();
        buffer.flush();
    }
    return result;
}

void run(const RunArguments& arguments, const Console& console) {
    if (console.json && arguments.report == standard_stream)
        throw Failure("the report and the JSON of --json can't both go to standard output");
    refuse_same_file(arguments);
    UnfinishedReport report(arguments.report);
    PrintedFaults faults(console);
    const RunResult result = write_to(report, arguments, console, faults);
    if (!result.is_whole) {
        const LoggedFault* end = faults.log().end();
        throw Failure(end ? text_of(*end, line_columns(STDERR_FILENO)) : "the run can't be read");
    }
    print_numbers(console, faults.log(), result);
    const bool refuses = arguments.strict && result.num_left_out > 0;
    if (!refuses)
        report.commit();
    if (console.json)
        write_json(arguments, faults.log(), result);
    if (refuses)
        throw Failure("no report is written: lines of the capture were left out", status_no);
}

void define_run(CLI::App& app, Console& console) {
    const auto arguments = std::make_shared<RunArguments>();
    app.add_option("DESIGN", arguments->package, "package of the design, or - for standard input")
        ->required();
    app.add_option("PROFILE", arguments->capture, "capture of a run, or - for standard input")->required();
    app.add_option("REPORT", arguments->report, "report to be written, or - for standard output")->required();
    app.add_flag("--strict", arguments->strict, "write no report if a line of the capture is left out");
    add_json_option(app, console, "print the numbers of lines and faults as JSON");
    app.callback([arguments, &console] { run(*arguments, console); });
}

} // namespace

const Command run_command = {"run", "write the report of a run, and say what is wrong with its files",
                             define_run, "zanl-profile run design.zanx profile.mon report.json",
                             "with --strict: lines of the capture were left out"};

} // namespace zan::tool
