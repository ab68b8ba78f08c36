// SPDX-License-Identifier: Apache-2.0
#include "line_target.h"

#include <gtest/gtest.h>

#include "capture.h"
#include "inst_builder.h"

namespace {

using Values = std::vector<long long>;

constexpr LineHead line_head = {1, 2, 30, 40, SHARED_IDLE, 0};

TEST(LineTarget, AddsTheHeadToTheKernelOfTheLine) {
    TlyKernel kernel("k");
    const std::vector<TlyModuleInst*> no_insts;
    LineTarget{&kernel, &no_insts}.add_head(line_head);
    EXPECT_EQ(kernel.get_device_ids(), std::vector<int>{1});
    EXPECT_EQ(kernel.get_command_queues(), std::vector<int>{2});
    EXPECT_EQ(kernel.get_sample_timestamps(), Values{40});
    EXPECT_EQ(kernel.get_shared_run_type(), SHARED_IDLE);
    EXPECT_TRUE(kernel.is_in_mon_file());
    EXPECT_EQ(kernel.get_start_time(), -1); // the reader sets it
}

TEST(LineTarget, AddsTheHeadOfThePseudoKernelsLineToTheAutorunKernels) {
    TlyKernel pseudo("p"), a("a", true), b("b", true);
    const std::vector<TlyModuleInst*> no_insts;
    const std::vector<TlyKernel*> autorun_kernels = {&a, &b}, none;
    LineTarget{&pseudo, &no_insts, &autorun_kernels}.add_head(line_head);
    EXPECT_EQ(a.get_sample_timestamps(), Values{40});
    EXPECT_EQ(b.get_sample_timestamps(), Values{40});
    EXPECT_FALSE(pseudo.is_in_mon_file());

    LineTarget{&pseudo, &no_insts, &none}.add_head(line_head); // without any, the line is its own
    EXPECT_EQ(pseudo.get_sample_timestamps(), Values{40});
}

TEST(LineTarget, SharesInstancesIfTheKernelIsAutorunOrStandsForThose) {
    TlyKernel kernel("k"), autorun("a", true);
    const std::vector<TlyModuleInst*> no_insts;
    const std::vector<TlyKernel*> autorun_kernels = {&autorun};
    EXPECT_FALSE((LineTarget{&kernel, &no_insts}.shares_instances()));
    EXPECT_TRUE((LineTarget{&autorun, &no_insts}.shares_instances()));
    EXPECT_TRUE((LineTarget{&kernel, &no_insts, &autorun_kernels}.shares_instances()));
}

TEST(LineTarget, HandsOnTheCyclesOfTheFirstInstance) {
    TlyKernel kernel("target_k");
    const auto inst = InstBuilder{.function = "target_k", .tags = {"clock"}}.make();
    kernel.add_module_inst(inst.get());
    add_sample(*inst, {"70"});
    LineTarget{&kernel, &kernel.get_module_insts()}.update_total_cycles();
    EXPECT_EQ(kernel.get_sample_totalcycles(), Values{70});
}

TEST(LineTarget, AnAutorunKernelWithoutCyclesKeepsThoseItHas) {
    TlyKernel pseudo("p"), without("target_without", true), silent("target_silent", true);
    const auto inst = InstBuilder{.function = "target_silent"}.make();
    silent.add_module_inst(inst.get());
    silent.set_sample_totalcycles(Values{42});
    const std::vector<TlyKernel*> autorun_kernels = {&without, &silent};
    EXPECT_EQ(stderr_of([&] {
                  LineTarget{&pseudo, &silent.get_module_insts(), &autorun_kernels}.update_total_cycles();
              }),
              "WARNING: No total cycles found for kernel target_silent\n"
              "WARNING: No total cycles found for kernel target_silent\n");
    EXPECT_EQ(silent.get_sample_totalcycles(), Values{42});
    EXPECT_TRUE(pseudo.get_sample_totalcycles().empty());
}

} // namespace
