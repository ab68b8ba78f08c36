// SPDX-License-Identifier: Apache-2.0
#include "export_command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <vector>

#include <unistd.h>

#include "csv_writer.h"
#include "export_input.h"
#include "export_outputs.h"
#include "failure.h"
#include "nearest_word.h"
#include "perfetto_writer.h"
#include "printable.h"
#include "progress.h"
#include "sqlite_writer.h"
#include "time_option.h"
#include "unfinished_file.h"

namespace zan::tool {

using namespace profile;

namespace {

struct ExportOptions {
    std::vector<std::string> inputs;
    std::string format;
    std::string output;
    std::string time_unit;
    std::int64_t run_id = 1;
    bool raw = false;
};

// The only input of the words.
Input export_source(const std::vector<std::string>& words) {
    const auto split = inputs_of(words);
    if (const auto* fault = std::get_if<InputFault>(&split))
        throw Failure(printable(fault->text));
    const auto& inputs = std::get<std::vector<Input>>(split);
    if (inputs.size() != 1)
        throw Failure("export takes one run, not " + std::to_string(inputs.size()));
    return inputs.front();
}

void read_into(ExportWriter& writer, const ExportOptions& options, const Console& console) {
    const Input input = export_source(options.inputs);
    InputOptions input_options;
    input_options.nanoseconds = nanoseconds_of_unit(options.time_unit);
    Progress progress(console, "reading", size_of(input));
    input_options.progress = [&](std::uint64_t done) { progress.at(done); };
    if (const auto fault = export_input(input, input_options, writer))
        throw Failure(printable(fault->text));
}

void export_csv(const ExportOptions& options, const Console& console) {
    TableFiles files(options.output);
    CsvWriter writer([&](ExportTable table, std::string_view bytes) { files.write(table, bytes); },
                     {options.run_id, options.raw});
    read_into(writer, options, console);
    files.commit();
}

void export_sqlite(const ExportOptions& options, const Console& console) {
    NamedUnfinished file(options.output);
    try {
        SqliteWriter writer(file.path(), options.run_id);
        read_into(writer, options, console);
    } catch (const DatabaseError& error) {
        throw Failure("can't write " + in_quotes(options.output) + ": " + printable(error.what()));
    }
    file.commit();
}

void export_perfetto(const ExportOptions& options, const Console& console) {
    UnfinishedFile file(options.output);
    PerfettoWriter writer(
        {[&](std::string_view bytes) { write_all(file.fd(), bytes.data(), bytes.size(), options.output); },
         [&](std::uint64_t offset, std::string_view bytes) {
             const ssize_t written =
                 ::pwrite(file.fd(), bytes.data(), bytes.size(), static_cast<off_t>(offset));
             if (written != static_cast<ssize_t>(bytes.size()))
                 throw system_failure("can't write " + in_quotes(options.output));
         }});
    read_into(writer, options, console);
    file.sync();
    file.commit();
}

struct ExportFormat {
    std::string name;
    void (*write)(const ExportOptions&, const Console&);
};
const ExportFormat export_formats[] = {
    {"csv", export_csv},
    {"sqlite", export_sqlite},
    {"perfetto", export_perfetto},
};

void export_run(const ExportOptions& options, const Console& console) {
    std::vector<std::string> names;
    for (const ExportFormat& format : export_formats)
        names.push_back(format.name);
    const auto* found = std::ranges::find(export_formats, options.format, &ExportFormat::name);
    if (found == std::end(export_formats))
        throw Failure("--to takes csv, sqlite or perfetto, not " + in_quotes(options.format) +
                      did_you_mean(options.format, names));
    if (options.raw && options.format != "csv")
        throw Failure("--raw is for csv alone");
    export_source(options.inputs); // before an output is begun
    nanoseconds_of_unit(options.time_unit);
    found->write(options, console);
}

void define_export(CLI::App& app, Console& console) {
    const auto options = std::make_shared<ExportOptions>();
    app.add_option("INPUT", options->inputs,
                   "a report, or a package (*zanx) and its capture; '-' is standard input")
        ->required();
    app.add_option("--to", options->format, "csv (a folder of files), sqlite, or perfetto (a trace)")
        ->type_name("FORMAT")
        ->required();
    app.add_option("-o,--output", options->output, "the folder or file to be written")
        ->type_name("OUT")
        ->required();
    app.add_option("--run-id", options->run_id, "the number of the run in all tables, by default 1")
        ->type_name("N");
    app.add_flag("--raw", options->raw, "csv: leave texts that a spreadsheet takes for formulas as they are");
    app.add_option("--time-unit", options->time_unit, "the unit of times, if it isn't found: ns, us, ms or s")
        ->type_name("UNIT");
    app.callback([options, &console] { export_run(*options, console); });
}

} // namespace

const Command export_command = {"export", "write a run's samples and metrics for other tools", define_export,
                                "zanl-profile export report.json --to sqlite -o run.db\n"
                                "zanl-profile export design.zanx profile.mon --to csv -o run_csv"};

} // namespace zan::tool
