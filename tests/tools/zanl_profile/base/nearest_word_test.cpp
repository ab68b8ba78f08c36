#include "nearest_word.h"

#include <gtest/gtest.h>

namespace {

using zan::tool::nearest_word;

TEST(NearestWord, CountsLettersToAddDropChangeOrSwap) {
    const std::vector<std::string> words = {"list", "show", "update"};
    EXPECT_EQ(nearest_word("lst", words), "list");
    EXPECT_EQ(nearest_word("llist", words), "list");
    EXPECT_EQ(nearest_word("lost", words), "list");
    EXPECT_EQ(nearest_word("lsit", words), "list");
    EXPECT_EQ(nearest_word("upd", words), ""); // three letters away
    EXPECT_EQ(nearest_word("", words), "");
    EXPECT_EQ(nearest_word("list", {}), "");
}

TEST(NearestWord, TwoLettersAreNearEnough) {
    EXPECT_EQ(nearest_word("pdat", {"update"}), "update");
    EXPECT_EQ(nearest_word("pda", {"update"}), "");
    EXPECT_EQ(nearest_word("pudaet", {"update"}), "update"); // two pairs are swapped
    EXPECT_EQ(nearest_word("upxxxe", {"update"}), "");
}

TEST(NearestWord, TheNearestOneIsFoundAndTheFirstOfSeveral) {
    EXPECT_EQ(nearest_word("packs", {"unpack", "pack"}), "pack");
    EXPECT_EQ(nearest_word("cat", {"bat", "hat"}), "bat");
}

// "ab" is two letters away from any word of two letters.
TEST(NearestWord, AWordOfWhichNoLetterIsLeftIsNotNear) {
    EXPECT_EQ(nearest_word("ab", {"xy"}), "");
    EXPECT_EQ(nearest_word("ab", {"xb"}), "xb");
    EXPECT_EQ(nearest_word("a", {"b"}), "");
}

} // namespace
