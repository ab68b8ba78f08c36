// SPDX-License-Identifier: Apache-2.0
// Files and streams that take the bytes of a report, or refuse them.
#include "byte_target.h"

#include <gtest/gtest.h>

#include <boost/property_tree/json_parser/error.hpp>
#include <sstream>

#include "temp_dir.h"
#include "whole_file.h"

namespace {

TEST(ByteTarget, AFileHoldsWhatWasWrittenInPlaceOfWhatWasThere) {
    const TempDir dir;
    const std::string path = dir.path("report.json");
    write_file(path, std::string(1000, 'x'));
    FileTarget file(path);
    EXPECT_EQ(read_file(path), "");
    EXPECT_TRUE(file.write("one", 3));
    EXPECT_TRUE(file.write("", 0));
    EXPECT_TRUE(file.write(" two", 4));
    EXPECT_TRUE(file.close());
    EXPECT_EQ(read_file(path), "one two");
}

TEST(ByteTarget, AFileThatCannotBeMadeThrowsItsPath) {
    const TempDir dir;
    const std::string path = dir.path("missing/report.json");
    try {
        FileTarget file(path);
        ADD_FAILURE() << "made " << path;
    } catch (const boost::property_tree::json_parser::json_parser_error& error) {
        EXPECT_EQ(error.message(), "cannot open file");
        EXPECT_EQ(error.filename(), path);
    }
}

TEST(ByteTarget, AFullDeviceRefusesBytes) {
    FileTarget file("/dev/full");
    EXPECT_FALSE(file.write("x", 1));
    EXPECT_TRUE(file.close());
}

TEST(ByteTarget, AStreamRefusesBytesOnceItIsBad) {
    std::ostringstream stream;
    StreamTarget target(stream);
    EXPECT_TRUE(target.write("abc", 3));
    stream.setstate(std::ios::badbit);
    EXPECT_FALSE(target.write("d", 1));
    EXPECT_EQ(stream.str(), "abc");
}

} // namespace
