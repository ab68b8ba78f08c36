// SPDX-License-Identifier: Apache-2.0
// `zanl-profile diff` as users run it.
#include "diff_result.h"
#include "summary_json.h"
#include "toolbox_fixture.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;

class DiffCommand : public Toolbox {
  protected:
    DiffCommand() {
        const TwoRuns runs = slower_writer();
        write("base.json", summary_to_json(runs.before));
        write("new.json", summary_to_json(runs.after));
    }
    Outcome diff(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "diff");
        return run(arguments);
    }
};

TEST_F(DiffCommand, ShowsWhatChanged) {
    const Outcome outcome = diff({"base.json", "new.json"});
    EXPECT_EQ(outcome.status, "0");
    EXPECT_EQ(outcome.err, "");
    EXPECT_THAT(outcome.out, StartsWith("base  base.json\nnew   new.json\n\nWORSE"));
    EXPECT_EQ(diff({"base.json", "base.json"}).out, "base  base.json\nnew   base.json\n\nno changes\n");
}

TEST_F(DiffCommand, HasThreeFormats) {
    EXPECT_THAT(diff({"base.json", "new.json", "--format", "markdown"}).out, StartsWith("## Profile"));
    const Outcome json = diff({"base.json", "new.json", "--format", "json"});
    EXPECT_THAT(json.out, StartsWith("{\n    \"schema\": \"zanl-profile/diff\""));
    EXPECT_EQ(diff({"--json", "base.json", "new.json"}), json);
    EXPECT_THAT(json.out, HasSubstr("\"match\": \"name\""));
    EXPECT_THAT(diff({"base.json", "new.json", "--json", "--match", "source"}).out,
                HasSubstr("\"match\": \"source\""));
    EXPECT_EQ(diff({"base.json", "new.json", "--format", "xml"}),
              trouble("--format takes text, markdown or json, not 'xml'"));
    EXPECT_EQ(diff({"base.json", "new.json", "--match", "line"}),
              trouble("--match takes name or source, not 'line'"));
}

TEST_F(DiffCommand, StandardInputIsAnInput) {
    EXPECT_EQ(shell("$T diff base.json - < new.json | tail -n +3").out,
              shell("$T diff base.json new.json | tail -n +3").out);
    EXPECT_THAT(shell("$T diff - - < new.json").err, HasSubstr("standard input"));
}

TEST_F(DiffCommand, ABrokenRuleIsNamedWithBothValues) {
    const Outcome outcome =
        diff({"base.json", "new.json", "--fail-on", "kernel_time:+20%", "--fail-on", "stall:+5"});
    EXPECT_EQ(outcome.status, "1");
    EXPECT_EQ(outcome.err, "zanl-profile: the rule 'stall:+5' fails for 'writer/store': 28.0%, now 35.1%\n");
    EXPECT_THAT(outcome.out, HasSubstr("kernel_time:+20% holds for 1 kernel\n"));
    EXPECT_EQ(diff({"base.json", "new.json", "--fail-on", "stall:+8"}).status, "0");
    EXPECT_THAT(diff({"base.json", "new.json", "--fail-on", "stall:+5", "--fail-on", "kernel_time:+3%"}).err,
                HasSubstr("(and 1 more)"));
}

TEST_F(DiffCommand, ARuleThatNothingCanMatchIsTrouble) {
    EXPECT_EQ(diff({"base.json", "new.json", "--fail-on", "fill:+5"}),
              trouble("the rule 'fill:+5' has nothing to compare: no value of it is known of both runs"));
    EXPECT_EQ(diff({"base.json", "new.json", "--fail-on", "stal:+5"}),
              trouble("--fail-on: there is no metric 'stal'; did you mean 'stall'?"));
    EXPECT_EQ(diff({"base.json", "new.json", "--fail-on", "stall"}),
              trouble("--fail-on: 'stall' is no rule: write METRIC:+LIMIT or METRIC:-LIMIT"));
}

TEST_F(DiffCommand, KernelsAndBlocksCanBeChosen) {
    EXPECT_THAT(diff({"base.json", "new.json", "--block", "load"}).out, Not(HasSubstr("store")));
    EXPECT_EQ(diff({"base.json", "new.json", "--fail-on", "stall:+5", "--block", "load"}).status, "0");
    EXPECT_EQ(diff({"base.json", "new.json", "--kernel", "writr"}),
              trouble("neither run has a kernel 'writr'; did you mean 'writer'?"));
    EXPECT_EQ(diff({"base.json", "new.json", "--block", "writer/stor"}),
              trouble("no kernel of both runs has a block 'writer/stor'; did you mean 'writer/store'?"));
}

TEST_F(DiffCommand, OneOrThreeInputsAreTrouble) {
    EXPECT_EQ(diff({"base.json"}), trouble("diff takes two inputs, BASE and NEW, not 1"));
    EXPECT_EQ(diff({"base.json", "new.json", "base.json"}),
              trouble("diff takes two inputs, BASE and NEW, not 3"));
    EXPECT_EQ(diff({"base.json", "design.zanx"}).status, "2");
}

TEST_F(DiffCommand, WhatCantBeReadIsTrouble) {
    EXPECT_EQ(diff({"base.json", "none.json"}).status, "2");
    EXPECT_THAT(diff({"base.json", "none.json"}).err, HasSubstr("none.json: No such file or directory"));
    write("cut.json", R"({"json_type": "Corvane Profiler JSON", "a": "b)");
    EXPECT_EQ(diff({"cut.json", "new.json"}),
              trouble("cut.json: byte 46: the text ends early: the report is cut"));
    write("number.json", R"({"json_type": "Corvane Profiler JSON", "a": 1})");
    EXPECT_EQ(diff({"number.json", "new.json"}),
              trouble("number.json: byte 44: a number where a report has a text in quotes"));
}

TEST_F(DiffCommand, AFullDiskIsTrouble) {
    EXPECT_EQ(shell("$T diff base.json new.json > /dev/full").status, "2");
}

} // namespace
