// SPDX-License-Identifier: Apache-2.0
// The whole program once more, slowly.
#pragma once

#include <optional>
#include <string>

#include "make_package.h"

namespace slow {

struct Input {
    PackageSections sections;
    std::optional<std::string> monitor; // unset if there is no such file
};

struct Result {
    std::string err;
    std::string status; // as run_program returns it
    std::optional<std::string> report;
};

// What the program has to write. After `err` of an end by a signal the C++ runtime may have a message of its
// own.
Result run(const Input& input, const std::string& version);

} // namespace slow
