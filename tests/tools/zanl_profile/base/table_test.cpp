// SPDX-License-Identifier: Apache-2.0
#include "table.h"

#include <gtest/gtest.h>

namespace {

using namespace zan::tool;

Table two_columns() {
    return Table({{"NAME"}, {"SIZE", Align::right}});
}

TEST(TableTest, ColumnsAreAsWideAsTheirTexts) {
    Table table = two_columns();
    table.add_row({{"a"}, {"12345"}});
    table.add_row({{"longer"}, {"7"}});
    EXPECT_EQ(table.text({}),
              "NAME     SIZE\n"
              "a       12345\n"
              "longer      7\n");
}

TEST(TableTest, NoLineEndsInBlanks) {
    Table table({{"A"}, {"B"}, {"C", Align::right}});
    table.add_row({{"1"}});
    table.add_row({{""}, {"wide"}, {""}});
    EXPECT_EQ(table.text({}),
              "A  B     C\n"
              "1\n"
              "   wide\n");
}

TEST(TableTest, AnEmptyTableHasItsHeading) {
    EXPECT_TRUE(two_columns().empty());
    EXPECT_EQ(two_columns().text({}), "NAME  SIZE\n");
}

// Wide characters take two columns; what is hidden is shown.
TEST(TableTest, TextsAreMadePrintableAndCountAsATerminalShowsThem) {
    Table table({{"N"}, {"M"}});
    table.add_row({{"帯"}, {"x"}});
    table.add_row({{"a\n"}, {"y"}});
    EXPECT_EQ(table.text({}),
              "N          M\n"
              "帯         x\n"
              "a⟨U+000A⟩  y\n");
}

// 8 + 2 + 6 columns; at 12 the first has to give up four of which the widest gives most: 8 -> 5, 6 -> 5.
TEST(TableTest, TheWidestColumnsAreCutFirst) {
    Table table({{"A", Align::left, 3}, {"B", Align::left, 3}});
    table.add_row({{"abcdefgh"}, {"123456"}});
    EXPECT_EQ(table.text({.width = 16}), "A         B\nabcdefgh  123456\n");
    EXPECT_EQ(table.text({.width = 12}), "A      B\nabcd…  1234…\n");
    EXPECT_EQ(table.text({.width = 1}), "A    B\nab…  12…\n"); // not below their least
}

TEST(TableTest, AColumnThatIsNotCutStaysWhole) {
    Table table({{"A"}, {"B", Align::left, 2}});
    table.add_row({{"abcdefgh"}, {"123456"}});
    EXPECT_EQ(table.text({.width = 12}), "A         B\nabcdefgh  1…\n");
}

TEST(TableTest, SentencesStandBelowTheirRow) {
    Table table = two_columns();
    table.add_row({{"a"}, {"1"}});
    table.add_sentence("one two three");
    table.add_sentence("four");
    table.add_row({{"b"}, {"2"}});
    EXPECT_EQ(table.text({.width = 10}),
              "NAME  SIZE\n"
              "a        1\n"
              "  one two\n"
              "  three\n"
              "  four\n"
              "b        2\n");
}

// Blanks around a text have no color.
TEST(TableTest, CellsHaveColors) {
    Table table = two_columns();
    table.add_row({{"ab", Style::bad}, {"1", Style::good}});
    table.add_sentence("why", Style::faint);
    EXPECT_EQ(table.text({.colors = true}),
              "\x1b[1mNAME\x1b[0m  \x1b[1mSIZE\x1b[0m\n"
              "\x1b[31mab\x1b[0m       \x1b[32m1\x1b[0m\n"
              "\x1b[2m  why\x1b[0m\n");
    EXPECT_EQ(styled("x", Style::warning, true), "\x1b[33mx\x1b[0m");
    EXPECT_EQ(styled("x", Style::warning, false), "x");
    EXPECT_EQ(styled("", Style::warning, true), "");
    EXPECT_EQ(styled("x", Style::plain, true), "x");
}

TEST(Wrapped, LinesBreakBetweenWords) {
    EXPECT_EQ(wrapped("aa bb cc", 5, 0), "aa bb\ncc");
    EXPECT_EQ(wrapped("aa bb cc", 0, 1), " aa bb cc");
    EXPECT_EQ(wrapped("aa bbbbbbbb cc", 5, 1), " aa\n bbbbbbbb\n cc"); // a long word stays whole
    EXPECT_EQ(wrapped("帯域 帯", 7, 0), "帯域 帯");
    EXPECT_EQ(wrapped("帯域 帯", 6, 0), "帯域\n帯");
    EXPECT_EQ(wrapped("", 5, 2), "");
}

} // namespace
