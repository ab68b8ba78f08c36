// SPDX-License-Identifier: Apache-2.0
// What a check of a package and its capture finds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "fault_log.h"
#include "run_fault.h"

namespace zan::profile {

// error: there is no report, or it lacks or misreads what the files have. warning: the report may mislead.
// note: the report is right, and readers should know this.
enum class FindingLevel { note, warning, error };
std::string_view name_of(FindingLevel level);

// A kind of finding. Its code never changes; docs/check.md lists them all.
struct FindingRow {
    std::string_view code;
    FindingLevel level;
    std::string_view meaning; // for people, a line
    std::string_view advice;  // what to do
};

std::span<const FindingRow> finding_table();
// Null if there is no such code.
const FindingRow* find_finding(std::string_view code);

// One finding, or several of one kind that say the same.
struct Finding {
    const FindingRow* row = nullptr;
    LoggedFault first;                // with place and text of the first one
    std::string detail;               // more about it, for people; may be empty
    std::uint64_t count = 0;          // how many
    std::vector<std::uint64_t> lines; // of the capture: those of the first, up to `FindingLog::shown`
};

// Keeps the findings in the order in which they came.
class FindingLog {
  public:
    static constexpr std::size_t shown = 5;
    // Findings of one code that differ in what they say are kept apart, up to that many. More of them are
    // counted with the last one.
    static constexpr std::size_t most_of_a_code = 20;

    // `code` is that of a row. The fault has the place and the message.
    void add(std::string_view code, const Fault& fault, const std::string& detail = {});

    const std::vector<Finding>& findings() const { return m_findings; }
    // How many entries of `findings` have this level.
    std::size_t count(FindingLevel level) const;

  private:
    std::vector<Finding> m_findings;
    // By code: place in the list by message, and the last place.
    std::map<std::string_view, std::map<std::string, std::size_t, std::less<>>> m_places;
};

} // namespace zan::profile
