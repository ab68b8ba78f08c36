// SPDX-License-Identifier: Apache-2.0
// Sections that a stage of a run did not find: the stages take one that can't be read for one that isn't
// there.
#pragma once

#include <string>
#include <string_view>

namespace zan::profile {

enum class SectionLoss {
    absent,     // the package doesn't list it, or lists no sections
    cut,        // some or all of its bytes are beyond the end of the file
    unreadable, // its bytes are in the file, or the package can't be opened any more
};

// What happened to a section of the package at this path.
SectionLoss loss_of(const std::string& package, std::string_view section);

} // namespace zan::profile
