// SPDX-License-Identifier: Apache-2.0
// The monitor file, line by line.
#pragma once

#include "slow_run.h"

namespace slow {

// False if the run has to be aborted. Throws Crash where the program ends by an exception.
bool read_monitor(Run& run, const std::string& bytes, bool has_description);

} // namespace slow
