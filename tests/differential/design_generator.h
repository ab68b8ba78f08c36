// SPDX-License-Identifier: Apache-2.0
// Random designs: profiler descriptions of every kind of counter and instance, sometimes broken.
#pragma once

#include <string>
#include <vector>

#include "dice.h"

namespace slow {

// What a monitor file has to know of a kernel.
struct DesignKernel {
    std::string name;
    std::string original_name;
    std::size_t num_counters = 0;
    bool autorun = false;
};

struct Design {
    std::string xml;
    std::vector<DesignKernel> kernels;
    bool shared = false; // compiled with shared counters
};

// Counters of external memory may refer to these memories.
Design make_design(Dice& dice, const std::vector<std::string>& memories);

// A change of some bytes or lines, which may break a text or not.
std::string damaged(Dice& dice, std::string text);

} // namespace slow
