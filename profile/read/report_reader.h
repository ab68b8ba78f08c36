// SPDX-License-Identifier: Apache-2.0
// A report's text, read to its nodes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "byte_source.h"
#include "report_sink.h"

namespace zan::profile {

// Why a text couldn't be read as a report.
enum class ReportFaultKind {
    not_read,   // the system couldn't read it
    no_report,  // it doesn't begin as a report does
    cut,        // it ends early
    syntax,     // it is no JSON
    odd_value,  // JSON that no report has: a number, a character that is no byte
    over_limit, // nested too deeply, or a text that is too long
};

struct ReportFault {
    ReportFaultKind kind;
    std::uint64_t offset; // of the byte at which it was found, from the first, which is 0
    std::string text;     // for people: "expected a comma or ']' in the array"
    bool operator==(const ReportFault&) const = default;
};

// "byte 1234: expected a comma or ']' in the array"
std::string describe(const ReportFault& fault);

// The first key of a report, and its value.
inline constexpr std::string_view report_type_key = "json_type";
inline constexpr std::string_view report_type = "Corvane Profiler JSON";

// How deep nodes may be nested, and how long a text with the blanks before it may be, in bytes. No report of
// a package gets near: a description has 100 levels at most.
inline constexpr std::size_t max_report_depth = 10'000;
inline constexpr std::size_t max_report_text = std::size_t{1} << 24;

// Reads a whole report, in pieces of 64 KiB, and writes the members of its root to the sink; JsonWriter makes
// the same text of them. A text has the bytes that the report was written from: \u00C3 is the byte 0xC3. An
// array of which each text is the report's text of a number comes as array(), a long one as elements() of an
// open array; all other arrays come text by text. Empty arrays and objects are empty texts in a report, and
// come as these; JSON's own empty ones come as open() and close().
//
// Holds a piece, what is open, and some ten thousand numbers. Nothing is allocated for a value, and nesting
// takes no stack.
//
// Returns nothing if all is well, else the first fault; the sink then has what came before it, with nodes
// that aren't closed. What the sink throws is let through, and nothing else is thrown but std::bad_alloc.
std::optional<ReportFault> read_report(ByteSource& source, ReportSink& sink);

} // namespace zan::profile
