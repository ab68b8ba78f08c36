// SPDX-License-Identifier: Apache-2.0
// Commands on single runs of a history: show, remove, diff.
#include <CLI/CLI.hpp>
#include <memory>

#include <unistd.h>

#include "diff_command.h"
#include "history_arguments.h"
#include "history_commands.h"
#include "json_output.h"
#include "summary_json.h"
#include "summary_tables.h"

namespace zan::tool {

using namespace profile;

namespace {

constexpr const char* run_meaning = "the first digits of its id, last, last~3, or a label: commit=1f3a";

struct RunName {
    std::string database;
    std::string run;
};

void add_run_arguments(CLI::App& app, RunName& name) {
    app.add_option("DB", name.database, "the history")->required();
    app.add_option("RUN", name.run, run_meaning)->required();
}

void show_run(const RunName& name, const Console& console) {
    HistoryRun run;
    const ProfileSummary summary = with_history([&] {
        HistoryStore store(name.database, OpenMode::read);
        run = store.find(name.run);
        return store.summary(run);
    });
    const TextTarget output = standard_output_target();
    if (console.json) {
        output(summary_to_json(summary));
        return;
    }
    SummaryView view;
    view.width = line_columns(STDOUT_FILENO);
    view.colors = console.has_colors(STDOUT_FILENO);
    output("run    " + run.id + "\ndate   " + printable(run.date) + "\ninput  " + printable(run.input) +
           "\n");
    output("labels " + printable(labels_text(run.labels)) + "\n\n" + summary_text(summary, view));
}

void remove_run(const RunName& name, const Console& console) {
    with_history([&] {
        HistoryStore store(name.database, OpenMode::write, copy_keeper(name.database, console));
        const HistoryRun run = store.find(name.run);
        store.remove(run);
        print_note(console, "removed " + run.id.substr(0, 12) + "  " + printable(run.input));
    });
}

struct HistoryDiffOptions {
    std::string database;
    std::string old_run;
    std::string new_run;
    DiffOptions diff;
};

void diff_runs(const HistoryDiffOptions& options, const Console& console) {
    diff_summaries(options.diff, console, [&] {
        return with_history([&] {
            HistoryStore store(options.database, OpenMode::read);
            const auto read = [&](const std::string& name) {
                const HistoryRun run = store.find(name);
                ProfileSummary summary = store.summary(run);
                summary.input = run.id.substr(0, 12) + " " + run.date + " " + run.input;
                return summary;
            };
            ProfileSummary before = read(options.old_run);
            return std::pair(std::move(before), read(options.new_run));
        });
    });
}

void define_history_show(CLI::App& app, Console& console) {
    const auto name = std::make_shared<RunName>();
    add_run_arguments(app, *name);
    add_json_option(app, console, "print the saved summary, as 'summary --json' does");
    app.callback([name, &console] { show_run(*name, console); });
}

void define_history_remove(CLI::App& app, Console& console) {
    const auto name = std::make_shared<RunName>();
    add_run_arguments(app, *name);
    app.callback([name, &console] { remove_run(*name, console); });
}

void define_history_diff(CLI::App& app, Console& console) {
    const auto options = std::make_shared<HistoryDiffOptions>();
    app.add_option("DB", options->database, "the history")->required();
    app.add_option("BASE", options->old_run, run_meaning)->required();
    app.add_option("NEW", options->new_run, "likewise")->required();
    add_diff_options(app, console, &options->diff);
    app.callback([options, &console] { diff_runs(*options, console); });
}

} // namespace

const Command history_show_command = {"show", "show the summary of a run", define_history_show,
                                      "zanl-profile history show runs.db last\n"
                                      "zanl-profile history show runs.db commit=1f3a --json > baseline.json",
                                      "there is no such run"};

const Command history_remove_command = {"remove", "remove a run", define_history_remove,
                                        "zanl-profile history remove runs.db 1f3a5c", "there is no such run"};

const Command history_diff_command = {
    "diff", "compare two runs, and fail if the new one is worse", define_history_diff,
    "zanl-profile history diff runs.db last~1 last --fail-on kernel_time:+3%",
    "there is no such run, or a rule of --fail-on is broken"};

} // namespace zan::tool
