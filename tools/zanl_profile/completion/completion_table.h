// SPDX-License-Identifier: Apache-2.0
// What a shell can offer at each place of a command line: the command line's own definition as rows of text.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
} // namespace CLI

namespace zan::tool {

// A command, option or argument.
struct CompletionRow {
    std::string command; // the names of the command that it belongs to, "package list"; empty: the program
    std::string what;    // "command", "option" or "argument"
    // Of an argument its number from 1, or "more": all that follow the numbered ones. An option has a row
    // for each of its names, with its dashes.
    std::string name;
    std::string kind; // of a value, as kind_of_value() has it; "none" if there is none
    std::string text; // for people; a line
};

// The rows of the program and of all commands below it, in the order of the help.
std::vector<CompletionRow> completion_table(const CLI::App& program);

} // namespace zan::tool
