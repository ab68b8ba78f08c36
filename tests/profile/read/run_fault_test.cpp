// SPDX-License-Identifier: Apache-2.0
#include "run_fault.h"

#include <gtest/gtest.h>

#include <map>

namespace {

using namespace zan::profile;

TEST(RunFaultTable, EachKindHasANameOfItsOwn) {
    std::map<std::string_view, int> names;
    for (int i = 0; i < static_cast<int>(FaultKind::count); ++i)
        EXPECT_EQ(names[name_of(static_cast<FaultKind>(i))]++, 0) << i;
    EXPECT_EQ(name_of(FaultKind::empty_line), "empty-line");
    EXPECT_EQ(effect_of(FaultKind::empty_line), FaultEffect::leaves_line_out);
    EXPECT_EQ(effect_of(FaultKind::not_xml), FaultEffect::ends_run);
    EXPECT_EQ(effect_of(FaultKind::bad_counter), FaultEffect::none);
}

} // namespace
