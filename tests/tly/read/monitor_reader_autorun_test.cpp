// SPDX-License-Identifier: Apache-2.0
// Autorun kernels and shared counters in a monitor file.
#include <gtest/gtest.h>

#include "capture.h"
#include "run_fixture.h"

namespace {

using Texts = std::vector<std::string>;
using Values = std::vector<long long>;

class AutorunTest : public testing::Test, protected RunFixture {
  protected:
    // Two autorun kernels whose counters share the lines of the pseudo-kernel: the clock and the valid cycles
    // of "<prefix>_b" in fields 8 and 9, those of "<prefix>_a" in fields 10 and 11, the pseudo-kernel's own
    // in 7.
    void make_kernels(const std::string& prefix) {
        kernel(autorun_profile_dummy_kernel);
        b = &clocked_inst(prefix + "_b", 8);
        a = &clocked_inst(prefix + "_a", 10);
    }
    TlyModuleInst& clocked_inst(const std::string& name, int offset) {
        TlyModuleInst& made = inst(kernel(name, true), "block");
        made.addPortTag("clock", offset, 0);
        made.addPortTag("ivalid", offset + 1, 0);
        return made;
    }
    static std::string line(long long start, long long time, const std::string& counters) {
        return "0,1," + autorun_profile_dummy_kernel + "," + std::to_string(start) + "," +
               std::to_string(time) + ",-1," + counters;
    }

