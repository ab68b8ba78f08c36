// SPDX-License-Identifier: Apache-2.0
// The profiler description.
#pragma once

#include "slow_run.h"

namespace slow {

// Makes the kernels of a description and their instances. False if the description can't be loaded.
bool read_description(Run& run, const std::string& xml);

} // namespace slow
