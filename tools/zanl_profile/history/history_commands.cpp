// SPDX-License-Identifier: Apache-2.0
#include "history_commands.h"

namespace zan::tool {

namespace {

constexpr const Command* history_commands[] = {&history_add_command,   &history_list_command,
                                               &history_show_command,  &history_diff_command,
                                               &history_trend_command, &history_remove_command};

} // namespace

const Command history_command = {
    "history", "keep the metrics of many runs in one file, and compare them",
    [](CLI::App& app, Console& console) { add_commands(app, console, history_commands); },
    "zanl-profile history add runs.db report.json --label commit=1f3a\n"
    "zanl-profile history list runs.db"};

} // namespace zan::tool
