// Command lines: programs and commands as rows, their help, and what wrong use is answered with.
#pragma once

#include <span>

namespace CLI {
class App;
}

namespace zan::tool {

// A program, or a command of one.
struct Command {
    const char* name;
    const char* summary; // a line for the help
    // Defines the command's options and arguments, or the commands below it, and what it does.
    void (*define)(CLI::App& app);
};

// Adds commands to a program, or to a command that has others below it, in the order of its help.
void add_commands(CLI::App& app, std::span<const Command* const> commands);

// Runs the program: does what the arguments ask for, and returns the exit status. Failures are reported on
// standard error; no exception leaves it.
int run_command_line(const Command& program, int argc, const char* const* argv);

} // namespace zan::tool
