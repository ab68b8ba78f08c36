// SPDX-License-Identifier: Apache-2.0
#include "toolbox.h"

#include "check_command.h"
#include "command_line.h"
#include "completion_command.h"
#include "diff_command.h"
#include "export_command.h"
#include "history_commands.h"
#include "package_commands.h"
#include "run_command.h"
#include "signals.h"
#include "summary_command.h"
#include "view_command.h"

namespace zan::tool {

namespace {

// A new command is a line here.
constexpr const Command* toolbox_commands[] = {
    &run_command,    &check_command,   &summary_command, &diff_command,       &view_command,
    &export_command, &package_command, &history_command, &completion_command,
};

constexpr Command toolbox = {
    "zanl-profile", "Tools for profiled FPGA designs.",
    [](CLI::App& app, Console& console) { add_commands(app, console, toolbox_commands); },
    "zanl-profile package list design.zanx\n"
    "zanl-profile help package create"};

} // namespace

int run_toolbox(int argc, const char* const* argv) {
    prepare_signals();
    return run_command_line(toolbox, argc, argv);
}

} // namespace zan::tool
