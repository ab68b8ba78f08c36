// SPDX-License-Identifier: Apache-2.0
#include "tly_kernel.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "inst_builder.h"

namespace {

using Values = std::vector<long long>;

TEST(TlyKernel, ABareNameMakesAnEmptyKernel) {
    const TlyKernel kernel("k");
    EXPECT_EQ(kernel.get_name(), "k");
    EXPECT_EQ(kernel.get_original_name(), "");
    EXPECT_EQ(kernel.get_user_friendly_name(), "");
    EXPECT_EQ(kernel.get_filename(), "");
    EXPECT_EQ(kernel.get_line_num(), 0);
    EXPECT_FALSE(kernel.is_autorun_kernel());
    EXPECT_FALSE(kernel.is_in_mon_file());
    EXPECT_EQ(kernel.get_shared_run_type(), SHARED_NONE);
    EXPECT_EQ(kernel.get_start_time(), -1);
    EXPECT_TRUE(kernel.get_device_ids().empty());
    EXPECT_TRUE(kernel.get_command_queues().empty());
    EXPECT_TRUE(kernel.get_sample_timestamps().empty());
    EXPECT_TRUE(kernel.get_sample_totalcycles().empty());
    EXPECT_TRUE(kernel.get_module_insts().empty());
    EXPECT_EQ(kernel.get_extmem_module_inst(), nullptr);
}

TEST(TlyKernel, AChangeOfTheDescriptionHasANumberOfItsOwn) {
    TlyKernel kernel("k");
    std::vector<std::uint64_t> numbers{TlyKernel("k").description_number(), kernel.description_number()};
    kernel.set_name("n");
    numbers.push_back(kernel.description_number());
    kernel.set_user_friendly_name("u");
    numbers.push_back(kernel.description_number());
    kernel.set_filename("f");
    numbers.push_back(kernel.description_number());
    kernel.set_line_num(3);
    numbers.push_back(kernel.description_number());
    std::sort(numbers.begin(), numbers.end());
    EXPECT_EQ(std::adjacent_find(numbers.begin(), numbers.end()), numbers.end());
    EXPECT_GT(numbers.front(), 0u);
    const std::uint64_t last = kernel.description_number();
    kernel.set_start_time(5);
    kernel.resetKernel();
    EXPECT_EQ(kernel.description_number(), last);
}

TEST(TlyKernel, TheFriendlyNameComesBeforeTheOriginalOne) {
    const TlyKernel kernel("k", "Friendly", "original", "k.cl", 12);
    EXPECT_EQ(kernel.get_user_friendly_name(), "Friendly");
    EXPECT_EQ(kernel.get_original_name(), "original");
    EXPECT_EQ(kernel.get_filename(), "k.cl");
    EXPECT_EQ(kernel.get_line_num(), 12);
    EXPECT_FALSE(kernel.is_autorun_kernel());
    EXPECT_TRUE(TlyKernel("k", "", "", "", 0, true).is_autorun_kernel());
    EXPECT_TRUE(TlyKernel("k", true).is_autorun_kernel());
}

TEST(TlyKernel, SettersChangeTheirFieldAlone) {
    TlyKernel kernel("k");
    kernel.set_name("n");
    kernel.set_original_name("o");
    kernel.set_user_friendly_name("u");
    kernel.set_filename("f");
    kernel.set_line_num(3);
    kernel.set_autorun();
    kernel.set_in_mon(true);
    kernel.set_shared_run_type(SHARED_IDLE);
    kernel.set_start_time(77);
    kernel.set_device_ids({1, 2});
    kernel.set_command_queues({3});
    kernel.set_sample_timestamps({4, 5});
    kernel.set_sample_totalcycles({6});
    EXPECT_EQ(kernel.get_name(), "n");
    EXPECT_EQ(kernel.get_original_name(), "o");
    EXPECT_EQ(kernel.get_user_friendly_name(), "u");
    EXPECT_EQ(kernel.get_filename(), "f");
    EXPECT_EQ(kernel.get_line_num(), 3);
    EXPECT_TRUE(kernel.is_autorun_kernel());
    EXPECT_TRUE(kernel.is_in_mon_file());
    EXPECT_EQ(kernel.get_shared_run_type(), SHARED_IDLE);
    EXPECT_EQ(kernel.get_start_time(), 77);
    EXPECT_EQ(kernel.get_device_ids(), (std::vector<int>{1, 2}));
    EXPECT_EQ(kernel.get_command_queues(), (std::vector<int>{3}));
    EXPECT_EQ(kernel.get_sample_timestamps(), (Values{4, 5}));
    EXPECT_EQ(kernel.get_sample_totalcycles(), (Values{6}));
    kernel.set_autorun_manual(false);
    EXPECT_FALSE(kernel.is_autorun_kernel());
}

TEST(TlyKernel, AddingTotalCyclesReplacesTheList) {
    TlyKernel kernel("k");
    kernel.add_sample_totalcycle({1, 2});
    kernel.add_sample_totalcycle({1, 2, 3});
    EXPECT_EQ(kernel.get_sample_totalcycles(), (Values{1, 2, 3}));
    kernel.add_sample_totalcycle(Values{});
    EXPECT_TRUE(kernel.get_sample_totalcycles().empty());
}

TEST(TlyKernel, InstancesAreFoundByNameInTheOrderOfAdding) {
    TlyKernel kernel("k");
    EXPECT_EQ(kernel.check_module_exists("a"), nullptr);
    const auto a = InstBuilder{.function = "k", .name = "a"}.make();
    const auto b = InstBuilder{.function = "k", .name = "b"}.make();
    const auto second_a = InstBuilder{.function = "k", .name = "a"}.make();
    for (TlyModuleInst* inst : {a.get(), b.get(), second_a.get()})
        kernel.add_module_inst(inst);
    EXPECT_EQ(kernel.check_module_exists("a"), a.get());
    EXPECT_EQ(kernel.check_module_exists("b"), b.get());
    EXPECT_EQ(kernel.check_module_exists("c"), nullptr);
    EXPECT_EQ(kernel.get_module_insts(), (std::vector<TlyModuleInst*>{a.get(), b.get(), second_a.get()}));
}

TEST(TlyKernel, TheWrapperOfItsNameCarriesTheExternalMemories) {
    const auto wrapper = InstBuilder{.function = "foo", .name = "foo_function_wrapper"}.make();
    const auto later = InstBuilder{.function = "foo", .name = "foo_function_wrapper"}.make();
    const auto suffixed = InstBuilder{.function = "foo", .name = "foo_function_wrapper_inst"}.make();
    TlyKernel foo("foo");
    foo.add_module_inst(suffixed.get());
    EXPECT_EQ(foo.get_extmem_module_inst(), nullptr);
    foo.add_module_inst(wrapper.get());
    EXPECT_EQ(foo.get_extmem_module_inst(), wrapper.get());
    foo.add_module_inst(later.get());
    EXPECT_EQ(foo.get_extmem_module_inst(), later.get());
    TlyKernel foobar("foobar");
    foobar.add_module_inst(wrapper.get());
    EXPECT_EQ(foobar.get_extmem_module_inst(), nullptr);
}

TEST(TlyKernelDeathTest, AnInstanceMustNotBeNull) {
    TlyKernel kernel("k");
    EXPECT_DEATH(kernel.add_module_inst(nullptr), "Assertion `inst != nullptr' failed");
}

TEST(TlyKernel, AListOfInstancesMayHoldNull) {
    TlyKernel kernel("k");
    const auto inst = InstBuilder{.function = "k", .name = "a"}.make();
    kernel.set_module_insts({nullptr, inst.get()});
    EXPECT_EQ(kernel.get_module_insts(), (std::vector<TlyModuleInst*>{nullptr, inst.get()}));
    EXPECT_EQ(kernel.check_module_exists("a"), inst.get());
    kernel.set_module_insts({});
    EXPECT_EQ(kernel.check_module_exists("a"), nullptr);
}

TEST(TlyKernel, ResettingKeepsTheStartTimeAndTheInstances) {
    const auto inst = InstBuilder{.function = "reset_kernel", .tags = {"ivalid"}}.make();
    add_sample(*inst, {"5"});
    TlyKernel kernel("reset_kernel");
    kernel.add_module_inst(inst.get());
    kernel.set_start_time(1000);
    kernel.set_in_mon(true);
    kernel.set_autorun();
    kernel.set_shared_run_type(SHARED_IDLE);
    kernel.add_device_id(1);
    kernel.add_command_queue(2);
    kernel.add_sample_timestamp(3);
    kernel.add_sample_totalcycle({4});
    kernel.resetKernel();
    EXPECT_EQ(kernel.get_start_time(), 1000);
    EXPECT_TRUE(kernel.is_in_mon_file());
    EXPECT_TRUE(kernel.is_autorun_kernel());
    EXPECT_EQ(kernel.get_shared_run_type(), SHARED_NONE);
    EXPECT_TRUE(kernel.get_device_ids().empty());
    EXPECT_TRUE(kernel.get_command_queues().empty());
    EXPECT_TRUE(kernel.get_sample_timestamps().empty());
    EXPECT_TRUE(kernel.get_sample_totalcycles().empty());
    EXPECT_EQ(kernel.get_module_insts().size(), 1u);
    EXPECT_TRUE(inst->getIValidCount().empty());
}

} // namespace
