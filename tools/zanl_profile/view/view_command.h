// SPDX-License-Identifier: Apache-2.0
// `zanl-profile view`: a page that shows where the time of a run went.
#pragma once

#include "command_line.h"

namespace zan::tool {

extern const Command view_command;

} // namespace zan::tool
