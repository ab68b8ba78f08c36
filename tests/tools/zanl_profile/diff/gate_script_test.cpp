// SPDX-License-Identifier: Apache-2.0
// The gate for CI, as it stands in the examples.
#include "diff_result.h"
#include "summary_json.h"
#include "toolbox_fixture.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;

class GateScript : public Toolbox {
  protected:
    GateScript() {
        const TwoRuns runs = slower_writer();
        write("good.json", summary_to_json(runs.before));
        write("slow.json", summary_to_json(runs.after));
    }
    Outcome gate(const std::string& arguments) const {
        return shell("ZANL_PROFILE=$T " ZAN_GATE_SCRIPT " " + arguments);
    }
};

TEST_F(GateScript, PassesWhereNothingIsWorse) {
    const Outcome outcome = gate("good.json good.json");
    EXPECT_EQ(outcome.status, "0");
    EXPECT_EQ(outcome.err, "");
    EXPECT_THAT(outcome.out, StartsWith("## Profile: `good.json` against `good.json`\n"));
    EXPECT_EQ(gate("slow.json - < slow.json").status, "0");
}

TEST_F(GateScript, FailsWhereAKernelIsSlower) {
    const Outcome outcome = gate("good.json slow.json");
    EXPECT_EQ(outcome.status, "1");
    EXPECT_THAT(outcome.err,
                HasSubstr("'kernel_time:+3%' fails for 'writer': 8.00 us, now 9.20 us (and 1 more)"));
    EXPECT_THAT(outcome.out, HasSubstr("### Failed\n"));
}

TEST_F(GateScript, FailsWithoutItsBaseline) {
    const Outcome outcome = gate("baseline.json slow.json");
    EXPECT_EQ(outcome.status, "2");
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err, HasSubstr("there is no baseline 'baseline.json'"));
    EXPECT_THAT(outcome.err, HasSubstr("zanl-profile summary slow.json --json > baseline.json"));
}

TEST_F(GateScript, FailsWhereItCantCompare) {
    write("empty.json", R"({"schema": "zanl-profile/summary", "schema_version": 1})");
    const Outcome outcome = gate("good.json empty.json");
    EXPECT_EQ(outcome.status, "2");
    EXPECT_THAT(outcome.err, HasSubstr("has nothing to compare"));
    EXPECT_EQ(gate("good.json").status, "2");
}

} // namespace
