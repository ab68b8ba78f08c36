// SPDX-License-Identifier: Apache-2.0
// How many counters the lines of a design's kernels have.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "profile_model.h"

namespace zan::profile {

// The counters of a kernel on one of its lines.
struct LineCounters {
    long long num_fields = 0;   // of all compute units
    unsigned int num_units = 1; // 0 for the lines of several kernels
    long long num_unshared = 0; // as many as there would be if the design shared no counters
    bool shares = false;
    bool is_known = false; // false: lines of the kernel are left out, or aren't held against the design
};

// Knows the kernels of a model by all names that lines may use. Holds nothing of the model.
class DesignCounters {
  public:
    DesignCounters() = default;
    explicit DesignCounters(const ProfileModel& model);

    // Null for a name that the design lacks.
    const LineCounters* find(std::string_view name) const;
    // Why a line may have this number of counters, for people: "56 is two compute units, the design has 3".
    // Empty if that isn't known.
    static std::string reason(const LineCounters& counters, long long num_on_line);

  private:
    std::map<std::string, LineCounters, std::less<>> m_kernels;
};

} // namespace zan::profile
