// SPDX-License-Identifier: Apache-2.0
// Which command the words of a command line mean.
#pragma once

#include <span>
#include <string>
#include <vector>

namespace CLI {
class App;
} // namespace CLI

namespace zan::tool {

struct MeantCommand {
    CLI::App* app; // the last command that is named, or the program itself
    // The arguments with the names of commands first, so that the parser takes options for those of the last
    // command. The program's own options, which are in `of_program`, come before all.
    std::vector<std::string> arguments;
};

// Finds the command. Throws Failure for a word where a command should stand, with a suggestion. The parser
// has none, so it doesn't get such words.
MeantCommand find_command(CLI::App& program, std::span<const std::string> arguments,
                          std::span<const std::string> of_program);

// The program that the command belongs to.
const CLI::App& program_of(const CLI::App& app);

// The names of the commands right below this one.
std::vector<std::string> command_names(const CLI::App& app);

// "zanl-profile package list".
std::string full_name(const CLI::App& app);

} // namespace zan::tool
