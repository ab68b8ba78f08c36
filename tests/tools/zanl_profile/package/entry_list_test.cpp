// SPDX-License-Identifier: Apache-2.0
#include "entry_list.h"

#include <gtest/gtest.h>

#include "capture.h"

namespace {

using zan::tool::EntryList;

TEST(EntryListTest, ColumnsHaveAFixedWidth) {
    const std::string text = stdout_of([] {
        EntryList list("s", false);
        list.add("to/a", true, 0);
        list.add("to/a/b\n", false, 4294967295);
        list.finish();
    });
    EXPECT_EQ(text,
              "TYPE          SIZE  PATH\n"
              "folder           0  to/a\n"
              "file    4294967295  to/a/b⟨U+000A⟩\n");
}

TEST(EntryListTest, LinesArePrintedBeforeTheLastOneIsThere) {
    const std::string text = stdout_of([] {
        EntryList list("s", false);
        for (int i = 0; i < 5000; ++i)
            list.add("a", false, 1);
    });
    // Lines of 22 bytes, of which 65,536 are collected: with the heading of 25, the 2,978th of them is the
    // first to reach that.
    EXPECT_EQ(text.size(), 25u + 2978u * 22u);
}

TEST(EntryListTest, AnEmptyListIsOneToo) {
    const auto empty = [](bool as_json) { return stdout_of([&] { EntryList("s", as_json).finish(); }); };
    EXPECT_EQ(empty(false), "TYPE          SIZE  PATH\n");
    EXPECT_NE(empty(true).find("\"entries\": []"), std::string::npos);
}

} // namespace
