// SPDX-License-Identifier: Apache-2.0
// The commands of `zanl-profile package`.
#pragma once

#include "command_line.h"

namespace zan::tool {

extern const Command package_command;

// One line for each command below it, in the order of the help: `list` stands for `list_command`, which
// package_list.cpp defines, with its options and its work. A new command is a line here and such a file.
#define ZAN_PACKAGE_COMMANDS(use)                                                                     \
    use(create) use(list) use(show) use(extract) use(add) use(update) use(remove) use(copy) use(pack) \
        use(unpack)

#define ZAN_DECLARE_COMMAND(name) extern const Command name##_command;
ZAN_PACKAGE_COMMANDS(ZAN_DECLARE_COMMAND)
#undef ZAN_DECLARE_COMMAND

} // namespace zan::tool
