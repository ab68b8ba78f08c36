// SPDX-License-Identifier: Apache-2.0
#include "completion_table.h"

#include <CLI/CLI.hpp>

#include "value_kinds.h"

namespace zan::tool {

namespace {

void add_option_rows(std::vector<CompletionRow>& rows, const std::string& command,
                     const CLI::Option& option) {
    const bool takes_value = option.get_items_expected_max() > 0;
    const std::string kind = takes_value ? kind_of_value(command, option.get_type_name()) : "none";
    for (const std::string& name : option.get_snames())
        rows.push_back({command, "option", "-" + name, kind, option.get_description()});
    for (const std::string& name : option.get_lnames())
        rows.push_back({command, "option", "--" + name, kind, option.get_description()});
}

void add_argument_row(std::vector<CompletionRow>& rows, const std::string& command, const CLI::Option& option,
                      int number) {
    const bool repeats = option.get_items_expected_max() > 1;
    const std::string label = option.get_name(true);
    rows.push_back({command, "argument", repeats ? "more" : std::to_string(number),
                    kind_of_value(command, label), option.get_description()});
}

void add_rows(std::vector<CompletionRow>& rows, const CLI::App& app, const std::string& command) {
    const auto commands = app.get_subcommands([](const CLI::App*) { return true; });
    for (const CLI::App* below : commands)
        rows.push_back({command, "command", below->get_name(), "none", below->get_description()});
    int num_arguments = 0;
    for (const CLI::Option* option : app.get_options()) {
        if (option->get_positional())
            add_argument_row(rows, command, *option, ++num_arguments);
        else
            add_option_rows(rows, command, *option);
    }
    for (const CLI::App* below : commands)
        add_rows(rows, *below, (command.empty() ? "" : command + " ") + below->get_name());
}

} // namespace

std::vector<CompletionRow> completion_table(const CLI::App& program) {
    std::vector<CompletionRow> rows;
    add_rows(rows, program, "");
    return rows;
}

} // namespace zan::tool
