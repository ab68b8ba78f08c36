// SPDX-License-Identifier: Apache-2.0
// Source files that a page shows.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "profile_summary.h"
#include "view_page.h"

namespace zan::tool {

inline constexpr std::size_t max_source_size = std::size_t{2} << 20;

struct FoundSources {
    std::vector<PageSource> sources;
    std::vector<std::string> faults; // for people: a file each that is left out, and why
};

// The files that the summary names and `folder` has. A name is taken as relative to the folder; after links
// are resolved the file must lie below it, and be a regular file of at most max_source_size bytes. Bytes that
// are no UTF-8 become U+FFFD. Throws Failure if there is no such folder.
FoundSources find_sources(const profile::ProfileSummary& summary, const std::string& folder);

} // namespace zan::tool
