// SPDX-License-Identifier: Apache-2.0
// zanl-profile run: the report of zanl-profile-tly, with all that is wrong with its inputs.
#pragma once

#include "command_line.h"

namespace zan::tool {

extern const Command run_command;

} // namespace zan::tool
