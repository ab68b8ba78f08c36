// SPDX-License-Identifier: Apache-2.0
#include "design_counters.h"

#include <gtest/gtest.h>

#include "description.h"
#include "model_of.h"

namespace {

using zan::profile::DesignCounters;
using zan::profile::LineCounters;

TEST(DesignCounters, CountTheFieldsOfAllUnits) {
    const ModelOf design(Description()
                             .function("k", "original_name='from_source'", 3)
                             .module("m", {"clock", "ivalid"})
                             .inst("k", "b", "m")
                             .connect("k", "b", "clock")
                             .connect("k", "b", "clock", "", 1)
                             .connect("k", "b", "clock", "", 2)
                             .connect("k", "b", "ivalid")
                             .connect("k", "b", "ivalid", "", 1)
                             .connect("k", "b", "ivalid", "", 2));
    const DesignCounters counters(design.model);
    const LineCounters* k = counters.find("k");
    ASSERT_NE(k, nullptr);
    EXPECT_TRUE(k->is_known);
    EXPECT_EQ(k->num_fields, 6);
    EXPECT_EQ(k->num_units, 3u);
    ASSERT_NE(counters.find("from_source"), nullptr);
    EXPECT_EQ(counters.find("from_source")->num_fields, 6);
    EXPECT_EQ(counters.find("other"), nullptr);

    EXPECT_EQ(DesignCounters::reason(*k, 4), "4 is 2 compute units, the design has 3");
    EXPECT_EQ(DesignCounters::reason(*k, 2), "2 is 1 compute unit, the design has 3");
    EXPECT_EQ(DesignCounters::reason(*k, 5), "");
    EXPECT_EQ(DesignCounters::reason(*k, 6), "") << "as many as there are";
    LineCounters odd = *k;
    odd.num_fields = 7;
    EXPECT_EQ(DesignCounters::reason(odd, 4), "") << "units that aren't alike";
    EXPECT_EQ(DesignCounters::reason(*k, 0), "");
}

TEST(DesignCounters, SharedOnesTakeOneField) {
    const ModelOf design(Description()
                             .function("k")
                             .module("m", {"shared", "ivalid", "idle", "clock"})
                             .inst("k", "b", "m", "", false, true)
                             .connect("k", "b", "clock")
                             .connect("k", "b", "shared")
                             .connect("k", "b", "ivalid", "shared")
                             .connect("k", "b", "idle", "shared"));
    const LineCounters k = *DesignCounters(design.model).find("k");
    EXPECT_EQ(k.num_fields, 2);
    EXPECT_EQ(k.num_unshared, 3); // the clock, valid and idle cycles
    EXPECT_TRUE(k.shares);
    EXPECT_EQ(DesignCounters::reason(k, 3), "3 is what it has without shared counters");
    EXPECT_EQ(DesignCounters::reason(k, 4), "4 is 2 compute units, the design has 1");
    EXPECT_EQ(DesignCounters::reason(k, 5), "");
}

TEST(DesignCounters, ThoseOfAutorunKernelsStandOnTheLinesOfThePseudoKernel) {
    const std::string pseudo = "Corvane_Internal_Collect_Autorun_Profiling";
    const ModelOf design(Description()
                             .function("a")
                             .function(pseudo)
                             .module("m", {"clock", "ivalid"})
                             .inst("a", "b", "m", "", true)
                             .inst(pseudo, "p", "m")
                             .connect(pseudo, "p", "clock")
                             .connect("a", "b", "clock")
                             .connect("a", "b", "ivalid"));
    const DesignCounters counters(design.model);
    EXPECT_EQ(counters.find(pseudo)->num_fields, 3);
    EXPECT_TRUE(counters.find(pseudo)->is_known);
    EXPECT_FALSE(counters.find("a")->is_known);
    EXPECT_EQ(DesignCounters::reason(*counters.find(pseudo), 6), "") << "it is many kernels";
}

TEST(DesignCounters, AKernelWithoutCountersIsNotHeldAgainstItsLines) {
    const ModelOf design(Description().function("k"));
    EXPECT_FALSE(DesignCounters(design.model).find("k")->is_known);
}

} // namespace
