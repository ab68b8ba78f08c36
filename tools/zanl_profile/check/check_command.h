// SPDX-License-Identifier: Apache-2.0
// zanl-profile check: what is wrong with a package and its capture, and what to do about it.
#pragma once

#include "command_line.h"

namespace zan::tool {

extern const Command check_command;

} // namespace zan::tool
