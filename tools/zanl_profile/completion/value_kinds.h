// SPDX-License-Identifier: Apache-2.0
// What the values of options and arguments are, by the labels that the help has for them.
#pragma once

#include <string>

namespace zan::tool {

// What a shell offers for a value with this label, of this command ("package list"):
//
//     words:a,b      one of these words
//     files:x,y      a file with one of these endings, or a folder on the way to one
//     files          any file or folder
//     section        a section of the package on the line
//     section_file   a section, "=", and a file
//     command        a command of the program
//     text           nothing: it can be anything
//
// A label that has no row is "unknown", and shells offer nothing for it.
std::string kind_of_value(const std::string& command, const std::string& label);

} // namespace zan::tool
