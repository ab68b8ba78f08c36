// SPDX-License-Identifier: Apache-2.0
// Texts packed for a database, as SQLite's own archives have them: `sqlar_uncompress(packed, length)` of the
// program sqlite3 unpacks them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zan::profile {

// A zlib stream, or the text itself if that is no longer.
std::string pack_text(std::string_view text);

// The text of that many bytes. Nothing if these are no such bytes, whatever they are; no more memory is taken
// than such bytes can unpack to.
std::optional<std::string> unpack_text(std::string_view packed, std::int64_t length);

} // namespace zan::profile
