// SPDX-License-Identifier: Apache-2.0
#include "plain_summary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "diagnosis.h"
#include "made_summary.h"
#include "rules_reader.h"

using namespace zan::tool;
using namespace zan::profile;
using testing::HasSubstr;
using testing::Not;

namespace {

std::vector<std::vector<std::string>> fields_of(const std::string& text) {
    std::vector<std::vector<std::string>> rows;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        rows.emplace_back();
        std::istringstream fields(line);
        for (std::string field; std::getline(fields, field, '\t');)
            rows.back().push_back(field);
    }
    return rows;
}

ProfileSummary plain_run() {
    BlockSummary block = made::global_read("load\tit");
    block.metrics[Metric::stall] = 100.0 / 3;
    ProfileSummary summary =
        made::run({made::kernel("a", {block}), made::kernel("b", {made::global_read()})});
    diagnose(summary, built_in_rules());
    summary.notes.push_back({"code", "text"});
    return summary;
}

} // namespace

TEST(PlainSummary, EachRowHasTheFieldsOfItsHeading) {
    std::size_t num_fields = 0;
    for (const auto& row : fields_of(plain_summary_text(plain_run(), {}))) {
        if (row.empty())
            num_fields = 0;
        else if (num_fields == 0)
            num_fields = row.size();
        else
            EXPECT_EQ(row.size(), num_fields) << row[0];
    }
}

TEST(PlainSummary, NumbersHaveAllTheirDigitsAndHeadingsUnits) {
    const std::string text = plain_summary_text(plain_run(), {});
    EXPECT_THAT(text, HasSubstr("\t33.333333333333336\t50\t10\t40000\t-\t-\t-"));
    EXPECT_THAT(text, HasSubstr("\t100000\n"));
    EXPECT_THAT(text, HasSubstr("\tstall_percent\tvalid_percent\tidle_percent\tlost_ns\titeration_cycles\t"));
    ProfileSummary without_unit = plain_run();
    without_unit.nanoseconds.reset();
    EXPECT_THAT(plain_summary_text(without_unit, {}), HasSubstr("\tlost_ticks\t"));
}

TEST(PlainSummary, ATabInANameIsMadeVisible) {
    EXPECT_THAT(plain_summary_text(plain_run(), {}),
                HasSubstr("\nb\t0\tload\tglobal read\tDDR\tdevice/a.cl:9\tlatency\t"));
    EXPECT_THAT(plain_summary_text(plain_run(), {}), HasSubstr("\tload⟨U+0009⟩it\t"));
}

TEST(PlainSummary, TheViewChoosesKernelAndRows) {
    SummaryView view;
    view.kernel = "b";
    EXPECT_THAT(plain_summary_text(plain_run(), view), Not(HasSubstr("\na\t0\t")));
    view.kernel = "";
    view.top = 1;
    const std::string text = plain_summary_text(plain_run(), view);
    EXPECT_THAT(text, Not(HasSubstr("\nb\t0\tload\t")));
}

TEST(PlainSummary, WhatIsNotKnownIsADash) {
    ProfileSummary summary = plain_run();
    summary.kernels[0].device.reset();
    summary.kernels[0].source = {};
    // Kernel, device, autorun, invocations, culprit, source.
    EXPECT_THAT(plain_summary_text(summary, {}), HasSubstr("\na\t-\t0\t1\tload⟨U+0009⟩it\t-\t"));
    EXPECT_THAT(plain_summary_text(summary, {}), HasSubstr("\na\t-\tload⟨U+0009⟩it\tglobal read\tDDR\t"));
}
