// SPDX-License-Identifier: Apache-2.0
#include "diff_text.h"

#include <gtest/gtest.h>

#include "diff_result.h"

namespace {

using namespace zan::tool;

TEST(DiffText, HasATableForEachVerdict) {
    EXPECT_EQ(diff_text(make_view(slower_writer().result({"stall:+5"})), {.width = 100}),
              R"(base  base.json
new   new.json

WORSE         METRIC          BASE      NEW        DELTA
writer        kernel_time  8.00 us  9.20 us       +15.0%
writer/store  stall          28.0%    35.1%  +7.1 points

BETTER       METRIC   BASE    NEW         DELTA
writer/load  stall   20.0%  10.0%  -10.0 points

OTHER CHANGES  METRIC   BASE    NEW         DELTA
writer         busy    50.0%  60.0%  +10.0 points

APPEARED
  block writer/log (image.cl:40)

MOVED
  writer/store: image.cl:34, now image.cl:36

FAILED FOR    RULE       BASE    NEW        DELTA
writer/store  stall:+5  28.0%  35.1%  +7.1 points

RULES
  stall:+5 fails for 1 of 2 blocks
)");
}

TEST(DiffText, WithoutChangesSaysSo) {
    DiffView view;
    view.base = "a";
    view.new_run = "b";
    EXPECT_EQ(diff_text(view, {}), "base  a\nnew   b\n\nno changes\n");
}

TEST(DiffText, NamesAreMadePrintable) {
    DiffView view;
    view.base = "a\x1B[2J";
    view.new_run = "b";
    view.moved = {"x\n: y"};
    view.worse = {{"k\r", "m", "1", "2", "+1"}};
    const std::string text = diff_text(view, {});
    EXPECT_EQ(text.find('\x1B'), std::string::npos);
    EXPECT_EQ(text.find('\r'), std::string::npos);
    EXPECT_NE(text.find("x⟨U+000A⟩: y"), std::string::npos);
}

} // namespace
