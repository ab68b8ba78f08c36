// SPDX-License-Identifier: Apache-2.0
// JSON of any origin as a tree.
#pragma once

#include <rapidjson/document.h>

#include <cstdint>
#include <optional>
#include <string>

namespace zan::profile {

// Where a text is no JSON, and why.
struct JsonFault {
    std::uint64_t offset;
    std::string text;
};

// Reads the text, whose bytes then belong to the document and which must outlive it; it gets a few zero bytes
// at its end. Numbers are the nearest that a double or a 64-bit integer has. The conversion is the C++
// library's: RapidJSON's shifts by what isn't defined for a zero with an exponent, as 0e308.
std::optional<JsonFault> read_json(std::string& text, rapidjson::Document& document);

} // namespace zan::profile
