// SPDX-License-Identifier: Apache-2.0
#include "report_tree.h"

#include <gtest/gtest.h>

#include <limits>

#include "tly_constants.h"

namespace {

std::vector<std::string> texts_of(const ptree& array) {
    std::vector<std::string> texts;
    for (const auto& [key, element] : expanded(array)) {
        EXPECT_EQ(key, "");
        EXPECT_TRUE(element.empty());
        texts.push_back(element.data());
    }
    return texts;
}

using Texts = std::vector<std::string>;

TEST(ReportTree, PutWritesEachTypeInItsForm) {
    ptree node;
    node.put("text", std::string("kernel"));
    node.put("literal", "runinfo");
    node.put("int", -1);
    node.put("unsigned", 4294967295u);
    node.put("unsigned_long", 5ul);
    node.put("long_long", std::numeric_limits<long long>::min());
    node.put("enum", SHARED_NONE);
    node.put("yes", true);
    node.put("no", false);
    node.put("float", 12.5f);
    EXPECT_EQ(node.get<std::string>("text"), "kernel");
    EXPECT_EQ(node.get<std::string>("literal"), "runinfo");
    EXPECT_EQ(node.get<std::string>("int"), "-1");
    EXPECT_EQ(node.get<std::string>("unsigned"), "4294967295");
    EXPECT_EQ(node.get<std::string>("unsigned_long"), "5");
    EXPECT_EQ(node.get<std::string>("long_long"), "-9223372036854775808");
    EXPECT_EQ(node.get<std::string>("enum"), "-1");
    EXPECT_EQ(node.get<std::string>("yes"), "true");
    EXPECT_EQ(node.get<std::string>("no"), "false");
    EXPECT_EQ(node.get<std::string>("float"), "12.5");
}

TEST(ReportTree, PutReplacesAKeyInPlaceAndMakesPaths) {
    ptree node;
    node.put("a", 1);
    node.put("b.c", 2);
    node.put("a", 3);
    EXPECT_EQ(node.size(), 2u);
    EXPECT_EQ(node.front().first, "a");
    EXPECT_EQ(node.get<int>("a"), 3);
    EXPECT_EQ(node.get<int>("b.c"), 2);
}

TEST(ReportTree, NumbersAreReadBackAsBoostReadsThemFromText) {
    ptree node;
    node.put("fmax", "240.5");
    node.put("unit", "240.5 MHz");
    EXPECT_EQ(node.get_optional<float>("fmax"), 240.5f);
    EXPECT_FALSE(node.get_optional<float>("unit"));
    EXPECT_FALSE(node.get_optional<float>("missing"));
}

TEST(ReportTree, FloatsHaveSevenSignificantDigits) {
    const float infinity = std::numeric_limits<float>::infinity();
    const std::pair<float, const char*> rows[] = {
        {0.1f, "0.1"},
        {1234567.0f, "1234567"},
        {12345678.0f, "1.234568e+07"},
        {0.0f, "0"},
        {-0.0f, "-0"},
        {infinity, "inf"},
        {-infinity, "-inf"},
        {0.00001f, "1e-05"},
        {16777216.0f, "1.677722e+07"}, // 2^24
        {std::numeric_limits<float>::max(), "3.402823e+38"},
        {std::numeric_limits<float>::denorm_min(), "1.401298e-45"}, // 2^-149
        {1.0f / 3.0f, "0.3333333"},
    };
    for (const auto& [value, text] : rows)
        EXPECT_EQ(report_text(value), text);
}

TEST(ReportTree, NanIsWrittenWithItsSign) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(report_text(nan), "nan");
    EXPECT_EQ(report_text(-nan), "-nan");
}

TEST(ReportTree, ArraysHoldTheirValuesInOrder) {
    EXPECT_EQ(texts_of(createJSONArray(std::vector<int>{3, -1, 0})), (Texts{"3", "-1", "0"}));
    EXPECT_EQ(texts_of(createJSONArray(std::vector<long long>{0, 9223372036854775807LL, 0})),
              (Texts{"0", "9223372036854775807", "0"}));
    EXPECT_EQ(texts_of(createJSONArray(std::vector<float>{0.5f, -0.0f, 0.0f})), (Texts{"0.5", "-0", "0"}));
}

TEST(ReportTree, AnEmptyArrayIsAnEmptyNode) {
    const ptree node = createJSONArray(std::vector<long long>());
    EXPECT_TRUE(node.empty());
    EXPECT_FALSE(node.data().is_packed());
    EXPECT_EQ(node.data().text(), "");
    EXPECT_TRUE(expanded(node).empty());
}

TEST(ReportTree, APackedArrayReadsAsAnEmptyText) {
    ptree node;
    node.add_child("samples", createJSONArray(std::vector<int>{1, 2}));
    EXPECT_EQ(node.get<std::string>("samples"), "");
    EXPECT_FALSE(node.get_optional<int>("samples"));
}

TEST(ReportTree, ElementsAfterPackedOnesExtendTheArray) {
    ptree node = createJSONArray(std::vector<int>{1, 2});
    ptree third;
    third.put("", 3);
    node.push_back({"", third});
    EXPECT_EQ(texts_of(node), (Texts{"1", "2", "3"}));
}

TEST(ReportTree, AppendedNodesAreMovedNotCopied) {
    ptree node = getSourceJSON("file", 1, 2, true);
    const ptree* line = &node.get_child("line");
    ptree parent;
    append_node(parent, "", node);
    EXPECT_TRUE(node.empty());
    EXPECT_EQ(&parent.front().second.get_child("line"), line);
}

TEST(ReportTree, DismantleFreesAChainFarDeeperThanTheStack) {
    constexpr int depth = 200000;
    ptree chain;
    for (int i = 0; i < depth; ++i) {
        ptree parent;
        append_node(parent, "callsite", chain);
        chain.swap(parent);
    }
    int levels = 0;
    for (const ptree* node = &chain; !node->empty(); node = &node->front().second)
        ++levels;
    EXPECT_EQ(levels, depth);
    dismantle(chain);
    EXPECT_TRUE(chain.empty());
}

} // namespace
