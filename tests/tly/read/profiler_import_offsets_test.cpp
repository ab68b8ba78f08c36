// SPDX-License-Identifier: Apache-2.0
// The fields of a monitor line in which the counters of a description stand. The first counter is field 7.
#include "import_fixture.h"

namespace {

TEST_F(ImportTest, CountersStandInTheOrderOfTheConnections) {
    import(Description()
               .function("k")
               .module("lsu", {"bandwidth", "memorystalls", "totalreq"})
               .inst("k", "m", "lsu")
               .connect("k", "m", "totalreq")
               .connect("k", "m", "bandwidth")
               .connect("k", "m", "memorystalls"));
    EXPECT_EQ(counters("k", "m"), "totalreq:7 bandwidth:8 memorystalls:9");
    EXPECT_EQ(inst("k", "m").getNumHasShared(), 0);
}

TEST_F(ImportTest, EachKernelHasLinesOfItsOwn) {
    import(Description()
               .function("a")
               .function("b")
               .module("lsu", {"bandwidth", "memorystalls"})
               .inst("a", "m", "lsu")
               .inst("b", "m", "lsu")
               .connect("a", "m", "bandwidth")
               .connect("b", "m", "bandwidth")
               .connect("a", "m", "memorystalls"));
    EXPECT_EQ(all_counters(),
              "a m bandwidth:7 memorystalls:8\n"
              "b m bandwidth:7\n");
}

TEST_F(ImportTest, ComputeUnitsHaveCountersOfTheirOwn) {
    import(Description()
               .function("k", "", 2)
               .module("lsu", {"bandwidth"})
               .inst("k", "m", "lsu")
               .connect("k", "m", "bandwidth", "", 0)
               .connect("k", "m", "bandwidth", "", 1));
    EXPECT_EQ(counters("k", "m"), "bandwidth:7 bandwidth:8/1");
    EXPECT_EQ(inst("k", "m").getNumComputeUnits(), 1);
}

TEST_F(ImportTest, APortThatSharesACounterTakesNoFieldOfItsOwn) {
    import(Description()
               .function("k")
               .module("pipe", {"clock", "shared", "ivalid", "ostall"})
               .inst("k", "m", "pipe", "", false, true)
               .connect("k", "m", "clock")
               .connect("k", "m", "shared")
               .connect("k", "m", "ivalid", "shared")
               .connect("k", "m", "ostall"));
    EXPECT_EQ(counters("k", "m"), "clock:7 shared:8 ivalid:8 ostall:9");
    EXPECT_EQ(inst("k", "m").getNumHasShared(), 1);
    EXPECT_EQ(inst("k", "m").getSharedOffset("shared"), 8);
}

TEST_F(ImportTest, EachKindOfSharedPortIsRemembered) {
    import(Description()
               .function("k")
               .module("channel", {"chwrite_shared", "chread_shared", "shared", "bandwidth"})
               .inst("k", "m", "channel", "", false, true)
               .connect("k", "m", "bandwidth")
               .connect("k", "m", "chread_shared")
               .connect("k", "m", "chwrite_shared")
               .connect("k", "m", "shared"));
    EXPECT_EQ(inst("k", "m").getSharedOffset("chread_shared"), 8);
    EXPECT_EQ(inst("k", "m").getSharedOffset("chwrite_shared"), 9);
    EXPECT_EQ(inst("k", "m").getSharedOffset("shared"), 10);
    EXPECT_EQ(inst("k", "m").getSharedOffset("bandwidth"), -1);
}

TEST_F(ImportTest, AFirstConnectionThatSharesTakesTheFirstFieldAllTheSame) {
    import(Description()
               .function("k")
               .module("pipe", {"shared", "ivalid", "ostall"})
               .inst("k", "m", "pipe", "", false, true)
               .connect("k", "m", "ivalid", "shared") // no offset is known yet
               .connect("k", "m", "shared")           // 7 is taken, so this is 8
               .connect("k", "m", "ostall", "shared"));
    EXPECT_EQ(messages, "ERROR: No shared offset was found for kernel k. ABORT\n");
    EXPECT_EQ(counters("k", "m"), "shared:8 ostall:8");
    EXPECT_EQ(inst("k", "m").getNumHasShared(), 1);
}

TEST_F(ImportTest, APortIsSharedWithinItsInstanceOnly) {
    import(Description()
               .function("k")
               .module("pipe", {"shared", "ivalid"})
               .inst("k", "a", "pipe", "", false, true)
               .inst("k", "b", "pipe", "", false, true)
               .connect("k", "a", "shared")
               .connect("k", "b", "ivalid", "shared"));
    EXPECT_EQ(messages, "ERROR: No shared offset was found for kernel k. ABORT\n");
    EXPECT_EQ(all_counters(), "k a shared:7\nk b \n"); // the instance is there, without a counter
}

TEST_F(ImportTest, APortThatIsNoSharedOneHasNoOffsetToShare) {
    import(Description()
               .function("k")
               .module("pipe", {"clock", "ivalid"})
               .inst("k", "m", "pipe", "", false, true)
               .connect("k", "m", "clock")
               .connect("k", "m", "ivalid", "clock"));
    EXPECT_EQ(messages, "ERROR: No shared offset was found for kernel k. ABORT\n");
    EXPECT_EQ(counters("k", "m"), "clock:7");
}

TEST_F(ImportTest, TheFirstOfferOfASharedPortCounts) {
    import(Description()
               .function("k", "", 2)
               .module("pipe", {"shared", "ivalid"})
               .inst("k", "m", "pipe", "", false, true)
               .connect("k", "m", "shared", "", 0)
               .connect("k", "m", "shared", "", 1)
               .connect("k", "m", "ivalid", "shared", 1));
    EXPECT_EQ(counters("k", "m"), "shared:7 shared:8/1 ivalid:7/1");
}

// The tests below are of autorun kernels, which report on the lines of a pseudo-kernel.

constexpr const char* pseudo = "Corvane_Internal_Collect_Autorun_Profiling";

// Autorun kernels "a" with two counters and "b" with one; the pseudo-kernel is a function without
// connections.
Description two_autorun_kernels() {
    return Description()
        .function("a")
        .function("b")
        .function(pseudo)
        .module("pipe", {"ivalid", "ostall"})
        .inst("a", "m", "pipe", "", true)
        .inst("b", "m", "pipe", "", true)
        .inst(pseudo, "p", "pipe")
        .connect("a", "m", "ivalid")
        .connect("a", "m", "ostall")
        .connect("b", "m", "ivalid");
}

TEST_F(ImportTest, WithoutCountersOfThePseudoKernelNothingMoves) {
    import(two_autorun_kernels());
    EXPECT_EQ(messages, "");
    EXPECT_EQ(all_counters(),
              "a m ivalid:7 ostall:8\n"
              "b m ivalid:7\n");
}

TEST_F(ImportTest, TheGreatestNameComesFirst) {
    import(two_autorun_kernels().connect(pseudo, "p", "ivalid"));
    // "b" moves by 1 and has one counter, so "a" moves by 2.
    EXPECT_EQ(all_counters(),
              "Corvane_Internal_Collect_Autorun_Profiling p ivalid:7\n"
              "a m ivalid:9 ostall:10\n"
              "b m ivalid:8\n");
}

TEST_F(ImportTest, ThePseudoKernelItselfDoesNotMove) {
    import(Description()
               .function("a")
               .function(pseudo)
               .module("pipe", {"ivalid", "ostall"})
               .inst("a", "m", "pipe", "", true)
               .inst(pseudo, "p", "pipe", "", true)
               .connect("a", "m", "ivalid")
               .connect(pseudo, "p", "ivalid")
               .connect(pseudo, "p", "ostall"));
    EXPECT_EQ(all_counters(),
              "Corvane_Internal_Collect_Autorun_Profiling p ivalid:7 ostall:8\n"
              "a m ivalid:8\n");
}

TEST_F(ImportTest, OnlyAutorunInstancesMoveButAllCount) {
    import(Description()
               .function("a")
               .function("b")
               .function(pseudo)
               .module("pipe", {"ivalid", "ostall"})
               .inst("a", "m", "pipe", "", true)
               .inst("b", "plain", "pipe")
               .inst("b", "autorun", "pipe", "", true)
               .inst(pseudo, "p", "pipe")
               .connect("b", "plain", "ivalid")
               .connect("b", "plain", "ostall")
               .connect("b", "autorun", "ivalid")
               .connect("a", "m", "ivalid")
               .connect(pseudo, "p", "ivalid"));
    // "b" has three counters, and one of its instances moves by 1; "a" moves by 4.
    EXPECT_EQ(all_counters(),
              "Corvane_Internal_Collect_Autorun_Profiling p ivalid:7\n"
              "a m ivalid:11\n"
              "b plain ivalid:7 ostall:8\n"
              "b autorun ivalid:10\n");
}

TEST_F(ImportTest, ASharingPortCountsUnlessSharedCountersWereCompiledIn) {
    const auto design = [](bool shared_on) {
        return Description()
            .function("a")
            .function("b")
            .function(pseudo)
            .module("pipe", {"shared", "ivalid", "ostall"})
            .inst("a", "m", "pipe", "", true)
            .inst("b", "m", "pipe", "", true, shared_on)
            .inst(pseudo, "p", "pipe")
            .connect("b", "m", "shared")
            .connect("b", "m", "ivalid", "shared")
            .connect("b", "m", "ostall", "shared")
            .connect("a", "m", "ivalid")
            .connect(pseudo, "p", "ivalid");
    };
    import(design(true));
    EXPECT_EQ(counters("b", "m"), "shared:8 ivalid:8 ostall:8");
    EXPECT_EQ(counters("a", "m"), "ivalid:9"); // 7 + 1 + one field
    forget();
    import(design(false));
    EXPECT_EQ(counters("a", "m"), "ivalid:11"); // 7 + 1 + three fields
}

// Three kernels and three autorun kernels with 39 instances, and the pseudo-kernel with the fortieth.
Description large_design() {
    Description design;
    for (const char* name : {"mem", "pipe", "mixed", "auto_a", "auto_b", "auto_c", pseudo})
        design.function(name);
    design.module("lsu", {"bandwidth", "memorystalls"})
        .module("block", {"shared", "ivalid", "ostall", "idle"});

    const auto all = [&](const char* kernel, int count, const char* module, bool autorun, bool shared_on,
                         const std::vector<std::pair<const char*, const char*>>& ports) {
        for (int i = 0; i < count; ++i) {
            const std::string name = "i" + std::to_string(i);
            design.inst(kernel, name, module, "", autorun, shared_on);
            for (const auto& [tag, shared_with] : ports)
                design.connect(kernel, name, tag, shared_with);
        }
    };
    all("mem", 9, "lsu", false, false, {{"bandwidth", ""}, {"memorystalls", ""}});
    all("pipe", 14, "block", false, true,
        {{"shared", ""}, {"ivalid", "shared"}, {"idle", ""}, {"ostall", "shared"}});
    all("mixed", 6, "lsu", false, false, {{"bandwidth", ""}});
    for (int i = 5; i >= 0; --i) // the second counters in the opposite order
        design.connect("mixed", "i" + std::to_string(i), "memorystalls");
    all("auto_a", 3, "lsu", true, false, {{"memorystalls", ""}, {"bandwidth", ""}});
    all("auto_b", 4, "block", true, true, {{"shared", ""}, {"ivalid", "shared"}, {"ostall", "shared"}});
    all("auto_c", 3, "lsu", true, false, {{"bandwidth", ""}});
    all(pseudo, 1, "block", false, false, {{"ivalid", ""}});
    return design;
}

// "auto_c" moves by 1 and takes 3 fields, "auto_b" by 4 and takes 4 (a shared one for each instance),
// "auto_a" by 8.
constexpr const char* large_design_counters =
    "Corvane_Internal_Collect_Autorun_Profiling i0 ivalid:7\n"
    "auto_a i0 memorystalls:15 bandwidth:16\n"
    "auto_a i1 memorystalls:17 bandwidth:18\n"
    "auto_a i2 memorystalls:19 bandwidth:20\n"
    "auto_b i0 shared:11 ivalid:11 ostall:11\n"
    "auto_b i1 shared:12 ivalid:12 ostall:12\n"
    "auto_b i2 shared:13 ivalid:13 ostall:13\n"
    "auto_b i3 shared:14 ivalid:14 ostall:14\n"
    "auto_c i0 bandwidth:8\n"
    "auto_c i1 bandwidth:9\n"
    "auto_c i2 bandwidth:10\n"
    "mem i0 bandwidth:7 memorystalls:8\n"
    "mem i1 bandwidth:9 memorystalls:10\n"
    "mem i2 bandwidth:11 memorystalls:12\n"
    "mem i3 bandwidth:13 memorystalls:14\n"
    "mem i4 bandwidth:15 memorystalls:16\n"
    "mem i5 bandwidth:17 memorystalls:18\n"
    "mem i6 bandwidth:19 memorystalls:20\n"
    "mem i7 bandwidth:21 memorystalls:22\n"
    "mem i8 bandwidth:23 memorystalls:24\n"
    "mixed i0 bandwidth:7 memorystalls:18\n"
    "mixed i1 bandwidth:8 memorystalls:17\n"
    "mixed i2 bandwidth:9 memorystalls:16\n"
    "mixed i3 bandwidth:10 memorystalls:15\n"
    "mixed i4 bandwidth:11 memorystalls:14\n"
    "mixed i5 bandwidth:12 memorystalls:13\n"
    "pipe i0 shared:7 ivalid:7 idle:8 ostall:7\n"
    "pipe i1 shared:9 ivalid:9 idle:10 ostall:9\n"
    "pipe i2 shared:11 ivalid:11 idle:12 ostall:11\n"
    "pipe i3 shared:13 ivalid:13 idle:14 ostall:13\n"
    "pipe i4 shared:15 ivalid:15 idle:16 ostall:15\n"
    "pipe i5 shared:17 ivalid:17 idle:18 ostall:17\n"
    "pipe i6 shared:19 ivalid:19 idle:20 ostall:19\n"
    "pipe i7 shared:21 ivalid:21 idle:22 ostall:21\n"
    "pipe i8 shared:23 ivalid:23 idle:24 ostall:23\n"
    "pipe i9 shared:25 ivalid:25 idle:26 ostall:25\n"
    "pipe i10 shared:27 ivalid:27 idle:28 ostall:27\n"
    "pipe i11 shared:29 ivalid:29 idle:30 ostall:29\n"
    "pipe i12 shared:31 ivalid:31 idle:32 ostall:31\n"
    "pipe i13 shared:33 ivalid:33 idle:34 ostall:33\n";

TEST_F(ImportTest, ALargeDesign) {
    import(large_design());
    EXPECT_EQ(messages, "");
    EXPECT_EQ(all_counters(), large_design_counters);
    EXPECT_EQ(inst("pipe", "i3").getNumHasShared(), 2);
}

} // namespace
