#include "command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>

#include "failure.h"
#include "files.h"
#include "nearest_word.h"
#include "tly_constants.h"

namespace zan::tool {

namespace {

std::vector<std::string> command_names(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
        names.push_back(command->get_name());
    return names;
}

std::vector<std::string> option_names(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::Option* option : app.get_options()) {
        for (const std::string& name : option->get_lnames())
            names.push_back("--" + name);
    }
    return names;
}

std::string suggestion(const std::string& word, const std::vector<std::string>& words) {
    const std::string nearest = nearest_word(word, words);
    return nearest.empty() ? "" : "; did you mean " + in_quotes(nearest) + "?";
}

// The command that the arguments lead to: the program itself, or the last one that they name. Throws Failure
// for a word where a command should stand. The parser has no suggestions, so it doesn't get such words.
const CLI::App& command_meant(const CLI::App& program, const std::vector<std::string>& arguments) {
    const CLI::App* app = &program;
    for (const std::string& word : arguments) {
        const auto names = command_names(*app);
        if (names.empty() || word.starts_with('-'))
            break;
        if (std::ranges::find(names, word) == names.end())
            throw Failure("unknown command " + in_quotes(word) + suggestion(word, names));
        app = app->get_subcommand(word);
    }
    return *app;
}

std::string full_name(const CLI::App& app) {
    const CLI::App* const parent = app.get_parent();
    return parent ? full_name(*parent) + " " + app.get_name() : app.get_name();
}

// The message for arguments that the parser refuses. An unknown option comes first, with the option that may
// have been meant: the parser would report what is missing because of it.
std::string wrong_use(const CLI::App& app, const std::vector<std::string>& arguments,
                      const CLI::ParseError& error) {
    const auto names = option_names(app);
    for (const std::string& word : arguments) {
        const std::string option = word.substr(0, word.find('='));
        if (option.starts_with("--") && option != "--" && std::ranges::find(names, option) == names.end())
            return "unknown option " + in_quotes(option) + suggestion(option, names);
    }
    return command_names(app).empty() ? printable(error.what()) : "no command is given";
}

// Allocates nothing, as it also reports that there is no memory left.
int fail(const Command& program, const char* text, int status = status_trouble) {
    std::fprintf(stderr, "%s: %s\n", program.name, text);
    return status;
}

int print_text(const std::string& text) {
    if (std::fputs(text.c_str(), stdout) == EOF || std::fflush(stdout) != 0)
        throw system_failure("can't write to standard output");
    return 0;
}

// The parser's words for the parts of a help page, in ours.
void label_help(CLI::App& program) {
    constexpr std::pair<const char*, const char*> labels[] = {
        {"SUBCOMMAND", "COMMAND"},
        {"SUBCOMMANDS", "COMMANDS"},
        {"Subcommands", "Commands"},
        {"Positionals", "Arguments"},
        {"TEXT", ""},
        {"REQUIRED", ""},
    };
    for (const auto& [key, label] : labels)
        program.get_formatter()->label(key, label);
    program.set_help_flag("-h,--help", "print this help");
}

int parse_and_run(const Command& program, const std::vector<std::string>& arguments) {
    CLI::App app(program.summary, program.name);
    // Before the commands, which inherit both.
    label_help(app);
    app.set_version_flag("--version", std::string(), "print the version");
    program.define(app);
    const CLI::App& command = command_meant(app, arguments);
    try {
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend())); // it takes them reversed
        return 0;
    } catch (const CLI::CallForHelp&) {
        return print_text(command.help(command.get_parent() ? full_name(*command.get_parent()) : ""));
    } catch (const CLI::CallForVersion&) {
        return print_text(std::string(program.name) + " " + tly_version + "\n");
    } catch (const CLI::ParseError& error) {
        fail(program, wrong_use(command, arguments, error).c_str());
        std::fprintf(stderr, "see '%s --help'\n", full_name(command).c_str());
        return status_trouble;
    }
}

} // namespace

void add_commands(CLI::App& app, std::span<const Command* const> commands) {
    app.require_subcommand(1);
    for (const Command* command : commands)
        command->define(*app.add_subcommand(command->name, command->summary));
}

int run_command_line(const Command& program, int argc, const char* const* argv) {
    occupy_standard_streams();
    try {
        std::vector<std::string> arguments;
        if (argc > 0)
            arguments.assign(argv + 1, argv + argc);
        return parse_and_run(program, arguments);
    } catch (const Failure& failure) {
        return fail(program, failure.what(), failure.status());
    } catch (const std::bad_alloc&) {
        return fail(program, "there is not enough memory");
    } catch (const std::exception& error) {
        return fail(program, error.what());
    }
}

} // namespace zan::tool
