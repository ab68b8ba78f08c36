// SPDX-License-Identifier: Apache-2.0
// Reads the table of rules from its text.
#pragma once

#include <string>
#include <string_view>
#include <variant>

#include "rules.h"

namespace zan::profile {

// The table of a text in the form of profile/rules.json, or what is wrong with it.
std::variant<Rules, std::string> read_rules(std::string_view json);

// The table that the program was built with.
const Rules& built_in_rules();
// Its text, for pages.
std::string_view built_in_rules_text();

} // namespace zan::profile
