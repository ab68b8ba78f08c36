// SPDX-License-Identifier: Apache-2.0
// `zanl-profile summary` as users run it.
#include "toolbox_fixture.h"

namespace {

using testing::HasSubstr;

class SummaryCommand : public Toolbox {
  protected:
    SummaryCommand() {
        write("r.json", read_file(std::string(ZAN_SAMPLES_FOLDER) + "/loop/expected_report.json"));
    }
    Outcome summary(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "summary");
        return run(arguments);
    }
};

TEST_F(SummaryCommand, AComputeUnitIsANumber) {
    for (const char* text : {"x", "1x", "-1", "1.5", " 1", "99999999999"})
        EXPECT_EQ(summary({"r.json", "--unit", text}),
                  trouble(std::string("--unit takes a number or 'all', not '") + text + "'"));
    for (const char* text : {"0", "all"})
        EXPECT_EQ(summary({"r.json", "--unit", text}),
                  trouble("'r.json' has compute unit 0 alone; --unit takes a package and its capture"));
}

TEST_F(SummaryCommand, BlocksAreSortedByAMetricOfBlocks) {
    EXPECT_EQ(summary({"r.json", "--sort", "stal"}),
              trouble("'stal' is no metric of a block; did you mean 'stall'?"));
    EXPECT_EQ(summary({"r.json", "--sort", "kernel_time"}), trouble("'kernel_time' is no metric of a block"));
    EXPECT_EQ(summary({"r.json", "--sort", "stall"}).status, "0");
}

TEST_F(SummaryCommand, InputsThatMakeNoRunAreRefused) {
    EXPECT_EQ(summary({"d.zanx"}), trouble("d.zanx: a package needs its capture after it"));
    EXPECT_EQ(summary({"r.json", "--kernel", "none at all"}), trouble("no kernel is called 'none at all'"));
}

TEST_F(SummaryCommand, ReportsOfSeveralRunsAreOne) {
    const Outcome one = summary({"r.json", "--plain"});
    const Outcome two = summary({"r.json", "r.json", "--plain"});
    EXPECT_EQ(two.status, "0");
    EXPECT_EQ(two.err, "");
    // On device 0, no autorun kernel, and how often it ran.
    EXPECT_THAT(one.out, HasSubstr("\nrow_sums\t0\t0\t2\t"));
    EXPECT_THAT(two.out, HasSubstr("\nrow_sums\t0\t0\t4\t"));
}

TEST_F(SummaryCommand, StandardInputIsAReport) {
    EXPECT_EQ(shell("$T summary - < r.json"), summary({"r.json"}));
    EXPECT_EQ(shell("cat r.json | $T summary -"), summary({"r.json"}));
}

} // namespace
