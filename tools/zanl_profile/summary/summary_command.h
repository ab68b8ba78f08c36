// SPDX-License-Identifier: Apache-2.0
// `zanl-profile summary`: what held a run up.
#pragma once

#include "command_line.h"

namespace zan::tool {

extern const Command summary_command;

} // namespace zan::tool
