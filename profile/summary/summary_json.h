// SPDX-License-Identifier: Apache-2.0
// A summary as a JSON document, which `summary --json` prints and which can be kept and read again: the
// baseline of a comparison is a few kilobytes in place of a report of gigabytes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

#include "profile_summary.h"

namespace zan::profile {

inline constexpr std::string_view summary_schema = "zanl-profile/summary";
inline constexpr int summary_schema_version = 1;

// The document, on one line that ends in a newline. Reading it makes the same summary, bit for bit, except
// that bytes of names that are no UTF-8 become U+FFFD, and numbers that aren't finite are missing. Values
// that are missing, empty or as usual have no key. Keys name their units; times are in nanoseconds ("_ns"),
// or, if the unit of time isn't known, as in the report ("_ticks").
std::string summary_to_json(const ProfileSummary& summary);

// Whether a document that begins so may be a summary: its first key is "schema".
bool begins_as_summary(std::string_view beginning);

// Why a text couldn't be read as a summary.
struct SummaryFault {
    std::uint64_t offset; // of the byte that shows it, from the first, which is 0
    std::string text;     // "expected a number for 'stall_percent'"
    bool operator==(const SummaryFault&) const = default;
};
// "byte 1234: expected a number for 'stall_percent'"
std::string describe(const SummaryFault& fault);

// Reads a document that summary_to_json() has written. Keys that aren't known are ignored. Never throws but
// std::bad_alloc; holds the text and about four times as much.
std::variant<ProfileSummary, SummaryFault> summary_from_json(std::string text);

} // namespace zan::profile
