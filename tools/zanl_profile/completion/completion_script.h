// SPDX-License-Identifier: Apache-2.0
// Scripts that complete command lines.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "completion_table.h"

namespace zan::tool {

// A text for use within single quotes of the shell: "bash", "zsh" or "fish". The quotes are left to the
// caller.
std::string quoted_for_shell(std::string_view shell, std::string_view text);

// The script for this shell: the table, and the functions of completion.bash, .zsh or .fish, which look into
// it. Empty if the shell is another one.
std::string completion_script(std::string_view shell, const std::vector<CompletionRow>& table);

} // namespace zan::tool
