// SPDX-License-Identifier: Apache-2.0
// `zanl-profile diff`.
#pragma once

#include "command_line.h"

namespace zan::tool {

extern const Command diff_command;

} // namespace zan::tool
