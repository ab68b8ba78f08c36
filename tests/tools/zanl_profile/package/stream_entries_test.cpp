// SPDX-License-Identifier: Apache-2.0
#include "stream_entries.h"

#include <gtest/gtest.h>

#include "failure.h"
#include "make_package.h"
#include "stream_records.h"
#include "temp_dir.h"
#include "whole_file.h"

namespace {

using namespace zan::tool;

class StreamEntriesTest : public testing::Test {
  protected:
    static std::string data_of(StreamEntries& entries) {
        std::string bytes;
        entries.read_data([&](const char* piece, std::size_t size) { bytes.append(piece, size); });
        return bytes;
    }
    // The text of the Failure that reading the whole stream ends with.
    std::string failure_of(const std::string& stream) const {
        write_file(dir.path("s"), stream);
        try {
            StreamEntries entries(dir.path("s"));
            while (entries.next())
                data_of(entries);
        } catch (const Failure& failure) {
            const std::string text = failure.what();
            const std::string beginning = "can't unpack '" + dir.path("s") + "': ";
            EXPECT_TRUE(text.starts_with(beginning)) << text;
            return text.substr(std::min(beginning.size(), text.size()));
        }
        return "(none)";
    }

    const TempDir dir;
    const std::string large = std::string(2 * io_piece + 1, 'x');
    const std::string stream =
        stream_of({{folder_type, 0, "d", ""}, {file_type, 0100755, "d/f", large}, {file_type, 0, "g", ""}});
};

TEST_F(StreamEntriesTest, ComeFromAFileOrASection) {
    write_file(dir.path("s"), stream);
    make_package(dir.path("p.zanx"), {{"tree", stream}});
    for (const std::string& name : {dir.path("s"), dir.path("p.zanx:tree")}) {
        StreamEntries entries(name);
        ASSERT_TRUE(entries.next());
        EXPECT_EQ(entries.name(), "d");
        EXPECT_TRUE(entries.is_folder());
        EXPECT_EQ(data_of(entries), "");
        ASSERT_TRUE(entries.next());
        EXPECT_EQ(entries.name(), "d/f");
        EXPECT_FALSE(entries.is_folder());
        EXPECT_EQ(entries.mode(), 0100755u);
        EXPECT_EQ(entries.size(), large.size());
        EXPECT_TRUE(data_of(entries) == large);
        ASSERT_TRUE(entries.next());
        EXPECT_EQ(entries.size(), 0u);
        EXPECT_FALSE(entries.next());
    }
}

TEST_F(StreamEntriesTest, WhatIsNotThereFails) {
    make_package(dir.path("p.zanx"), {});
    EXPECT_THROW(StreamEntries(dir.path("none")), Failure);
    EXPECT_THROW(StreamEntries(dir.path("none.zanx:tree")), Failure);
    EXPECT_THROW(StreamEntries(dir.path("p.zanx:tree")), Failure);
}

TEST_F(StreamEntriesTest, ADamagedStreamFails) {
    EXPECT_EQ(failure_of(stream), "(none)");
    EXPECT_EQ(failure_of("no stream"), "it ends early, is damaged, or is no directory stream");
    EXPECT_EQ(failure_of(deflated("twenty letters and more")),
              "there is something else where an entry should begin");
    EXPECT_EQ(failure_of(deflated(record_bytes({file_type, 0, "f", "12"}))), "it ends without an end record");
    EXPECT_EQ(failure_of(deflated(record_bytes({file_type, 0, "f", "12"}).substr(0, 23))),
              "it ends inside 'f'");
    EXPECT_EQ(failure_of(deflated(end_record + "more")), "its end is damaged");
}

TEST_F(StreamEntriesTest, AFileThatCannotBeReadHasTheReason) {
    StreamEntries entries(dir.path());
    try {
        entries.next();
        ADD_FAILURE();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.what(), "can't read '" + dir.path() + "': Is a directory");
    }
}

} // namespace
