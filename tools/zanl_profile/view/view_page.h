// SPDX-License-Identifier: Apache-2.0
// The page of a profile: one HTML file that needs nothing else.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "profile_columns.h"

namespace zan::tool {

// The text of a source file that a page shows.
struct PageSource {
    std::string name; // as the report has it
    std::string text;
};

// Takes the bytes of a page, piece by piece.
class PageOutput {
  public:
    virtual ~PageOutput() = default;
    virtual void write(std::string_view bytes) = 0;
};

// Writes the page of a profile, whose series move out of it. `base` may be null: a run to compare it with.
void write_page(PageOutput& out, profile::ProfileColumns& profile, std::span<const PageSource> sources,
                profile::ProfileColumns* base);

// A text as HTML shows it.
std::string html_text(std::string_view text);
// The bytes of a hexadecimal digest, as a policy names them. Contract: two digits for each byte.
std::string base64_of_hex(std::string_view hex);

} // namespace zan::tool
