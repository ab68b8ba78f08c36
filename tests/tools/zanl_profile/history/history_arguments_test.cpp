// SPDX-License-Identifier: Apache-2.0
#include "history_arguments.h"

#include <gtest/gtest.h>

namespace {

using namespace zan::tool;
using zan::profile::Labels;

TEST(HistoryArguments, LabelsHaveNamesAndValues) {
    EXPECT_EQ(labels_from({"a=1", "b=x=y", "c="}, "--label"), (Labels{{"a", "1"}, {"b", "x=y"}, {"c", ""}}));
    EXPECT_EQ(labels_text({{"b", "2"}, {"a", "1"}}), "a=1 b=2");
    EXPECT_THROW(labels_from({"a"}, "--label"), Failure);
    EXPECT_THROW(labels_from({"=a"}, "--label"), Failure);
}

} // namespace
