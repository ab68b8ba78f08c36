// SPDX-License-Identifier: Apache-2.0
// Several global memories: overlaps, secondaries and their primaries, and which memories are accessible.
#include "board_document.h"

namespace zan::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string overlap = without_line("Global memory regions overlap.");

TEST(GlobalMems, OverlapsAreRefusedButForOneByte) {
    EXPECT_THAT(errors_of_memories(memory_at("a", "0", "0x1000") + memory_at("b", "0x1000", "0x1000")),
                IsEmpty());
    // The last byte of one is the first of the other, in either order.
    EXPECT_THAT(errors_of_memories(memory_at("a", "0", "0x1001") + memory_at("b", "0x1000", "0x1000")),
                IsEmpty());
    EXPECT_THAT(errors_of_memories(memory_at("a", "0x1000", "0x1000") + memory_at("b", "0", "0x1001")),
                IsEmpty());
    EXPECT_THAT(errors_of_memories(memory_at("a", "0", "0x1002") + memory_at("b", "0x1000", "0x1000")),
                ElementsAre(overlap));
    EXPECT_THAT(errors_of_memories(memory_at("a", "0", "0x2000") + memory_at("b", "0x1000", "0x2000")),
                ElementsAre(overlap));
}

TEST(GlobalMems, ALoadMayDoWithoutTheComparison) {
    const BoardDocument overlapping =
        with_memories(memory_at("a", "0", "0x2000") + memory_at("b", "0x1000", "0x2000"));
    EXPECT_TRUE(load(overlapping.text(), true).model);
    BoardDocument custom = overlapping;
    custom.board = "<board version='14.1' name='custom_ipa'>";
    EXPECT_TRUE(load(custom).model);
}

TEST(GlobalMems, TwoOfOneNameMayStandSideBySide) {
    EXPECT_THAT(errors_of_memories(memory_at("a", "0", "0x1000") + memory_at("a", "0x1000", "0x1000")),
                IsEmpty());
}

TEST(GlobalMems, ASecondaryLiesOnItsPrimary) {
    const std::string primary = memory_at("p", "0", "0x1000", "can_access='s'");
    const std::string secondary = memory_at("s", "0", "0x1000", "primary_interface='p'");
    EXPECT_THAT(errors_of_memories(primary + secondary), IsEmpty());
    EXPECT_THAT(errors_of_memories(secondary + primary), IsEmpty());
}

TEST(GlobalMems, ASecondaryHasTheRangeAndKindOfItsPrimaryAndIsListedThere) {
    const std::string primary = memory_at("p", "0", "0x1000", "can_access='s'");
    const auto of_message = [](const std::string& text) { return ElementsAre(without_line(text)); };
    const auto ranges = of_message("Primary and secondary memory interfaces have different address ranges.");
    EXPECT_THAT(errors_of_memories(primary + memory_at("s", "0", "0x1001", "primary_interface='p'")), ranges);
    EXPECT_THAT(errors_of_memories(memory_at("s", "1", "0xfff", "primary_interface='p'") + primary), ranges);
    EXPECT_THAT(errors_of_memories(
                    primary + memory_at("s", "0", "0x1000", "primary_interface='p' type='shared virtual'")),
                of_message("Primary and secondary memory interfaces have different interface types."));
    EXPECT_THAT(errors_of_memories(memory_at("p", "0", "0x1000", "can_access='p,t'") +
                                   memory_at("s", "0", "0x1000", "primary_interface='p'")),
                of_message("Primary interface must list secondary interface in its \"can_access\" list"));
}

TEST(GlobalMems, APrimaryIsNoSecondary) {
    EXPECT_THAT(errors_of_memories(memory_at("a", "0", "1", "primary_interface='b'") +
                                   memory_at("b", "0", "1", "primary_interface='c'")),
                ElementsAre(without_line("Interface cannot be a primary and a secondary interface.")));
}

TEST(GlobalMems, TwoSecondariesOfOneNameAreRefused) {
    EXPECT_THAT(errors_of_memories(memory_at("a", "0", "1", "primary_interface='p'") +
                                   memory_at("a", "8", "1", "primary_interface='q'")),
                ElementsAre(without_line(
                    "Two secondary memory interfaces to the same primary interface is not allowed.")));
}

TEST(GlobalMems, TwoSecondariesOfOnePrimaryOverlap) {
    EXPECT_THAT(errors_of_memories(memory_at("p", "0", "0x1000", "can_access='s,t'") +
                                   memory_at("s", "0", "0x1000", "primary_interface='p'") +
                                   memory_at("t", "0", "0x1000", "primary_interface='p'")),
                ElementsAre(overlap));
}

TEST(GlobalMems, AMissingPrimaryIsReportedAfterOverlaps) {
    const std::string unknown = without_line("Global memory named in primary_interface does not exist.");
    EXPECT_THAT(errors_of_memories(memory_at("a", "0", "1", "primary_interface='x'")), ElementsAre(unknown));
    EXPECT_THAT(errors_of_memories(memory_at("a", "0", "1", "primary_interface=''")), ElementsAre(unknown));
    EXPECT_THAT(errors_of_memories(memory_at("a", "0", "0x10", "primary_interface='x'") +
                                   memory_at("b", "0", "0x10")),
                ElementsAre(overlap));
}

TEST(GlobalMems, AccessibleMemoriesMustBeThere) {
    EXPECT_THAT(errors_of_memories(memory_at("a", "0", "1", "can_access='a,b'") + memory_at("b", "8", "1")),
                IsEmpty()); // a memory may name itself
    EXPECT_THAT(errors_of_memories(memory_at("a", "0", "1", "can_access='a, b'") + memory_at("b", "8", "1")),
                ElementsAre(without_line(
                    "No valid memory interface matching can_access list entry ' b'."))); // nothing is trimmed
    EXPECT_THAT(errors_of_memories(memory_at("a", "0", "1", "can_access='a,'")), IsEmpty());
    EXPECT_THAT(errors_of_memories(memory_at("a", "0", "1", "can_access=',a'")),
                ElementsAre(without_line("No valid memory interface matching can_access list entry ''.")));
}

TEST(GlobalMems, AccessIsCheckedInAnyLoad) {
    const BoardDocument document = with_memories(memory_at("a", "0", "1", "can_access='x'"));
    const auto unknown =
        ElementsAre(without_line("No valid memory interface matching can_access list entry 'x'."));
    EXPECT_THAT(load(document.text(), true).errors, unknown);
    BoardDocument custom = document;
    custom.board = "<board version='14.1' name='custom_ipa'>";
    EXPECT_THAT(load(custom).errors, unknown);
}

} // namespace
} // namespace zan::test
