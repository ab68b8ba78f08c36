// The command line of the toolbox: commands as rows of tables, their help, and what wrong use gets to hear.
#pragma once

#include <span>

namespace CLI {
class App;
}

namespace zan::tool {

struct Command {
    const char* name;
    const char* summary; // a line for the help
    // Defines the command's options and arguments, or the commands below it, and what it does.
    void (*define)(CLI::App& app);
};

// Adds commands to a program, or to a command that has others below it.
void add_commands(CLI::App& app, std::span<const Command> commands);

// The commands of `zanl-profile package`.
void define_package_commands(CLI::App& app);

// Runs the toolbox: does what the arguments say, tells on standard error what went wrong, and gives the exit
// status. No exception leaves it.
int run_toolbox(int argc, const char* const* argv);

} // namespace zan::tool
