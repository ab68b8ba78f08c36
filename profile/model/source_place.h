// SPDX-License-Identifier: Apache-2.0
// What people call a place in the sources.
#pragma once

#include <string>

#include "profile_summary.h"

namespace zan::profile {

// "device/image.cl:34"; the file alone without a line, and nothing without a file.
inline std::string source_place_text(const SourcePlace& place) {
    if (place.file.empty() || place.line <= 0)
        return place.file;
    return place.file + ":" + std::to_string(place.line);
}

} // namespace zan::profile
