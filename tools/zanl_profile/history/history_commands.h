// SPDX-License-Identifier: Apache-2.0
// `zanl-profile history` and its commands: many runs in one file.
#pragma once

#include "command_line.h"

namespace zan::tool {

extern const Command history_add_command;
extern const Command history_list_command;
extern const Command history_show_command;
extern const Command history_remove_command;
extern const Command history_diff_command;
extern const Command history_trend_command;
extern const Command history_command;

} // namespace zan::tool
