// SPDX-License-Identifier: Apache-2.0
// `zanl-profile run` as people use it.
#include <fstream>

#include "description.h"
#include "run_fixture_files.h"
#include "tly_constants.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;

constexpr const char* two_good_lines = "0,0,k,0,10,-1,1,5\n0,0,k,0,20,-1,1,5\n";

class RunCommand : public RunFiles {};

TEST_F(RunCommand, WritesTheReportAndTheNumbersOfLines) {
    lay_out(two_good_lines);
    EXPECT_EQ(run({"run", "d.zanx", "p.mon", "r.json"}),
              (Outcome{"", "2 lines read, 2 used, 0 left out\n", "0"}));
    EXPECT_THAT(read("r.json"), HasSubstr("\"sample_timestamps\":\n"));
    // The same to standard output, and in silence.
    EXPECT_EQ(run({"run", "-q", "d.zanx", "p.mon", "-"}), (Outcome{read("r.json"), "", "0"}));
    EXPECT_EQ(shell("$T run -q - p.mon - < d.zanx"), (Outcome{read("r.json"), "", "0"}));
    EXPECT_EQ(shell("cat d.zanx | $T run -q - p.mon -"), (Outcome{read("r.json"), "", "0"}));
    EXPECT_EQ(shell("cat p.mon | $T run -q d.zanx - -"), (Outcome{read("r.json"), "", "0"}));
    EXPECT_EQ(shell("$T run -q d.zanx p.mon - | cat"), (Outcome{read("r.json"), "", "0"}));
    EXPECT_EQ(shell("TMPDIR=none $T run -q d.zanx p.mon -"),
              trouble("can't make a temporary file: No such file or directory"));
}

TEST_F(RunCommand, ReportsFaultsWithTheirLines) {
    lay_out(std::string(two_good_lines) + "0,0,other,0,10,-1,1,5\n\n");
    EXPECT_EQ(run({"run", "d.zanx", "p.mon", "r.json"}),
              (Outcome{"",
                       "p.mon:3: the design has no kernel other\n"
                       "    0,0,other,0,10,-1,1,5\n"
                       "p.mon:4: the line is empty\n"
                       "4 lines read, 2 used, 2 left out: 1 empty-line, 1 unknown-kernel\n",
                       "0"}));
}

TEST_F(RunCommand, OfManyFaultsOfAKindItShowsTheFirstFive) {
    std::string text = two_good_lines;
    for (int i = 0; i < 1205; ++i)
        text += "1,2,3\n";
    lay_out(text);
    const Outcome outcome = run({"run", "d.zanx", "p.mon", "r.json"});
    EXPECT_THAT(outcome.err,
                HasSubstr("p.mon:7: the line has digits and commas alone, so it names no kernel\n"));
    EXPECT_EQ(outcome.err.find("p.mon:8:"), std::string::npos);
    EXPECT_THAT(outcome.err, EndsWith("1,200 more of the kind nameless-line\n"
                                      "1,207 lines read, 2 used, 1,205 left out: 1,205 nameless-line\n"));
    EXPECT_EQ(outcome.status, "0");
}

TEST_F(RunCommand, StrictWritesNoReportIfALineIsLeftOut) {
    lay_out(std::string(two_good_lines) + "\n");
    write("r.json", "old");
    EXPECT_EQ(run({"run", "--strict", "-q", "d.zanx", "p.mon", "r.json"}),
              not_found("no report is written: lines of the capture were left out"));
    EXPECT_EQ(read("r.json"), "old");
    EXPECT_EQ(run({"run", "--strict", "-q", "d.zanx", "p.mon", "-"}).out, "");
    write("p.mon", two_good_lines);
    EXPECT_EQ(run({"run", "--strict", "-q", "d.zanx", "p.mon", "r.json"}), silent_success);
}

TEST_F(RunCommand, AFaultThatEndsTheRunIsItsFailure) {
    lay_out(two_good_lines);
    make("d.zanx",
         {{".zan.version", "1.0\n"}, {".zan.board_spec.xml", "<board version='17.1' name='b' odd='1'/>"}});
    write("r.json", "old");
    const Outcome outcome = run({"run", "-q", "d.zanx", "p.mon", "r.json"});
    EXPECT_EQ(outcome, trouble("d.zanx: .zan.board_spec.xml:1:32: Unexpected attribute 'odd'.\n"
                               "    <board version='17.1' name='b' odd='1'/>\n"
                               "                                   ^"));
    EXPECT_EQ(read("r.json"), "old");
    EXPECT_EQ(run({"run", "none.zanx", "p.mon", "r.json"}),
              trouble("none.zanx: it can't be opened: No such file or directory"));
}

