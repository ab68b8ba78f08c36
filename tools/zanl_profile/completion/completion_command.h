// SPDX-License-Identifier: Apache-2.0
// `zanl-profile completion`.
#pragma once

#include "command_line.h"

namespace zan::tool {

extern const Command completion_command;

} // namespace zan::tool
