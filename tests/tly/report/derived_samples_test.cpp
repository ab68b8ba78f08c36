// SPDX-License-Identifier: Apache-2.0
// Values that are worked out one after the other, as an array.
#include "derived_samples.h"

#include <gtest/gtest.h>

#include "tree_sink.h"

namespace {

// Some values are kept in place, more of them in a list.
TEST(DerivedSamples, AnyNumberOfValuesIsOneArray) {
    for (const std::size_t count : {1u, 63u, 64u, 65u, 128u, 1000u}) {
        DerivedSamples samples;
        std::vector<float> values;
        for (std::size_t i = 0; i < count; ++i) {
            values.push_back(static_cast<float>(i) / 4.0f);
            samples.push_back(values.back());
        }
        EXPECT_FALSE(samples.empty());
        ptree node;
        TreeSink sink(node);
        samples.append_to(sink, "key");
        ASSERT_EQ(node.size(), 1u);
        EXPECT_TRUE(expanded(node.get_child("key")) == expanded(createJSONArray(values))) << count;
    }
}

TEST(DerivedSamples, NoneAppendNothing) {
    DerivedSamples samples;
    EXPECT_TRUE(samples.empty());
    ptree node;
    TreeSink sink(node);
    samples.append_to(sink, "key");
    EXPECT_TRUE(node.empty());
}

} // namespace
