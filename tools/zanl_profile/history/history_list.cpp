// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <memory>

#include <unistd.h>

#include "history_arguments.h"
#include "history_commands.h"
#include "json_output.h"
#include "table.h"

namespace zan::tool {

using namespace profile;

namespace {

struct HistoryListOptions {
    std::string database;
    std::vector<std::string> where;
};

void print_runs_json(const std::vector<HistoryRun>& runs) {
    JsonOutput json("zanl-profile/history-list", 1, standard_output_target());
    json.begin_array("runs");
    for (const HistoryRun& run : runs) {
        json.begin_object();
        json.member("id", run.id);
        json.member("date", run.date);
        json.member("input", run.input);
        json.begin_object("labels");
        for (const auto& [name, value] : run.labels)
            json.member(name, value);
        json.end_object();
        json.end_object();
    }
    json.end_array();
    json.finish();
}

void list_runs(const HistoryListOptions& options, const Console& console) {
    const Labels where = labels_from(options.where, "--where");
    const auto runs =
        with_history([&] { return HistoryStore(options.database, OpenMode::read).list(where); });
    if (console.json) {
        print_runs_json(runs);
        return;
    }
    Table table({{"RUN"}, {"DATE"}, {"INPUT", Align::left, 16}, {"LABELS", Align::left, 16}});
    for (const HistoryRun& run : runs)
        table.add_row({{run.id.substr(0, 12)}, {run.date}, {run.input}, {labels_text(run.labels)}});
    if (!table.empty())
        standard_output_target()(
            table.text({line_columns(STDOUT_FILENO), console.has_colors(STDOUT_FILENO)}));
}

void define_history_list(CLI::App& app, Console& console) {
    const auto options = std::make_shared<HistoryListOptions>();
    app.add_option("DB", options->database, "the history")->required();
    app.add_option("--where", options->where, "only runs with this label")->type_name("NAME=VALUE");
    add_json_option(app, console);
    app.callback([options, &console] { list_runs(*options, console); });
}

} // namespace

const Command history_list_command = {"list", "list the runs, oldest first", define_history_list,
                                      "zanl-profile history list runs.db --where board=vela_pcie"};

} // namespace zan::tool
