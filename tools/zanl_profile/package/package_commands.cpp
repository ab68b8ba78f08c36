// SPDX-License-Identifier: Apache-2.0
#include "package_commands.h"

namespace zan::tool {

namespace {

#define ZAN_ROW(name) &name##_command,
constexpr const Command* package_commands[] = {ZAN_PACKAGE_COMMANDS(ZAN_ROW)};
#undef ZAN_ROW

} // namespace

const Command package_command = {
    "package", "look into design packages, make and change them",
    [](CLI::App& app, Console& console) { add_commands(app, console, package_commands); },
    "zanl-profile package list design.zanx"};

} // namespace zan::tool
