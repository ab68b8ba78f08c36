// SPDX-License-Identifier: Apache-2.0
#include "counter_tags.h"

#include <gtest/gtest.h>

#include <set>

namespace {

TEST(CounterTags, EachTextHasOneRow) {
    std::set<std::string_view> texts;
    for (const CounterTag& row : counter_tags) {
        EXPECT_TRUE(texts.insert(row.text).second) << row.text;
        EXPECT_EQ(find_counter_tag(row.text), &row) << row.text;
    }
    EXPECT_EQ(texts.size(), 32u);
}

TEST(CounterTags, EachFamilyHasATag) {
    std::set<Counter> families;
    for (const CounterTag& row : counter_tags) {
        if (row.meaning.target == TagTarget::counter)
            families.insert(row.meaning.counter);
    }
    EXPECT_EQ(families.size(), num_counters);
    EXPECT_EQ(num_counters, 13u);
    EXPECT_EQ(static_cast<std::size_t>(Counter::max_fifo), num_counters - 1);
}

TEST(CounterTags, AreComparedWhole) {
    for (const char* text : {"", "ivali", "ivalid ", "IVALID", "loop_ivalid_", "clock_k_function", "cycle"})
        EXPECT_EQ(find_counter_tag(text), nullptr) << text;
}

TEST(CounterTags, ThreeOfThemAreShared) {
    for (const char* text : {"shared", "chread_shared", "chwrite_shared"})
        EXPECT_TRUE(is_shared_tag(text)) << text;
    for (const char* text : {"", "share", "loop_shared", "ivalid", "clock"})
        EXPECT_FALSE(is_shared_tag(text)) << text;
}

TEST(CounterTags, ATagMeansWhatItsRowSays) {
    const TagMeaning stall = meaning_of_tag("chread_fifo_stall", "clock_k_function");
    EXPECT_EQ(stall.target, TagTarget::counter);
    EXPECT_EQ(stall.counter, Counter::ext_stall);
    EXPECT_EQ(stall.shared_type, SHARED_EXT_STALL);
    EXPECT_EQ(meaning_of_tag("burstcount", "").shared_type, SHARED_NONE);
    EXPECT_EQ(meaning_of_tag("shared", "").target, TagTarget::shared_counter);
}

TEST(CounterTags, TwoTagsCountTheCyclesOfAFunction) {
    EXPECT_EQ(meaning_of_tag("clock", "clock_k_function").target, TagTarget::total_cycles);
    EXPECT_EQ(meaning_of_tag("clock_k_function", "clock_k_function").target, TagTarget::total_cycles);
    EXPECT_EQ(meaning_of_tag("clock_other_function", "clock_k_function").target, TagTarget::nothing);
}

TEST(CounterTags, ATextWithThePrefixOfExternalMemoriesNamesAPort) {
    EXPECT_EQ(meaning_of_tag("profile_extmem_", "").target, TagTarget::ext_mem);
    EXPECT_EQ(meaning_of_tag("x_profile_extmem_y", "").target, TagTarget::ext_mem);
    EXPECT_EQ(meaning_of_tag("profile_extmem", "").target, TagTarget::nothing);
    // A function may be called so, too.
    const char* const cycles = "clock_profile_extmem__function";
    EXPECT_EQ(meaning_of_tag(cycles, cycles).target, TagTarget::total_cycles);
}

TEST(CounterTags, TheMappingHasTheTagsOfOneKindOfRun) {
    const auto mapping = make_shared_mapping();
    for (const CounterTag& row : counter_tags) {
        const auto found = mapping.find(std::string(row.text));
        if (row.meaning.shared_type == SHARED_NONE)
            EXPECT_EQ(found, mapping.end()) << row.text;
        else
            EXPECT_EQ(found->second, row.meaning.shared_type) << row.text;
    }
}

} // namespace
