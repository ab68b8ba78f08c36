// SPDX-License-Identifier: Apache-2.0
#include "entry_list.h"

#include <fmt/format.h>

#include "printable.h"

namespace zan::tool {

namespace {

constexpr std::size_t max_text = 1 << 16;
// As wide as the longest type, and the largest size of 32 bits.
constexpr const char* line_format = "{:<6}  {:>10}  {}\n";

} // namespace

EntryList::EntryList(const std::string& stream, bool as_json) : m_target(standard_output_target()) {
    if (!as_json) {
        add_line(fmt::format(line_format, "TYPE", "SIZE", "PATH"));
        return;
    }
    m_json = std::make_unique<JsonOutput>("zanl-profile/package-unpack", 1, m_target);
    m_json->member("stream", stream);
    m_json->begin_array("entries");
}

void EntryList::add(const std::string& path, bool is_folder, std::uint64_t size) {
    const char* const type = is_folder ? "folder" : "file";
    if (!m_json)
        return add_line(fmt::format(line_format, type, size, printable(path)));
    m_json->begin_object();
    m_json->member("type", type);
    m_json->member("size", size);
    m_json->member("path", path);
    m_json->end_object();
}

void EntryList::add_line(const std::string& line) {
    m_text += line;
    if (m_text.size() < max_text)
        return;
    m_target(m_text);
    m_text.clear();
}

void EntryList::finish() {
    if (m_json) {
        m_json->end_array();
        m_json->finish();
    } else {
        m_target(m_text);
    }
}

} // namespace zan::tool
