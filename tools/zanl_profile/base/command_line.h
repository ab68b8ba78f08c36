// SPDX-License-Identifier: Apache-2.0
// Command lines: programs and commands as rows, their help, and what wrong use is answered with.
#pragma once

#include <span>
#include <string>

#include "console.h"

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace zan::tool {

// A program, or a command of one.
struct Command {
    const char* name;
    const char* summary; // a line for the help
    // Defines the command's options and arguments, or the commands below it, and what it does. The console
    // outlives the command, and has its values when the command does its work.
    //
    // An option takes one value: to repeat it, users repeat the option. All options, those in common and
    // the command's own, may also stand before the command's name.
    void (*define)(CLI::App& app, Console& console);
    // For the help: lines without indentation that show how it is used.
    const char* example;
    // When the exit status is 1; null if it never is.
    const char* status_no = nullptr;
};

// Adds commands to a program, or to a command that has others below it, in the order of its help.
void add_commands(CLI::App& app, Console& console, std::span<const Command* const> commands);

// Adds the option --json, which sets `console.json`.
CLI::Option* add_json_option(CLI::App& app, Console& console, const std::string& help = "print JSON");

// Runs the program: does what the arguments ask for, and returns the exit status. Failures are reported on
// standard error; no exception leaves it.
int run_command_line(const Command& program, int argc, const char* const* argv);

} // namespace zan::tool
