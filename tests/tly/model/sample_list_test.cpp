// SPDX-License-Identifier: Apache-2.0
#include "sample_list.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

using List = SampleList<long long>;
using Values = std::vector<long long>;

TEST(SampleList, HoldsWhatWasPushed) {
    List list;
    EXPECT_TRUE(list.empty());
    for (const long long value : {0, 0, 3, 0, -1, 0})
        list.push_back(value);
    EXPECT_EQ(list.size(), 6u);
    EXPECT_EQ(list.to_vector(), (Values{0, 0, 3, 0, -1, 0}));
    EXPECT_EQ(list[2], 3);
    EXPECT_EQ(list[5], 0);
    EXPECT_EQ(list.back(), 0);
}

TEST(SampleList, ZerosAtTheEndAreNotStored) {
    EXPECT_TRUE((List{0, 0, 0}).stored().empty());
    EXPECT_EQ((List{1, 0, 2, 0, 0}).stored().size(), 3u);
}

TEST(SampleList, ANegativeZeroIsNoZero) {
    const SampleList<float> list{-0.0f, 0.0f};
    EXPECT_EQ(list.stored().size(), 1u);
    EXPECT_TRUE(std::signbit(list[0]));
    EXPECT_FALSE(std::signbit(list[1]));
}

TEST(SampleList, AppendingToTheOriginalLeavesACopyAlone) {
    List list{1, 2};
    const List copy = list;
    list.push_back(3);
    list.push_back(0);
    list.push_back(4);
    EXPECT_EQ(copy.to_vector(), (Values{1, 2}));
    EXPECT_EQ(list.to_vector(), (Values{1, 2, 3, 0, 4}));
}

TEST(SampleList, AppendingToACopyLeavesTheOriginalAlone) {
    List list{1, 0};
    List copy = list;
    copy.push_back(7);
    list.push_back(0);
    list.push_back(8);
    EXPECT_EQ(copy.to_vector(), (Values{1, 0, 7}));
    EXPECT_EQ(list.to_vector(), (Values{1, 0, 0, 8}));
}

TEST(SampleList, CopiesShareTheirStorage) {
    const List list{1, 2, 3};
    const List copy = list;
    EXPECT_EQ(copy.stored().storage(), list.stored().storage());
    EXPECT_EQ(list.first(2).stored().storage(), list.stored().storage());
}

TEST(SampleList, FirstValuesCanBeAppendedTo) {
    const List list{1, 2, 3};
    List front = list.first(2);
    EXPECT_EQ(front.to_vector(), (Values{1, 2}));
    front.push_back(9);
    EXPECT_EQ(front.to_vector(), (Values{1, 2, 9}));
    EXPECT_EQ(list.to_vector(), (Values{1, 2, 3}));
    EXPECT_EQ((List{1, 0, 0}).first(2).to_vector(), (Values{1, 0}));
}

TEST(SampleList, TheLastValueCanBeReplaced) {
    List list{1, 2};
    const List copy = list;
    list.set_back(5);
    EXPECT_EQ(list.to_vector(), (Values{1, 5}));
    list.set_back(0);
    EXPECT_EQ(list.to_vector(), (Values{1, 0}));
    list.set_back(6);
    EXPECT_EQ(list.to_vector(), (Values{1, 6}));
    EXPECT_EQ(copy.to_vector(), (Values{1, 2}));
}

TEST(SampleList, ClearingLeavesCopiesAlone) {
    List list{1, 2};
    const List copy = list;
    list.clear();
    EXPECT_TRUE(list.empty());
    list.push_back(9);
    EXPECT_EQ(list.to_vector(), (Values{9}));
    EXPECT_EQ(copy.to_vector(), (Values{1, 2}));
}

// Many lists that are copies of each other, changed in any order, against as many vectors.
TEST(SampleList, BehavesLikeAVectorWhateverSharesItsStorage) {
    std::mt19937 random(3);
    std::vector<List> lists(4);
    std::vector<Values> vectors(4);
    for (int step = 0; step < 100000; ++step) {
        const std::size_t to = random() % 4;
        const std::size_t from = random() % 4;
        const auto value = static_cast<long long>(random() % 3);
        switch (random() % 12) {
            case 0:
                lists[to] = lists[from];
                vectors[to] = vectors[from];
                break;
            case 1:
                lists[to].clear();
                vectors[to].clear();
                break;
            case 2:
                vectors[to].resize(vectors[to].size() / 2);
                lists[to] = lists[to].first(vectors[to].size());
                break;
            case 3:
                if (!vectors[to].empty()) {
                    lists[to].set_back(value);
                    vectors[to].back() = value;
                }
                break;
            default:
                lists[to].push_back(value);
                vectors[to].push_back(value);
        }
        for (std::size_t i = 0; i < 4; ++i)
            ASSERT_EQ(lists[i].to_vector(), vectors[i]) << "list " << i << " at step " << step;
    }
}

} // namespace