    TlyModuleInst* a = nullptr;
    TlyModuleInst* b = nullptr;
};

TEST_F(AutorunTest, ALineGoesToAllAutorunKernels) {
    make_kernels("all");
    EXPECT_EQ(stderr_of([&] {
                  read({line(1000, 1100, "5,0,100,7,90,8"), line(1000, 1200, "5,0,60,3,50,4")});
              }),
              "");
    EXPECT_EQ(values("kernels", "name"), (Texts{"all_a", "all_b"}));
    EXPECT_EQ(values("kernels", "start_time"), (Texts{"1000", "1000"}));
    EXPECT_EQ(values("kernels", "sample_timestamps"), (Texts{"1100 1200", "1100 1200"}));
    EXPECT_EQ(values("kernels", "total_cycles_between_samples"), (Texts{"90 50", "100 60"}));
    EXPECT_EQ(values("kernels", "is_autorun"), (Texts{"true", "true"}));
    EXPECT_EQ(a->getIValidCount(), (Values{8, 4}));
    EXPECT_EQ(b->getIValidCount(), (Values{7, 3}));
}

TEST_F(AutorunTest, ANewStartTimeClosesTheInvocationOfAllAutorunKernels) {
    make_kernels("close");
    read({line(1000, 1100, "5,0,100,7,90,8"), line(2000, 2100, "5,0,60,3,50,4")});
    EXPECT_EQ(values("kernels", "name"), (Texts{"close_a", "close_b", "close_a", "close_b"}));
    EXPECT_EQ(values("kernels", "start_time"), (Texts{"1000", "1000", "2000", "2000"}));
    EXPECT_EQ(values("kernels", "num_samples"), (Texts(4, "1")));
}

TEST_F(AutorunTest, ThePseudoKernelKeepsOnlyTheStartTimeAndTheCycles) {
    make_kernels("pseudo");
    read({line(1000, 1100, "5,0,100,7,90,8")});
    const TlyKernel& pseudo = *kernels.at(autorun_profile_dummy_kernel);
    EXPECT_EQ(pseudo.get_start_time(), 1000);
    EXPECT_FALSE(pseudo.is_in_mon_file());
    EXPECT_TRUE(pseudo.get_sample_timestamps().empty());
    // Those of the first instance on the list, which is that of the kernel with the least name.
    EXPECT_EQ(pseudo.get_sample_totalcycles(), (Values{90}));
}

TEST_F(AutorunTest, AnAutorunKernelWithoutAnInstanceIsSkipped) {
    make_kernels("passed");
    kernel("passed_none", true);
    EXPECT_EQ(stderr_of([&] { EXPECT_EQ(read({line(1000, 1100, "5,0,100,7,90,8")}), 0); }), "");
    EXPECT_EQ(values("kernels", "name"), (Texts{"passed_a", "passed_b", "passed_none"}));
    EXPECT_EQ(values("kernels", "total_cycles_between_samples"), (Texts{"90", "100", "(none)"}));
}

TEST_F(AutorunTest, AKernelKeepsItsCyclesWhereItsFirstInstanceHasNone) {
    make_kernels("keep");
    TlyKernel& silent = kernel("keep_c", true);
    inst(silent, "block").addPortTag("ivalid", 7, 0);
    silent.set_sample_totalcycles({42});
    const std::string messages = stderr_of([&] { read({line(1000, 1100, "5,1,100,7,90,8")}); });
    EXPECT_EQ(messages, "WARNING: No total cycles found for kernel keep_c\n");
    EXPECT_EQ(silent.get_sample_totalcycles(), (Values{42}));
}

TEST_F(AutorunTest, ALineWithoutAnyAutorunKernelIsSkipped) {
    kernel(autorun_profile_dummy_kernel);
    EXPECT_EQ(stderr_of([&] { read({line(1000, 1100, "1,5")}); }),
              "profile.mon has some kernel that does not have any moduleinsts - Skipping line 1\n");
}

TEST_F(AutorunTest, ThePseudoKernelIsNeverWarnedOf) {
    make_kernels("silent");
    EXPECT_EQ(stderr_of([&] { read({}); }),
              "Warning: no data in the .mon file for the autorun kernel silent_a.\n"
              "Warning: no data in the .mon file for the autorun kernel silent_b.\n");
}

class SharedCountersTest : public testing::Test, protected RunFixture {
  protected:
    // One physical counter in field 8 for the four kinds, and a clock of its own in field 7.
    TlyModuleInst& shared_inst(const std::string& kernel_name) {
        TlyModuleInst& made = inst(kernel(kernel_name), "block", true);
        made.addPortTag("clock", 7, 0);
        for (const char* tag : {"ivalid", "memorystalls", "idle", "totalreq"})
            made.addPortTag(tag, 8, 0);
        return made;
    }
};

TEST_F(SharedCountersTest, EachTypeOfRunFeedsItsOwnCounter) {
    TlyModuleInst& block = shared_inst("types");
    EXPECT_EQ(stderr_of([&] {
                  read({"0,1,types,1,2,0,2,100,5", "0,1,types,1,3,1,2,100,6", "0,1,types,1,4,2,2,100,7",
                        "0,1,types,1,5,3,2,100,8"});
              }),
              "");
    EXPECT_EQ(block.getIValidCount(), (Values{5, 0, 0, 0}));
    EXPECT_EQ(block.getExtStallCount(), (Values{0, 6, 0, 0}));
    EXPECT_EQ(block.getIdleCount(), (Values{0, 0, 7, 0}));
    EXPECT_EQ(block.getIReqCount(), (Values{0, 0, 0, 8}));
    EXPECT_EQ(values("kernels", "shared_counter_run_type"), (Texts{"3"}));
}

constexpr const char* only_in_design =
    "ERROR: .zanx file has shared counters data but .mon does not at line {}. Data will not match. Ensure "
    "host is run with the Profiler Runtime Wrapper using the shared counter option. ABORT\n";
constexpr const char* only_in_run =
    "ERROR: .mon file has shared counters data at line {} but .zanx does not. Data will not match. Ensure "
    "design is compiled with the profile shared counters flag. ABORT\n";

std::string with_line(std::string text, int line) {
    return text.replace(text.find("{}"), 2, std::to_string(line));
}

TEST_F(SharedCountersTest, ARunWithoutThemOnADesignWithThemAborts) {
    shared_inst("design");
    EXPECT_EQ(stderr_of([&] {
                  EXPECT_EQ(read({"0,1,design,1,2,0,2,100,5", "0,1,design,1,3,-1,2,100,5"}), 1);
              }),
              with_line(only_in_design, 2));
    EXPECT_TRUE(nodes("kernels").empty());
}

TEST_F(SharedCountersTest, AnUnknownTypeCountsAsNone) {
    shared_inst("seven");
    EXPECT_EQ(stderr_of([&] { EXPECT_EQ(read({"0,1,seven,1,2,7,2,100,5"}), 1); }),
              with_line(only_in_design, 1));
}

TEST_F(SharedCountersTest, ARunWithThemOnADesignWithoutThemAborts) {
    inst(kernel("run"), "block").addPortTag("clock", 7, 0);
    EXPECT_EQ(stderr_of([&] { EXPECT_EQ(read({"0,1,run,1,2,3,1,100"}), 1); }), with_line(only_in_run, 1));
}

TEST_F(SharedCountersTest, InstancesBeforeAMismatchHaveTakenTheLine) {
    TlyModuleInst& first = shared_inst("mixed");
    inst(*kernels.at("mixed"), "plain").addPortTag("bandwidth", 7, 0);
    EXPECT_EQ(stderr_of([&] { EXPECT_EQ(read({"0,1,mixed,1,2,0,2,100,5"}), 1); }), with_line(only_in_run, 1));
    EXPECT_EQ(first.getIValidCount(), (Values{5}));
}

} // namespace
