// SPDX-License-Identifier: Apache-2.0
// What a command lists: a table for people, or JSON for scripts.
#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace zan::tool {

using Cell = std::variant<std::string, std::uint64_t>;

struct Listing {
    const char* schema; // of the JSON: "zanl-profile/package-list"
    int schema_version;
    std::string subject_key; // what is listed: "package"
    std::string subject;     // its name
    std::string rows_key;    // what it has: "sections"
    // Keys in JSON; in upper case they head the table. One whose key is in `json_only` isn't in the table.
    std::vector<std::string> columns;
    std::vector<std::vector<Cell>> rows; // as long as `columns`
    std::vector<std::string> json_only = {};
};

// Prints it on standard output. Text that isn't UTF-8 has U+FFFD in JSON for what can't be shown. Throws
// Failure if the output can't be written.
void print(const Listing& listing, bool as_json);

} // namespace zan::tool
