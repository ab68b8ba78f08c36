// SPDX-License-Identifier: Apache-2.0
// `zanl-profile export`: samples and metrics for other tools.
#pragma once

#include "command_line.h"

namespace zan::tool {

extern const Command export_command;

} // namespace zan::tool
