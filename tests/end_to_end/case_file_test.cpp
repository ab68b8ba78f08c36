// SPDX-License-Identifier: Apache-2.0
#include "case_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::Pair;

const ReportFrame small_frame = {"k: @KERNELS@, m: @MEMTRANSFERS@, @VERSION@\n", "2026.1", "<board/>", "b\n"};

// The section that a package gets if it has none of its own.
const auto board = Pair(".zan.board_spec.xml", "<board/>");

TestCase parse(const std::string& text) {
    return parse_case("# Title\n" + text, small_frame);
}

// What parse_case says is wrong; empty if it takes the text.
std::string fault(const std::string& text) {
    try {
        parse_case(text, small_frame);
        return "";
    } catch (const std::runtime_error& error) {
        return error.what();
    }
}

TEST(CaseFile, ATitleAloneExpectsNothing) {
    const TestCase test = parse_case("# One\n# two\n", small_frame);
    EXPECT_EQ(test.title, "One\ntwo\n");
    EXPECT_FALSE(test.package);
    EXPECT_TRUE(test.inputs.empty());
    EXPECT_THAT(test.arguments, ElementsAre("design.zanx", "profile.mon", "report.json"));
    EXPECT_EQ(test.out + test.err, "");
    EXPECT_EQ(test.status, "0");
    EXPECT_FALSE(test.report);
}

TEST(CaseFile, SectionsMakeThePackageInTheirOrder) {
    const TestCase test = parse("--- section b\none\ntwo\n--- section a\n");
    ASSERT_TRUE(test.package);
    EXPECT_THAT(*test.package, ElementsAre(Pair("b", "one\ntwo\n"), Pair("a", ""), board));
}

TEST(CaseFile, AnEmptyPackageIsAPackage) {
    const TestCase test = parse("--- empty package\n");
    ASSERT_TRUE(test.package);
    EXPECT_TRUE(test.package->empty());
}

TEST(CaseFile, ThePlainPackageHasAVersionAndAClock) {
    const TestCase test = parse("--- plain package\n");
    ASSERT_TRUE(test.package);
    EXPECT_THAT(*test.package, ElementsAre(Pair(".zan.version", "1.0\n"),
                                           Pair(".zan.velmora_report", "Actual clock freq: 100.0\n"), board));
}

TEST(CaseFile, InputsHaveAKindANameAndBytes) {
    const TestCase test = parse("--- mon\n1\n--- file x y\n2\n--- folder f\n--- pipe p\n3\n--- link l\nx\n");
    ASSERT_EQ(test.inputs.size(), 5u);
    EXPECT_EQ(test.inputs[0].name, "profile.mon");
    EXPECT_EQ(test.inputs[0].kind, CaseInput::file);
    EXPECT_EQ(test.inputs[0].bytes, "1\n");
    EXPECT_EQ(test.inputs[1].name, "x y");
    EXPECT_EQ(test.inputs[1].kind, CaseInput::file);
    EXPECT_EQ(test.inputs[2].kind, CaseInput::folder);
    EXPECT_EQ(test.inputs[3].kind, CaseInput::pipe);
    EXPECT_EQ(test.inputs[3].bytes, "3\n");
    EXPECT_EQ(test.inputs[4].kind, CaseInput::link);
    EXPECT_EQ(test.inputs[4].bytes, "x");
}

TEST(CaseFile, ArgumentsAreLinesAndMayBeNone) {
    EXPECT_THAT(parse("--- args\na b\n\nc\n").arguments, ElementsAre("a b", "", "c"));
    EXPECT_THAT(parse("--- args\n").arguments, ElementsAre());
}

TEST(CaseFile, ExpectationsKeepTheirBytes) {
    const TestCase test =
        parse("--- stdout\no\n--- stderr\n\ne\n--- status\nsignal\n--- report\n{@VERSION@}\n");
    EXPECT_EQ(test.out, "o\n");
    EXPECT_EQ(test.err, "\ne\n");
    EXPECT_EQ(test.status, "signal");
    EXPECT_EQ(test.report, "{2026.1}\n");
}

TEST(CaseFile, AFinalNewlineCanBeLeftOut) {
    EXPECT_EQ(parse("--- stdout (no final newline)\na\nb\n").out, "a\nb");
    EXPECT_EQ(parse("--- stdout (no final newline)\na\n\n").out, "a\n");
}

