// SPDX-License-Identifier: Apache-2.0
#include "finding.h"

#include <gtest/gtest.h>

#include <set>

#include "contract_death.h"

namespace {

using namespace zan::profile;

TEST(FindingTable, CodesAreUniqueAndFound) {
    std::set<std::string_view> codes;
    for (const FindingRow& row : finding_table()) {
        EXPECT_TRUE(codes.insert(row.code).second) << row.code;
        EXPECT_EQ(find_finding(row.code), &row);
        EXPECT_FALSE(row.meaning.empty() || row.advice.empty());
    }
    EXPECT_EQ(find_finding("none"), nullptr);
}

// What can't be read is no finding, but a failure of the command.
TEST(FindingTable, HasEachKindOfFault) {
    for (int i = 0; i < static_cast<int>(FaultKind::count); ++i) {
        const auto kind = static_cast<FaultKind>(i);
        const bool is_failure =
            kind == FaultKind::package_unreadable || kind == FaultKind::capture_unreadable;
        EXPECT_EQ(find_finding(name_of(kind)) == nullptr, is_failure) << name_of(kind);
    }
}

// A fault that ends a run, or costs a line with data, is an error.
TEST(FindingTable, LevelsFollowTheEffect) {
    for (int i = 0; i < static_cast<int>(FaultKind::count); ++i) {
        const auto kind = static_cast<FaultKind>(i);
        const FindingRow* row = find_finding(name_of(kind));
        if (!row)
            continue;
        const bool loses_data = effect_of(kind) == FaultEffect::leaves_line_out &&
                                kind != FaultKind::empty_line && kind != FaultKind::kernel_without_counters;
        const bool has_to_be = effect_of(kind) == FaultEffect::ends_run || loses_data;
        EXPECT_TRUE(!has_to_be || row->level == FindingLevel::error) << row->code;
    }
}

Fault fault_at(std::uint64_t line, std::string_view message) {
    Fault fault;
    fault.file = "p.mon";
    fault.line = line;
    fault.message = message;
    return fault;
}

TEST(FindingLog, FindingsThatSayTheSameAreOne) {
    FindingLog log;
    for (std::uint64_t line = 1; line <= 7; ++line)
        log.add("unknown-kernel", fault_at(line, line % 2 == 0 ? "even" : "odd"), "more");
    ASSERT_EQ(log.findings().size(), 2u);
    const Finding& odd = log.findings()[0];
    EXPECT_EQ(odd.first.message, "odd");
    EXPECT_EQ(odd.count, 4u);
    EXPECT_EQ(odd.lines, (std::vector<std::uint64_t>{1, 3, 5, 7}));
    EXPECT_EQ(odd.detail, "more");
    EXPECT_EQ(log.count(FindingLevel::error), 2u);
    EXPECT_EQ(log.count(FindingLevel::note), 0u);
}

TEST(FindingLog, KeepsFewLinesAndFewFindingsOfACode) {
    FindingLog log;
    for (std::uint64_t line = 1; line <= 100; ++line)
        log.add("unknown-kernel", fault_at(line, "kernel " + std::to_string(line)));
    ASSERT_EQ(log.findings().size(), FindingLog::most_of_a_code);
    EXPECT_EQ(log.findings().front().count, 1u);
    EXPECT_EQ(log.findings().back().count, 81u) << "the last one has those that weren't kept";
    EXPECT_EQ(log.findings().back().lines.size(), FindingLog::shown);
}

TEST(FindingLog, ACodeHasToBeInTheTable) {
    FindingLog log;
    EXPECT_CONTRACT(log.add("none", fault_at(1, "x")), "row != nullptr");
}

} // namespace
