// SPDX-License-Identifier: Apache-2.0
#include "matching.h"

#include <gtest/gtest.h>

using namespace zan::profile;

namespace {

using Names = std::vector<std::string>;
using Key = std::function<std::string(const std::string&)>;

// "old-new" for each pair.
Names pairs_of(const Names& before, const Names& after, const std::vector<Key>& keys) {
    Names pairs;
    for (const auto& [old_item, new_item] : match_items<std::string>(before, after, keys))
        pairs.push_back((old_item ? *old_item : "") + "-" + (new_item ? *new_item : ""));
    return pairs;
}

const Key whole = [](const std::string& text) { return text; };
const Key first = [](const std::string& text) { return text.substr(0, 1); };

TEST(Matching, TheNewOrderComesFirstThenWhatOnlyTheOldListHas) {
    EXPECT_EQ(pairs_of({"a", "b", "c", "d"}, {"c", "x", "a"}, {whole}),
              (Names{"c-c", "-x", "a-a", "b-", "d-"}));
}

TEST(Matching, EqualKeysAreMatchedInTheirOrder) {
    EXPECT_EQ(pairs_of({"a1", "a2", "a3"}, {"a7", "a8"}, {first}), (Names{"a1-a7", "a2-a8", "a3-"}));
}

TEST(Matching, ALaterKeyOnlyMatchesTheRest) {
    EXPECT_EQ(pairs_of({"a1", "a2"}, {"a0", "a1"}, {whole, first}), (Names{"a2-a0", "a1-a1"}));
}

TEST(Matching, AnEmptyKeyMatchesNothing) {
    EXPECT_EQ(pairs_of({"", "a"}, {"", "a"}, {first}), (Names{"-", "a-a", "-"}));
}

TEST(Matching, EmptyListsHaveNoPairs) {
    EXPECT_EQ(pairs_of({}, {}, {whole}), Names{});
}

} // namespace
