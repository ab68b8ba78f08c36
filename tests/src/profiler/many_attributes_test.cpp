// An element with so many attributes that the parser, which compares each with all before it, takes a minute.
#include <gtest/gtest.h>

#include "ProfilerConfigXml.h"

namespace {

TEST(ManyAttributes, EachOfAHundredThousandIsReportedAtItsLine) {
    constexpr unsigned int count = 100000;
    std::string text = "<PROFILER><FUNCTION_LIST><FUNCTION";
    for (unsigned int i = 0; i < count; ++i)
        text += "\na" + std::to_string(i) + "=''";
    text += "/></FUNCTION_LIST></PROFILER>";
    zan::profiler::ProfilerConfigXmlLoader loader(false);
    EXPECT_EQ(loader.load_xml(text.c_str()), nullptr);
    ASSERT_EQ(loader.get_num_errors(), count);
    EXPECT_EQ(loader.get_error(0), "Error in '[mem]', line 2\nUnexpected attribute 'a0'.\n");
    EXPECT_EQ(loader.get_error(count - 1), "Error in '[mem]', line 100001\nUnexpected attribute 'a99999'.\n");
}

} // namespace
