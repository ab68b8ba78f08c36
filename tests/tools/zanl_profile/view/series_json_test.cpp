// SPDX-License-Identifier: Apache-2.0
#include "series_json.h"

#include <gtest/gtest.h>

#include "temp_dir.h"

using namespace zan::tool;
using namespace zan::profile;

namespace {

TEST(SeriesJson, HasAColumnForEachPropertyOfASeries) {
    const TempDir dir;
    ChunkStore store(dir.path());
    SeriesTable table(store);
    Series first(store);
    first.add(0.5f);
    first.add(2.0f);
    first.add_marks(Mark::nan, 2);
    table.add(std::move(first));
    Series zeros(store);
    zeros.add(std::int64_t{0});
    table.add(std::move(zeros));
    Series nothing(store);
    nothing.fill_up_to(3);
    table.add(std::move(nothing));
    PageJson json;
    write_series_table(json, table);
    // 0.5 and 2 in tenths: 5 and 20, whose zigzags 10 and 40 (or 10 and the difference 30) take a byte each.
    const std::string text = json.result();
    EXPECT_TRUE(text.starts_with(R"({"n":[4,1,3],"chunk":[0,-1,-1],"digits":[1,0,0],"enc":[[)")) << text;
    EXPECT_TRUE(text.ends_with(
        R"("min":[0.5,0,null],"max":[2.0,0,null],"marks":{"0":[[2,2,1]],"2":[[0,3,0]]},"pyramid":{},"peaks":{}})"))
        << text;
}

} // namespace
