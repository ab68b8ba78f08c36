// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <algorithm>
#include <ctime>
#include <iostream>
#include <memory>

#include <sys/stat.h>

#include "history_arguments.h"
#include "history_commands.h"
#include "inputs.h"
#include "json_output.h"

namespace zan::tool {

using namespace profile;

namespace {

struct HistoryAddOptions {
    std::string database;
    std::vector<std::string> inputs;
    std::vector<std::string> labels;
    std::string list;
    std::string date;
};

// Runs that are added at once: each change waits for the disk.
constexpr std::size_t most_at_once = 64;

// Of the file that the run has written, in universal time; now for standard input.
std::string date_of(const Input& input) {
    struct stat status;
    const std::string& name = input.capture.empty() ? input.name : input.capture;
    const bool is_file = name != "-" && ::stat(name.c_str(), &status) == 0;
    const std::time_t time = is_file ? status.st_mtime : std::time(nullptr);
    std::tm parts = {};
    ::gmtime_r(&time, &parts);
    char text[32];
    return {text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts)};
}

// Adds runs, and prints what became of each.
class HistoryAdder {
  public:
    HistoryAdder(const HistoryAddOptions& options, const Console& console)
        : m_options(options),
          m_console(console),
          m_labels(labels_from(options.labels, "--label")),
          m_store(options.database, OpenMode::create, copy_keeper(options.database, console)) {}

    // A file that can't be used is reported and skipped.
    void add(const Input& input) {
        auto read = summarize_inputs({&input, 1}, {});
        if (const auto* const fault = std::get_if<InputFault>(&read)) {
            m_has_faults = true;
            std::cerr << "zanl-profile: " + printable(fault->text) + "\n";
            return;
        }
        ProfileSummary& summary = std::get<ProfileSummary>(read);
        const std::string date = m_options.date.empty() ? date_of(input) : m_options.date;
        m_names.push_back(input.name);
        m_waiting.push_back({std::move(summary), date, m_labels});
        if (m_waiting.size() == most_at_once)
            flush();
    }
    void flush() {
        if (m_waiting.empty())
            return;
        const std::vector<Added> added = m_store.add(m_waiting);
        for (std::size_t i = 0; i < added.size(); ++i) {
            const std::string id = run_id_of(m_waiting[i].summary).substr(0, 12);
            const char* const effect = added[i] == Added::is_new       ? "added"
                                       : added[i] == Added::got_labels ? "was there, and got labels"
                                                                       : "was there";
            print_note(m_console, id + "  " + printable(m_names[i]) + ": " + effect);
        }
        m_waiting.clear();
        m_names.clear();
    }
    bool has_faults() const { return m_has_faults; }

  private:
    const HistoryAddOptions& m_options;
    const Console& m_console;
    Labels m_labels;
    HistoryStore m_store;
    std::vector<HistoryEntry> m_waiting;
    std::vector<std::string> m_names; // of the waiting ones
    bool m_has_faults = false;
};

std::vector<Input> inputs_from(const std::vector<std::string>& words) {
    auto inputs = inputs_of(words);
    if (const auto* const fault = std::get_if<InputFault>(&inputs))
        throw Failure(printable(fault->text));
    return std::get<std::vector<Input>>(std::move(inputs));
}

void add_runs(const HistoryAddOptions& options, const Console& console) {
    if (!options.list.empty() && options.list != "-")
        throw Failure("--from-list takes '-', standard input, not " + in_quotes(options.list));
    if (options.inputs.empty() && options.list.empty())
        throw Failure("name the runs to be added, or --from-list -");
    if (const auto fault = options.date.empty() ? std::nullopt : date_fault(options.date))
        throw Failure("--date: " + *fault);
    const std::vector<Input> inputs = inputs_from(options.inputs);
    with_history([&] {
        HistoryAdder adder(options, console);
        for (const Input& input : inputs)
            adder.add(input);
        // A line is an input: a name, or a package and its capture with a tab between them.
        for (std::string line; !options.list.empty() && std::getline(std::cin, line);) {
            const std::size_t tab = line.find('\t');
            if (tab != std::string::npos)
                adder.add({line.substr(0, tab), line.substr(tab + 1)});
            else if (!line.empty())
                adder.add({line, ""});
        }
        adder.flush();
        if (adder.has_faults())
            throw QuietEnd{status_no};
    });
}

void define_history_add(CLI::App& app, Console& console) {
    const auto options = std::make_shared<HistoryAddOptions>();
    app.add_option("DB", options->database, "the history, which is made if there is none")->required();
    app.add_option("INPUT", options->inputs,
                   "a report, a saved summary, or a package (*zanx) and its capture");
    app.add_option("--label", options->labels, "a label of the runs, such as commit=1f3a")
        ->type_name("NAME=VALUE");
    app.add_option("--date", options->date, "YYYY-MM-DD[THH:MM:SS]; by default that of the file")
        ->type_name("DATE");
    app.add_option("--from-list", options->list, "'-': read inputs from standard input, one a line")
        ->type_name("FILE");
    app.callback([options, &console] { add_runs(*options, console); });
}

} // namespace

const Command history_add_command = {"add", "add runs", define_history_add,
                                     "zanl-profile history add runs.db report.json --label commit=1f3a\n"
                                     "ls *.json | zanl-profile history add runs.db --from-list -",
                                     "an input couldn't be used, and was skipped"};

} // namespace zan::tool
