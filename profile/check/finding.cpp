// SPDX-License-Identifier: Apache-2.0
#include "finding.h"

#include <algorithm>
#include <iterator>

#include "contract.h"

namespace zan::profile {

namespace {

using enum FindingLevel;

constexpr std::string_view same_build = "use the package that this run was started with";
constexpr std::string_view mend_section = "correct the description, or have the package made again";
constexpr std::string_view mend_capture = "look at what wrote the line, or at how the file was copied";

// In the order of the page.
constexpr FindingRow finding_rows[] = {
    // The package.
    {"not-a-package", error, "the file is no package", "give the .zanx file that the compiler wrote"},
    {"section-missing", error, "a section that a report needs isn't there", "have the package made again"},
    {"section-unreadable", error, "a section can't be read", "copy or make the package again"},
    {"not-xml", error, "a description is no XML", mend_section},
    {"xml-rule", error, "a description breaks a rule of its format", mend_section},
    {"no-description", warning, "there is no profiler description: a report has times alone",
     "compile the design with profiling"},
    {"no-clock", warning, "the timing report names no clock: bandwidths can't be computed",
     "take the package from a finished compilation"},
    {"no-width", warning, "a block has no width: its requested bandwidth counts 1 byte a request",
     "take a newer compiler, or don't use the efficiency of the block"},
    {"same-memory", warning, "two memories have one name: counters go to the first", mend_section},
    {"unknown-share", error, "a counter shares one that isn't there, and isn't read", mend_section},
    {"autorun-without-kernel", warning, "an autorun kernel isn't in the description", mend_section},
    {"unknown-memory", warning, "counters of a memory that the board lacks aren't in a report", mend_section},
    {"tag-fault", warning, "a memory counter can't be read", mend_section},
    {"no-cycles", warning, "a kernel doesn't count its clock: shares and bandwidths are missing",
     "compile the design with the clock counter"},
    {"compute-units", note, "a kernel has several compute units; reports have unit 0 alone",
     "see the others by 'zanl-profile summary --unit'"},
    {"uncounted", note, "blocks are idle or stalled, and no counter measures it",
     "take such a 0 for unknown"},
    // The capture as a whole.
    {"compressed-capture", error, "the capture is compressed", "uncompress it first, as by gunzip"},
    {"empty-capture", error, "the capture is empty", "look whether the run has ended, and wrote its file"},
    {"no-samples", error, "no line is a sample of a kernel", same_build},
    {"no-final-newline", warning, "the last line has no newline: the capture may be cut",
     "compare the size of the file with that of the original"},
    {"kernel-without-data", note, "a kernel has no samples", "nothing, if the run didn't start it"},
    {"shared-in-design-only", error, "the design shares counters, and the run doesn't",
     "run the host with the option for shared counters"},
    {"shared-in-capture-only", error, "the run shares counters, and the design doesn't",
     "run the host without the option for shared counters"},
    // Its lines.
    {"unknown-kernel", error, "lines name a kernel that the design lacks", same_build},
    {"counter-count", error, "lines have more or fewer counters than the design", same_build},
    {"wrong-counter-count", error, "the number of counters on a line isn't that of its fields", mend_capture},
    {"wrong-field-count", error, "a line has too few fields, or too many for a transfer", mend_capture},
    {"bad-number", error, "a field is no number", mend_capture},
    {"nameless-line", error, "a line names no kernel; zanl-profile-tly ends at it", mend_capture},
    {"taken-for-transfer", error, "a good line is lost, as a transfer before it has a fault", mend_capture},
    {"bad-counter", error, "a counter is no number, and counts as -1", mend_capture},
    {"time-backwards", error, "times go back", mend_capture},
    {"kernel-without-counters", warning, "lines of a kernel that has nothing to count are left out",
     "compile the design with profiling of this kernel"},
    {"empty-line", note, "a line is empty", "nothing; a report isn't changed by it"},
    // What the lines say.
    {"too-many-cycles", error, "a block was valid, stalled and idle for more cycles than there were",
     same_build},
    {"clock-mismatch", warning, "cycles at the clock are far from the time stamps", same_build},
    {"sample-mismatch", warning, "arrays of a block differ in length, or hold -1", mend_section},
    {"failure", error, "there is not enough memory", "use a larger machine"},
};

} // namespace

std::string_view name_of(FindingLevel level) {
    constexpr std::string_view names[] = {"note", "warning", "error"};
    return names[static_cast<std::size_t>(level)];
}

std::span<const FindingRow> finding_table() {
    return finding_rows;
}

const FindingRow* find_finding(std::string_view code) {
    const auto* row = std::ranges::find(finding_rows, code, &FindingRow::code);
    return row == std::end(finding_rows) ? nullptr : row;
}

void FindingLog::add(std::string_view code, const Fault& fault, const std::string& detail) {
    const FindingRow* row = find_finding(code);
    ZAN_CONTRACT(row != nullptr, "row != nullptr");
    auto& places = m_places[row->code];
    auto place = places.find(fault.message);
    if (place == places.end() && places.size() < most_of_a_code) {
        place = places.emplace(fault.message, m_findings.size()).first;
        m_findings.push_back({.row = row, .first = logged(fault), .detail = detail, .lines = {}});
    }
    if (place == places.end())
        place = std::ranges::max_element(places, {}, [](const auto& entry) { return entry.second; });
    Finding& finding = m_findings[place->second];
    ++finding.count;
    if (fault.line > 0 && fault.section.empty() && finding.lines.size() < shown)
        finding.lines.push_back(fault.line);
}

std::size_t FindingLog::count(FindingLevel level) const {
    return static_cast<std::size_t>(std::ranges::count_if(
        m_findings, [&](const Finding& finding) { return finding.row->level == level; }));
}

} // namespace zan::profile
