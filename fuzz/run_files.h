// SPDX-License-Identifier: Apache-2.0
// The files of a run, of which each byte comes from the input.
#pragma once

#include <functional>
#include <string>
#include <string_view>

// Calls `use` with the path of a package and the text of a monitor file.
//
// Lines "--- NAME" of the input begin the sections ".zan.NAME" of the package; what follows the line "---
// profile.mon" is the monitor file. An input that begins with no such line is a package itself, with a
// monitor file of one line.
void with_run_files(
    std::string_view input,
    const std::function<void(const std::string& package, std::string_view monitor_lines)>& use);
