// SPDX-License-Identifier: Apache-2.0
#include "fault_log.h"

#include <algorithm>

#include "value_text.h"

namespace zan::profile {

namespace {

// A line, or a whole document in one line, may have gigabytes.
constexpr std::size_t most_bytes_shown = 400;

} // namespace

LoggedFault logged(const Fault& fault) {
    LoggedFault result{.kind = fault.kind,
                       .file = std::string(fault.file),
                       .section = std::string(fault.section),
                       .line = fault.line,
                       .column = fault.column,
                       .kernel = std::string(fault.kernel),
                       .block = std::string(fault.block),
                       .message = std::string(fault.message)};
    const bool is_long = fault.column > most_bytes_shown / 2 && fault.line_text.size() > most_bytes_shown;
    result.cut_size = is_long ? std::min(fault.column - most_bytes_shown / 2, fault.line_text.size()) : 0;
    result.line_text = fault.line_text.substr(result.cut_size, most_bytes_shown);
    result.is_cut = fault.line_text.size() - result.cut_size > most_bytes_shown;
    return result;
}

std::string place_of(const LoggedFault& fault) {
    std::string place = fault.file;
    if (!fault.section.empty())
        place += ": " + fault.section;
    if (fault.line > 0)
        place += ":" + std::to_string(fault.line);
    if (fault.line > 0 && !fault.section.empty() && fault.column > 0)
        place += ":" + std::to_string(fault.column);
    return place;
}

void FaultLog::take(const Fault& fault) {
    FaultGroup& group = m_groups[static_cast<std::size_t>(fault.kind)];
    if (++group.count <= shown)
        group.first.push_back(logged(fault));
}

std::string FaultLog::left_out_by_kind() const {
    std::string text;
    for (std::size_t i = 0; i < m_groups.size(); ++i) {
        const auto kind = static_cast<FaultKind>(i);
        if (m_groups[i].count == 0 || effect_of(kind) != FaultEffect::leaves_line_out)
            continue;
        text += text.empty() ? "" : ", ";
        text += count_text(static_cast<double>(m_groups[i].count)) + " " + std::string(name_of(kind));
    }
    return text;
}

const LoggedFault* FaultLog::end() const {
    for (std::size_t i = 0; i < m_groups.size(); ++i) {
        if (m_groups[i].count > 0 && effect_of(static_cast<FaultKind>(i)) == FaultEffect::ends_run)
            return &m_groups[i].first.front();
    }
    return nullptr;
}

} // namespace zan::profile
