// SPDX-License-Identifier: Apache-2.0
// A check of a package, or of a package and its capture.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "finding.h"

namespace zan::profile {

struct CheckResult {
    FindingLog log;
    // Why a file can't be opened or read; empty if both can. The findings are those before that.
    std::string trouble;
    std::uint64_t num_lines = 0; // of the capture
};

// Checks the files, which are paths or "-" as for read_run. `progress` is called now and then with the bytes
// of the capture that have been read; it may be empty.
CheckResult check_run(const std::string& package, const std::optional<std::string>& capture,
                      const std::function<void(std::uint64_t bytes)>& progress);

} // namespace zan::profile
