// SPDX-License-Identifier: Apache-2.0
// Random whole inputs of the program.
#pragma once

#include <cstdint>

#include "slow_model.h"

namespace slow {

// The same for the same seed, everywhere.
Input make_input(std::uint64_t seed);

} // namespace slow
