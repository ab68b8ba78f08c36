// SPDX-License-Identifier: Apache-2.0
// An element with so many attributes that the parser, which compares each with all before it, takes long: the
// time grows with the square of their number, so there are just more than 16 bits can count.
#include <gtest/gtest.h>

#include "ProfilerConfigXml.h"

namespace {

TEST(ManyAttributes, EachOfMoreThan16BitsCanCountIsReportedAtItsLine) {
    constexpr unsigned int count = 66000;
    std::string text = "<PROFILER><FUNCTION_LIST><FUNCTION";
    for (unsigned int i = 0; i < count; ++i)
        text += "\na" + std::to_string(i) + "=''";
    text += "/></FUNCTION_LIST></PROFILER>";
    zan::profiler::ProfilerConfigXmlLoader loader(false);
    EXPECT_EQ(loader.load_xml(text.c_str()), nullptr);
    ASSERT_EQ(loader.get_num_errors(), count);
    EXPECT_EQ(loader.get_error(0), "Error in '[mem]', line 2\nUnexpected attribute 'a0'.\n");
    EXPECT_EQ(loader.get_error(count - 1), "Error in '[mem]', line 66001\nUnexpected attribute 'a65999'.\n");
}

} // namespace