TEST(CaseFile, EscapesAreReadOnlyWhereAsked) {
    EXPECT_EQ(parse("--- stdout\na\\r\n").out, "a\\r\n");
    EXPECT_EQ(parse("--- stdout (escapes)\na\\r\\t\\n\\\\\\x2d\\xff\n").out, "a\r\t\n\\-\xff\n");
    EXPECT_EQ(parse("--- stdout (escapes, no final newline)\n\\0\n").out, std::string(1, '\0'));
}

TEST(CaseFile, TheFrameTakesTheNodesOfItsArrays) {
    EXPECT_EQ(parse("--- kernels\n            {\n").report,
              "k:\n        [\n            {\n        ], m: \"\", 2026.1\n");
    EXPECT_EQ(parse("--- memtransfers\nx\n").report, "k: \"\", m:\n        [\nx\n        ], 2026.1\n");
    EXPECT_EQ(parse("--- kernels\n").report, "k: \"\", m: \"\", 2026.1\n");
}

TEST(CaseFile, PackagesWithSectionsHaveABoard) {
    EXPECT_THAT(*parse("--- section s\nx\n").package, ElementsAre(Pair("s", "x\n"), board));
    EXPECT_THAT(parse("--- plain package\n").package->back(), board);
    EXPECT_THAT(*parse("--- empty package\n").package, ElementsAre());
    EXPECT_THAT(*parse("--- section s\nx\n--- no board\n").package, ElementsAre(Pair("s", "x\n")));
    EXPECT_THAT(*parse("--- section .zan.board_spec.xml\nx\n").package,
                ElementsAre(Pair(".zan.board_spec.xml", "x\n")));
    EXPECT_EQ(parse("--- report\nb: @BOARDS@\n").report, "b:\n        [\nb\n        ]\n");
}

TEST(CaseFile, FaultsNameTheirLine) {
    EXPECT_EQ(fault("--- mon\n"), "line 1: a case starts with a title, \"# \" and what it shows");
    EXPECT_EQ(fault("# t\nmon\n"), "line 2: only lines with \"# \" may stand ahead of the first part");
    EXPECT_EQ(fault("# t\n--- mno\n"), "line 2: unknown part 'mno'");
    EXPECT_EQ(fault("# t\n--- section\n"), "line 2: unknown part 'section'");
    EXPECT_EQ(fault("# t\n--- mon\n1\n--- mon\n2\n"), "line 4: there are two parts 'mon'");
    EXPECT_EQ(fault("# t\n--- mon (escape)\n"), "line 2: unknown option (escape)");
    EXPECT_EQ(fault("# t\n--- mon (escapes)\n\\q\n"), "line 2: unknown escape \\q");
    EXPECT_EQ(fault("# t\n--- mon (escapes)\na\\\n"), "line 2: unknown escape \\\n");
    EXPECT_EQ(fault("# t\n--- mon (escapes)\n\\xZZ\n"),
              "line 2: an escape \\x takes two digits of 0123456789abcdef");
    EXPECT_EQ(fault("# t\n--- mon (no final newline)\n"), "line 2: there is no final newline to leave out");
    EXPECT_EQ(fault("# t\n--- status\n0\n1\n"), "line 2: 'status' takes one line");
    EXPECT_EQ(fault("# t\n--- plain package\n\n"), "line 2: 'plain package' takes no lines");
    EXPECT_EQ(fault("# t\n--- empty package\n\n"), "line 2: 'empty package' takes no lines");
    EXPECT_EQ(fault("# t\n--- folder f\nx\n"), "line 2: 'folder f' takes no lines");
    EXPECT_EQ(fault("# t\n--- mon\n1"), "the file's last line has no newline");
    EXPECT_EQ(fault("# t\n--- kernels\n--- report\n"),
              "'report' leaves no room for 'kernels' and 'memtransfers'");
}

TEST(CaseFile, ReplacingDoesNotLookAtWhatItPutIn) {
    EXPECT_EQ(replaced("aXbX", "X", "XX"), "aXXbXX");
    EXPECT_EQ(replaced("none", "X", "y"), "none");
}

} // namespace
