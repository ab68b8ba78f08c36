// SPDX-License-Identifier: Apache-2.0
#include "diff_markdown.h"

#include <gtest/gtest.h>

#include "diff_result.h"

namespace {

using namespace zan::tool;

TEST(DiffMarkdown, BeginsWithWhatFailed) {
    EXPECT_EQ(diff_markdown(make_view(slower_writer().result({"stall:+5"}))),
              R"(## Profile: `new.json` against `base.json`

### Failed

| of | rule | base | new | delta |
|---|---|--:|--:|--:|
| `writer/store` | `stall:+5` | 28.0% | 35.1% | +7.1 points |

### Rules

- `stall:+5 fails for 1 of 2 blocks`

### Worse

| of | metric | base | new | delta |
|---|---|--:|--:|--:|
| `writer` | `kernel_time` | 8.00 us | 9.20 us | +15.0% |
| `writer/store` | `stall` | 28.0% | 35.1% | +7.1 points |

### Better

| of | metric | base | new | delta |
|---|---|--:|--:|--:|
| `writer/load` | `stall` | 20.0% | 10.0% | -10.0 points |

### Other changes

| of | metric | base | new | delta |
|---|---|--:|--:|--:|
| `writer` | `busy` | 50.0% | 60.0% | +10.0 points |

### Appeared

- `block writer/log (image.cl:40)`

### Moved

- `writer/store: image.cl:34, now image.cl:36`
)");
}

TEST(DiffMarkdown, NamesCantEndACodeSpanOrACell) {
    DiffView view;
    view.base = "a";
    view.new_run = "b`<img>";
    view.worse = {{"k|x", "m", "1", "2", "+1"}};
    EXPECT_EQ(diff_markdown(view),
              "## Profile: `b'<img>` against `a`\n\n### Worse\n\n| of | metric | base | new | delta |\n"
              "|---|---|--:|--:|--:|\n| `k\\|x` | `m` | 1 | 2 | +1 |\n");
}

TEST(DiffMarkdown, WithoutChangesSaysSo) {
    DiffView view;
    view.base = "a";
    view.new_run = "b";
    EXPECT_EQ(diff_markdown(view), "## Profile: `b` against `a`\n\nNo changes.\n");
}

} // namespace
