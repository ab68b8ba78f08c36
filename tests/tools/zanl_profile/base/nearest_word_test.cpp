// SPDX-License-Identifier: Apache-2.0
#include "nearest_word.h"

#include <gtest/gtest.h>

namespace {

using zan::tool::did_you_mean;
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

// Each is within two letters in one way alone: a swap after equal letters, a letter that was dropped and one
// that was added, two that were changed, two swaps apart from each other.
TEST(NearestWord, MisspellingsInsideOfAWordAreFound) {
    EXPECT_EQ(nearest_word("kenrel_time", {"kernel_time"}), "kernel_time");
    EXPECT_EQ(nearest_word("bandwdithh", {"bandwidth"}), "bandwidth");
    EXPECT_EQ(nearest_word("stalpercentx", {"stallpercent"}), "stallpercent");
    EXPECT_EQ(nearest_word("ocxupancz", {"occupancy"}), "occupancy");
    EXPECT_EQ(nearest_word("ocxupanzz", {"occupancy"}), "");     // three were changed
    EXPECT_EQ(nearest_word("inovactiosn", {"invocations"}), ""); // three swaps
    EXPECT_EQ(nearest_word("inovactions", {"invocations"}), "invocations");
}

// A swap counts as one: "abdc" is nearer to "abcd" than to a word with two other letters.
TEST(NearestWord, ASwapIsOneStep) {
    EXPECT_EQ(nearest_word("abdc", {"abxy", "abcd"}), "abcd");
    EXPECT_EQ(nearest_word("xabdc", {"abcd"}), "abcd"); // a letter too many, and a swap
    EXPECT_EQ(nearest_word("xabdcy", {"abcd"}), "");
}

// Two letters that are a pair's but for one of them are no swap: "xa" is two steps from "ab", and with the
// last letter that makes three.
TEST(NearestWord, HalfASwapIsNone) {
    EXPECT_EQ(nearest_word("xacdez", {"abcdef"}), "");
    EXPECT_EQ(nearest_word("bxcdez", {"abcdef"}), "");
    EXPECT_EQ(nearest_word("bacdez", {"abcdef"}), "abcdef");
}

TEST(NearestWord, TwoLettersTooManyOrTooFewAreNear) {
    EXPECT_EQ(nearest_word("updatexy", {"update"}), "update");
    EXPECT_EQ(nearest_word("xyupdate", {"update"}), "update");
    EXPECT_EQ(nearest_word("upda", {"update"}), "update");
}

TEST(NearestWord, LongWordsTakeLittleTime) {
    const std::string a(1 << 18, 'a'), b = std::string(1 << 17, 'a') + "b" + std::string((1 << 17) - 1, 'a');
    EXPECT_EQ(nearest_word(a, std::vector<std::string>(4, b)), b);
}

TEST(NearestWord, AMessageEndsWithTheSuggestion) {
    EXPECT_EQ(did_you_mean("lsit", {"list"}), "; did you mean 'list'?");
    EXPECT_EQ(did_you_mean("a\n", {"a\nb"}), "; did you mean 'a⟨U+000A⟩b'?");
    EXPECT_EQ(did_you_mean("lsit", {"unpack"}), "");
}

// "ab" is two letters away from any word of two letters.
TEST(NearestWord, AWordOfWhichNoLetterIsLeftIsNotNear) {
    EXPECT_EQ(nearest_word("ab", {"xy"}), "");
    EXPECT_EQ(nearest_word("ab", {"xb"}), "xb");
    EXPECT_EQ(nearest_word("a", {"b"}), "");
}

} // namespace
