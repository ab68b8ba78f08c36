// SPDX-License-Identifier: Apache-2.0
// What the sections of a package are.
#pragma once

#include <string>
#include <string_view>

namespace zan::tool {

struct SectionKind {
    std::string_view key;     // one word, for scripts
    std::string_view meaning; // a few words, for people
};

// The kind of a section by its name; "other" for an unknown name.
SectionKind kind_of_name(std::string_view name);

// Whether a directory stream may begin with these bytes. `stream_beginning` of them are enough to know.
bool begins_stream(const char* bytes, std::size_t size);
constexpr std::size_t stream_beginning = 64;

constexpr SectionKind stream_kind = {"stream", "directory stream"};

} // namespace zan::tool
