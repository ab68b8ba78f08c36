// SPDX-License-Identifier: Apache-2.0
#include "invocations.h"

#include <gtest/gtest.h>

#include <random>

using namespace zan::profile;

namespace {

TEST(Invocations, OfOneStartAreOne) {
    Invocations invocations;
    invocations.begun_at(100).end = 200;
    invocations.begun_at(300).end = 400;
    EXPECT_EQ(invocations.begun_at(100).end, 200);
    invocations.begun_at(100).end = 250;
    EXPECT_EQ(invocations.spans(), (std::vector<TimeSpan>{{100, 250}, {300, 400}}));
}

TEST(Invocations, BeginWhereTheyEndUntilTheyHaveSamples) {
    Invocations invocations;
    EXPECT_EQ(invocations.begun_at(-5), (TimeSpan{-5, -5}));
}

TEST(Invocations, AreFoundAmongMany) {
    Invocations invocations;
    std::vector<std::int64_t> starts;
    for (std::int64_t i = 0; i < 5000; ++i)
        starts.push_back((i - 2500) * 1'000'000'007);
    std::shuffle(starts.begin(), starts.end(), std::mt19937(1));
    for (const std::int64_t start : starts)
        invocations.begun_at(start).end = start + 3;
    for (const std::int64_t start : starts)
        EXPECT_EQ(invocations.begun_at(start), (TimeSpan{start, start + 3}));
    EXPECT_EQ(invocations.size(), 5000U);
}

} // namespace
