// SPDX-License-Identifier: Apache-2.0
// The files of a run, of which each byte comes from the input.
#pragma once

#include <string>
#include <string_view>

// Whether the input has the sections of a package: lines "--- NAME" begin the sections ".zan.NAME"; those
// after the line "--- profile.mon" are the monitor file. Any other input is a package itself.
bool has_sections(std::string_view input);

// Makes the package at `path` of the sections, and returns the monitor file's text. Contract: has_sections().
std::string_view write_package(std::string_view input, const std::string& path);
