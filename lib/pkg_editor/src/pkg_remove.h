// SPDX-License-Identifier: Apache-2.0
// Packages without some of their sections, for C++ callers. libelf can't take a section out of a file, so the
// package is written anew.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>

#include "pkg_editor.h"

namespace zan::pkg {

// Writes the package, which must be one and have no edits, to the open file `to` without the sections of
// these names; of a name that occurs several times, without all of them. The table of names is made anew, so
// the names are gone as well. Waits for the disk. Returns an empty text, or why that failed; nothing is
// printed. A file of more than `max_size` bytes is not begun. A package in which sections refer to others by
// their numbers, as symbols do, is refused.
std::string write_without(const zan_pkg_file* pkg, const std::unordered_set<std::string_view>& names, int to,
                          std::uint64_t max_size);

} // namespace zan::pkg
