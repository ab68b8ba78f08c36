// SPDX-License-Identifier: Apache-2.0
// Lists of the entries of a stream, of which there may be any number.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "json_output.h"

namespace zan::tool {

// Prints entries as they come, and holds 64 KiB of text at most: a stream of a few megabytes may have a
// million of them. So columns have a fixed width, and what is damaged further on is found when its beginning
// may have been printed.
class EntryList {
  public:
    // `stream` is the stream's name.
    EntryList(const std::string& stream, bool as_json);
    // Throws Failure if the output can't be written.
    void add(const std::string& path, bool is_folder, std::uint64_t size);
    void finish();

  private:
    void add_line(const std::string& line);

    const TextTarget m_target;
    std::unique_ptr<JsonOutput> m_json; // null for a table
    std::string m_text;                 // of a table, what isn't printed yet
};

} // namespace zan::tool