TEST_F(RunCommand, ADescriptionThatIsCutIsNotTakenForNone) {
    lay_out(two_good_lines);
    constexpr std::size_t profiler_section = 3;
    change_header("d.zanx", profiler_section, [](Elf32_Shdr& header) { header.sh_offset = 1 << 20; });
    const Outcome cut = trouble("d.zanx: .zan.profiler.xml: the section's bytes are not in the file");
    EXPECT_EQ(run({"summary", "d.zanx", "p.mon"}), cut);
}

// As the report of zanl-profile-tly does.
TEST_F(RunCommand, TheReportLacksASectionThatIsCut) {
    lay_out(two_good_lines);
    constexpr std::size_t profiler_section = 3;
    change_header("d.zanx", profiler_section, [](Elf32_Shdr& header) { header.sh_offset = 1 << 20; });
    const Outcome cut = run({"run", "d.zanx", "p.mon", "cut.json"});
    EXPECT_THAT(cut.err,
                testing::StartsWith("d.zanx: .zan.profiler.xml: the section's bytes are not in the file\n"));
    EXPECT_EQ(cut.status, "0");
    ASSERT_EQ(run({"package", "remove", "d.zanx", ".zan.profiler.xml"}), silent_success);
    ASSERT_EQ(run({"run", "-q", "d.zanx", "p.mon", "absent.json"}).status, "0");
    EXPECT_EQ(read("cut.json"), read("absent.json"));
}

TEST_F(RunCommand, RefusesAReportThatIsAnInput) {
    lay_out(two_good_lines);
    const std::string package = read("d.zanx");
    EXPECT_EQ(run({"run", "d.zanx", "p.mon", "p.mon"}),
              trouble("the report 'p.mon' is the same file as the capture 'p.mon'"));
    EXPECT_EQ(shell("ln -s d.zanx link; ln d.zanx hard; $T run d.zanx p.mon link"),
              trouble("the report 'link' is the same file as the package 'd.zanx'"));
    EXPECT_EQ(run({"run", "d.zanx", "p.mon", "hard"}),
              trouble("the report 'hard' is the same file as the package 'd.zanx'"));
    EXPECT_EQ(shell("$T run d.zanx p.mon - >> p.mon"),
              trouble("the report '-' is the same file as the capture 'p.mon'"));
    // What isn't a file loses nothing.
    EXPECT_EQ(shell("$T run -q d.zanx - - </dev/null >/dev/null"), silent_success);
    EXPECT_EQ(read("p.mon"), two_good_lines);
    EXPECT_EQ(read("d.zanx"), package);
    EXPECT_EQ(run({"run", "-", "-", "r.json"}),
              trouble("the package and the capture can't both be standard input"));
}

TEST_F(RunCommand, NumbersAreThereAsJson) {
    lay_out("0,0,k,0,10,-1,1,5\n\n1,2,3\n\n");
    EXPECT_EQ(
        run({"run", "-q", "--json", "d.zanx", "p.mon", "r.json"}),
        (Outcome{"{\n"
                 "    \"schema\": \"zanl-profile/run\",\n"
                 "    \"schema_version\": 1,\n"
                 "    \"package\": \"d.zanx\",\n"
                 "    \"capture\": \"p.mon\",\n"
                 "    \"report\": \"r.json\",\n"
                 "    \"lines_read\": 4,\n"
                 "    \"lines_used\": 1,\n"
                 "    \"lines_left_out\": 3,\n"
                 "    \"capture_bytes\": 26,\n"
                 "    \"faults\": [\n"
                 "        {\n"
                 "            \"kind\": \"empty-line\",\n"
                 "            \"leaves_line_out\": true,\n"
                 "            \"count\": 2,\n"
                 "            \"first_lines\": [\n"
                 "                2,\n"
                 "                4\n"
                 "            ],\n"
                 "            \"message\": \"the line is empty\"\n"
                 "        },\n"
                 "        {\n"
                 "            \"kind\": \"nameless-line\",\n"
                 "            \"leaves_line_out\": true,\n"
                 "            \"count\": 1,\n"
                 "            \"first_lines\": [\n"
                 "                3\n"
                 "            ],\n"
                 "            \"message\": \"the line has digits and commas alone, so it names no kernel\"\n"
                 "        }\n"
                 "    ]\n"
                 "}\n",
                 "", "0"}));
    EXPECT_EQ(run({"run", "--json", "d.zanx", "p.mon", "-"}),
              trouble("the report and the JSON of --json can't both go to standard output"));
}

TEST_F(RunCommand, TextsOfFilesAreShownWithoutEffectOnTheTerminal) {
    lay_out(std::string(two_good_lines) + "0,0,\x1b[2J\xff,0,10,-1,1,5\n");
    EXPECT_THAT(run({"run", "d.zanx", "p.mon", "r.json"}).err,
                testing::StartsWith("p.mon:3: the design has no kernel ⟨U+001B⟩[2J\\xFF\n"
                                    "    0,0,⟨U+001B⟩[2J\\xFF,0,10,-1,1,5\n"));
}

} // namespace
