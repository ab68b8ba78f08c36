// SPDX-License-Identifier: Apache-2.0
// Random monitor files: samples of a design's kernels, transfers, and everything that may be wrong with
// them.
#pragma once

#include <string>

#include "design_generator.h"

namespace slow {

std::string make_monitor(Dice& dice, const Design& design);

} // namespace slow
