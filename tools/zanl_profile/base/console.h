// SPDX-License-Identifier: Apache-2.0
// What people ask of any command: JSON, silence, colors.
#pragma once

#include <cstddef>
#include <string>

namespace zan::tool {

enum class ColorChoice { automatic, always, never };

// The options that commands have in common, as the command line has them. A command receives it when its
// options are defined, and reads it when it does its work.
struct Console {
    bool json = false;  // of commands that call add_json_option()
    bool quiet = false; // nothing on standard error but failures
    ColorChoice color = ColorChoice::automatic;

    // Whether text on this stream (STDOUT_FILENO, STDERR_FILENO) has colors: the option says so, else
    // NO_COLOR says no if it is set and not empty, else whether the stream is a terminal.
    bool has_colors(int stream) const;
};

// How many columns a line on this stream may have: those of its terminal, else `default_columns`.
constexpr std::size_t default_columns = 100;
std::size_t line_columns(int stream);

// Whether the locale of the environment (LC_ALL, else LC_CTYPE, else LANG) has UTF-8, which plots need.
bool has_utf8();

// Prints a line of talk on standard error, unless that is quiet: "zanl-profile: " is not before it. A
// progress bar is removed first. `text` must be printable.
void print_note(const Console& console, const std::string& text);

} // namespace zan::tool
