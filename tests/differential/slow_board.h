// SPDX-License-Identifier: Apache-2.0
// The board description, as far as the report needs it. Of its many rules only those are known that the
// design generator breaks.
#pragma once

#include "slow_run.h"

namespace slow {

// Adds the board's node and its memories. False if the description can't be loaded.
bool read_board(Run& run, const std::string& xml);

} // namespace slow
