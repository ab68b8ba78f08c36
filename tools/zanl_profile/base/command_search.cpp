// SPDX-License-Identifier: Apache-2.0
#include "command_search.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <utility>

#include "failure.h"
#include "nearest_word.h"

namespace zan::tool {

namespace {

std::vector<const CLI::App*> commands_below(const CLI::App& app) {
    return app.get_subcommands([](const CLI::App*) { return true; });
}

// All commands at and below this level, each after those of its own level.
void collect_commands(const CLI::App& app, std::vector<const CLI::App*>& found) {
    const auto commands = commands_below(app);
    found.insert(found.end(), commands.begin(), commands.end());
    for (const CLI::App* command : commands)
        collect_commands(*command, found);
}

// How a user who stands at `level` names a command: by what is below the level, else by all of it.
std::string name_from(const CLI::App& level, const CLI::App& command) {
    const std::string name = full_name(command);
    const std::string beginning = full_name(level) + " ";
    return name.starts_with(beginning) ? name.substr(beginning.size()) : name;
}

// The nearest name is looked for at this level first, then at all others.
Failure unknown_command(const CLI::App& level, const std::string& word) {
    std::vector<const CLI::App*> commands;
    collect_commands(level, commands);
    collect_commands(program_of(level), commands);
    std::vector<std::string> names;
    names.reserve(commands.size());
    for (const CLI::App* command : commands)
        names.push_back(command->get_name());
    const auto found = std::ranges::find(names, nearest_word(word, names));
    const std::string text = "unknown command " + in_quotes(word);
    if (found == names.end())
        return Failure(text);
    const auto index = static_cast<std::size_t>(found - names.begin());
    return Failure(text + "; did you mean " + in_quotes(name_from(level, *commands[index])) + "?");
}

// Whether an option of that name, of any command, takes a value.
bool takes_value(const CLI::App& app, const std::string& option) {
    const CLI::Option* const known = app.get_option_no_throw(option);
    if (known && known->get_items_expected_max() > 0)
        return true;
    return std::ranges::any_of(commands_below(app),
                               [&](const CLI::App* command) { return takes_value(*command, option); });
}

bool is_option(const std::string& word) {
    return word.size() > 1 && word.front() == '-';
}

} // namespace

const CLI::App& program_of(const CLI::App& app) {
    return app.get_parent() ? program_of(*app.get_parent()) : app;
}

std::vector<std::string> command_names(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* command : commands_below(app))
        names.push_back(command->get_name());
    return names;
}

std::string full_name(const CLI::App& app) {
    const CLI::App* const parent = app.get_parent();
    return parent ? full_name(*parent) + " " + app.get_name() : app.get_name();
}

MeantCommand find_command(CLI::App& program, std::span<const std::string> arguments,
                          std::span<const std::string> of_program) {
    CLI::App* app = &program;
    std::vector<std::string> own, names, options;
    bool is_value = false; // of the option before it
    std::size_t i = 0;
    for (; i < arguments.size() && arguments[i] != "--"; ++i) {
        const std::string& word = arguments[i];
        const auto commands = command_names(*app);
        if (commands.empty())
            break;
        if (std::exchange(is_value, false)) {
            options.push_back(word);
        } else if (is_option(word)) {
            const bool is_own = std::ranges::find(of_program, word) != of_program.end();
            (is_own ? own : options).push_back(word);
            is_value = takes_value(program, word);
        } else if (std::ranges::find(commands, word) != commands.end()) {
            names.push_back(word);
            app = app->get_subcommand(word);
        } else {
            throw unknown_command(*app, word);
        }
    }
    std::vector<std::string> ordered = std::move(own);
    ordered.insert(ordered.end(), names.begin(), names.end());
    ordered.insert(ordered.end(), options.begin(), options.end());
    ordered.insert(ordered.end(), arguments.begin() + static_cast<std::ptrdiff_t>(i), arguments.end());
    return {app, std::move(ordered)};
}

} // namespace zan::tool
