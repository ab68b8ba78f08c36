// SPDX-License-Identifier: Apache-2.0
// Texts as JSON may have them.
#pragma once

#include <string>
#include <string_view>

namespace zan::profile {

// The text with U+FFFD for each byte that is no UTF-8: such as overlong forms, surrogates, what is above
// U+10FFFF.
std::string valid_utf8_text(std::string_view text);

} // namespace zan::profile
