// SPDX-License-Identifier: Apache-2.0
#include "pyramid.h"

#include <cmath>
#include <vector>

#include "gtest/gtest.h"

using namespace zan::profile;

TEST(Pyramid, HasAnEntryForEach256Values) {
    Pyramid pyramid;
    for (int i = 0; i < 300; ++i)
        pyramid.add(i, 2.0 * i, 2.0);
    pyramid.finish();
    EXPECT_EQ(pyramid.size(), 300u);
    EXPECT_EQ(pyramid.least(), (std::vector<double>{0, 256}));
    EXPECT_EQ(pyramid.range(), (std::vector<double>{255, 43}));
    // 2 · (0 + ... + 255) = 255 · 256; 2 · (256 + ... + 299) = 44 · 555.
    EXPECT_EQ(pyramid.sums(), (std::vector<double>{65280, 24420}));
    EXPECT_EQ(pyramid.weights(), (std::vector<double>{512, 88}));
    EXPECT_TRUE(pyramid.all_count());
}

TEST(Pyramid, LeavesOutWhatDoesNotCount) {
    Pyramid pyramid;
    pyramid.add(5, 5, 1);
    pyramid.add(std::nan(""), 100, 1);
    pyramid.add(7, 7, 1);
    pyramid.finish();
    EXPECT_EQ(pyramid.least(), std::vector<double>{5});
    EXPECT_EQ(pyramid.range(), std::vector<double>{2});
    EXPECT_EQ(pyramid.sums(), std::vector<double>{12});
    EXPECT_EQ(pyramid.weights(), std::vector<double>{2});
    EXPECT_FALSE(pyramid.all_count());
}

TEST(Pyramid, AnEntryWithoutValuesRepeatsTheLeastBeforeIt) {
    Pyramid pyramid;
    pyramid.fill_up_to(256);
    for (int i = 0; i < 256; ++i)
        pyramid.add(9, 9, 1);
    pyramid.fill_up_to(513);
    pyramid.finish();
    EXPECT_EQ(pyramid.least(), (std::vector<double>{0, 9, 9}));
    EXPECT_EQ(pyramid.range(), (std::vector<double>{0, 0, 0}));
    EXPECT_EQ(pyramid.weights(), (std::vector<double>{0, 256, 0}));
}

TEST(Pyramid, AnOffsetMovesWhatIsShownAndTheSums) {
    Pyramid pyramid;
    pyramid.add(1.0, 1.0, 1.0);
    pyramid.add(4.0, 4.0, 1.0);
    pyramid.finish();
    pyramid.shift(10.0);
    EXPECT_EQ(pyramid.least(), std::vector<double>{11.0});
    EXPECT_EQ(pyramid.range(), std::vector<double>{3.0});
    EXPECT_EQ(pyramid.sums(), std::vector<double>{25.0}); // 11 + 14
}

TEST(Pyramid, JoinedSamplesHaveARange) {
    Pyramid pyramid;
    pyramid.add_range(2.0, 9.0, 20.0, 4.0);
    pyramid.add_range(3.0, 5.0, 8.0, 2.0);
    pyramid.finish();
    EXPECT_EQ(pyramid.least(), std::vector<double>{2.0});
    EXPECT_EQ(pyramid.range(), std::vector<double>{7.0});
    EXPECT_EQ(pyramid.sums(), std::vector<double>{28.0});
    EXPECT_EQ(pyramid.weights(), std::vector<double>{6.0});
}
