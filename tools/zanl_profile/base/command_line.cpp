// SPDX-License-Identifier: Apache-2.0
#include "command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <memory>
#include <sstream>

#include "command_search.h"
#include "failure.h"
#include "files.h"
#include "nearest_word.h"
#include "tly_constants.h"

namespace zan::tool {

namespace {

std::vector<std::string> option_names(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::Option* option : app.get_options()) {
        for (const std::string& name : option->get_lnames())
            names.push_back("--" + name);
    }
    return names;
}

// The message for arguments that the parser refuses. An unknown option comes first, with the option that may
// have been meant: the parser would report what is missing because of it.
std::string wrong_use(const CLI::App& app, const std::vector<std::string>& arguments,
                      const CLI::ParseError& error) {
    const auto names = option_names(app);
    for (const std::string& word : arguments) {
        const std::string option = word.substr(0, word.find('='));
        if (option.starts_with("--") && option != "--" && std::ranges::find(names, option) == names.end())
            return "unknown option " + in_quotes(option) + did_you_mean(option, names);
    }
    return command_names(app).empty() ? printable(error.what()) : "no command is given";
}

// Allocates nothing, as it also reports that there is no memory left.
int fail(const Command& program, const char* text, int status = status_trouble) {
    std::fprintf(stderr, "%s: %s\n", program.name, text);
    return status;
}

int print_text(std::FILE* stream, const std::string& text) {
    if (std::fputs(text.c_str(), stream) == EOF || std::fflush(stream) != 0)
        throw system_failure("can't write to standard output");
    return 0;
}

// The parser's words for the parts of a help page, in ours.
void label_help(CLI::App& program) {
    constexpr std::pair<const char*, const char*> labels[] = {
        {"SUBCOMMAND", "COMMAND"}, {"SUBCOMMANDS", "COMMANDS"}, {"Positionals", "Arguments"}, {"TEXT", ""},
        {"REQUIRED", ""},
    };
    for (const auto& [key, label] : labels)
        program.get_formatter()->label(key, label);
    program.set_help_flag("-h,--help", "print this help");
}

// What a help page ends with.
std::string help_footer(const Command& command) {
    std::string footer = "Example:\n";
    std::istringstream example(command.example);
    for (std::string line; std::getline(example, line);)
        footer += "  " + line + "\n";
    footer += "\nExit status:\n  0  all went well\n";
    if (command.status_no)
        footer += std::string("  1  ") + command.status_no + "\n";
    return footer + "  2  wrong use, or something can't be read or written";
}

void replace_all(std::string& text, const std::string& old_part, const std::string& new_part) {
    for (std::size_t at = text.find(old_part); at != std::string::npos; at = text.find(old_part, at))
        text.replace(at, old_part.size(), new_part);
}

// In place of what the parser's labels don't reach.
std::string help_page(const CLI::App& command) {
    // App::help() would print the page of the command that was parsed.
    std::string page =
        command.get_formatter()->make_help(&command, full_name(command), CLI::AppFormatMode::Normal);
    replace_all(page, "\n\n\n", "\n\n");
    replace_all(page, "\nSubcommands:\n", "\nCommands:\n");
    replace_all(page, "  ...", "...  "); // after the name of an argument
    return page.substr(0, page.find_last_not_of('\n') + 1) + "\n";
}

void define_command(CLI::App& app, Console& console, const Command& command) {
    app.footer(help_footer(command));
    command.define(app, console);
}

void set_color(Console& console, const std::string& choice) {
    constexpr std::pair<const char*, ColorChoice> choices[] = {
        {"auto", ColorChoice::automatic},
        {"always", ColorChoice::always},
        {"never", ColorChoice::never},
    };
    const auto* const found = std::ranges::find(choices, choice, &std::pair<const char*, ColorChoice>::first);
    if (found == std::end(choices))
        throw Failure("--color takes auto, always or never, not " + in_quotes(choice));
    console.color = found->second;
}

// An option that may be repeated would take all words that follow, which are arguments.
void take_one_value_each(CLI::App& app) {
    for (CLI::Option* option : app.get_options()) {
        if (!option->get_positional())
            option->allow_extra_args(false);
    }
}

void add_common_options(CLI::App& app, Console& console) {
    constexpr const char* group = "Options of all commands";
    app.add_flag("-q,--quiet", console.quiet, "print no notes and no progress")->group(group);
    app.add_option_function<std::string>(
           "--color", [&console](const std::string& choice) { set_color(console, choice); },
           "auto, always or never; auto: on terminals, unless NO_COLOR is set")
        ->type_name("WHEN")
        ->group(group);
}

constexpr const char* help_example = "zanl-profile help package list";

// `help [COMMAND...]`, the last of the program's commands.
void add_help_command(CLI::App& app) {
    const auto words = std::make_shared<std::vector<std::string>>();
    CLI::App* const help = app.add_subcommand("help", "print the help of a command");
    help->add_option("COMMAND", *words, "the command; the program itself if none is named");
    help->footer(help_footer({"help", "", nullptr, help_example}));
    help->callback([&app, words] { print_text(stdout, help_page(*find_command(app, *words, {}).app)); });
}

constexpr const char* program_version_flags = "-V,--version";
const std::vector<std::string> program_options = {"-V", "--version"};

int parse_and_run(const Command& program, const std::vector<std::string>& arguments) {
    Console console;
    CLI::App app(program.summary, program.name);
    // Before the commands, which inherit both.
    label_help(app);
    app.set_version_flag(program_version_flags, std::string(), "print the version");
    define_command(app, console, program);
    add_common_options(app, console); // for its help; on a command line they go to the command
    add_help_command(app);
    if (arguments.empty()) {
        print_text(stderr, help_page(app));
        return status_trouble;
    }
    const MeantCommand meant = find_command(app, arguments, program_options);
    try {
        app.parse(std::vector<std::string>(meant.arguments.rbegin(), meant.arguments.rend())); // reversed
        return 0;
    } catch (const CLI::CallForHelp&) {
        return print_text(stdout, help_page(*meant.app));
    } catch (const CLI::CallForVersion&) {
        return print_text(stdout, std::string(program.name) + " " + tly_version + "\n");
    } catch (const CLI::ParseError& error) {
        fail(program, wrong_use(*meant.app, meant.arguments, error).c_str());
        std::fprintf(stderr, "see '%s --help'\n", full_name(*meant.app).c_str());
        return status_trouble;
    }
}

} // namespace

void add_commands(CLI::App& app, Console& console, std::span<const Command* const> commands) {
    app.require_subcommand(1);
    for (const Command* command : commands) {
        CLI::App& added = *app.add_subcommand(command->name, command->summary);
        define_command(added, console, *command);
        if (!command_names(added).empty())
            continue;
        take_one_value_each(added);
        add_common_options(added, console);
    }
}

CLI::Option* add_json_option(CLI::App& app, Console& console, const std::string& help) {
    return app.add_flag("--json", console.json, help);
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
    } catch (const QuietEnd& end) {
        return end.status;
    } catch (const std::bad_alloc&) {
        return fail(program, "there is not enough memory");
    } catch (const std::exception& error) {
        return fail(program, error.what());
    }
}

} // namespace zan::tool
