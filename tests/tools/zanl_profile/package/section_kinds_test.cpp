// SPDX-License-Identifier: Apache-2.0
#include "section_kinds.h"

#include <gtest/gtest.h>

#include "stream_records.h"

namespace {

using namespace zan::tool;

TEST(SectionKinds, AreKnownByTheirNames) {
    EXPECT_EQ(kind_of_name(".zan.version").key, "version");
    EXPECT_EQ(kind_of_name(".zan.board_spec.xml").key, "board");
    EXPECT_EQ(kind_of_name(".zan.velmora_report").key, "timing");
    EXPECT_EQ(kind_of_name(".zan.profiler.xml").key, "profiler");
    EXPECT_EQ(kind_of_name(".zan.opt.rpt.xml").key, "optimization");
    EXPECT_EQ(kind_of_name(".zan.profiler.xml").meaning, "profiler description");
}

TEST(SectionKinds, SomeAreKnownByTheBeginningsOfTheirNames) {
    EXPECT_EQ(kind_of_name(".zan.file.0").key, "file");
    EXPECT_EQ(kind_of_name(".zan.source12").key, "source");
    EXPECT_EQ(kind_of_name(".zan.version.1").key, "other");
}

TEST(SectionKinds, OthersHaveNoMeaning) {
    for (const char* name : {"", "mine", "zan.version"}) {
        EXPECT_EQ(kind_of_name(name).key, "other") << name;
        EXPECT_EQ(kind_of_name(name).meaning, "") << name;
    }
}

bool begins(const std::string& bytes) {
    return begins_stream(bytes.data(), bytes.size());
}

TEST(StreamBeginning, IsSeenInItsFirstBytes) {
    const std::string stream = stream_of({{file_type, 0, "f", std::string(10000, 'f')}});
    EXPECT_TRUE(begins(stream));
    EXPECT_TRUE(begins(stream.substr(0, stream_beginning)));
    EXPECT_TRUE(begins(stream_of({})));
    EXPECT_TRUE(
        begins(stream_of({{file_type, 0, "f", std::string(10000, 'f')}}, 0).substr(0, stream_beginning)));
}

TEST(StreamBeginning, IsNotSeenInOtherBytes) {
    EXPECT_FALSE(begins(""));
    EXPECT_FALSE(begins("<?xml version=\"1.0\"?>"));
    EXPECT_FALSE(begins(deflated("some text that is compressed")));
    EXPECT_FALSE(begins(stream_of({}).substr(0, 3)));
}

} // namespace
