// The kernel record and the node of an invocation.
#include "tly_kernel.h"

#include <gtest/gtest.h>

#include "capture.h"
#include "inst_builder.h"
#include "node_text.h"
#include "tly_json.h"

namespace {

using Values = std::vector<long long>;
using ExtMems = std::unordered_map<std::string, TlyExtMem*>;

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

TEST(KernelNode, WithSamplesHasAllKeysInOrder) {
    const ptree node = getKernelJSON("k", "/a/k.cl", 12, {0, 1}, 0, {5, 5}, 1000, {1100, 1200}, {100, 90},
                                     true, SHARED_IDLE);
    EXPECT_EQ(
        node_text(node),
        "type=kernel name=k compute_unit=0 sourcefile={filename=/a/k.cl line=12} device_ids=[0 1] "
        "command_queue_id=[5 5] start_time=1000 end_time=1200 num_samples=2 shared_counter_run_type=2 "
        "sample_timestamps=[1100 1200] total_cycles_between_samples=[100 90] is_autorun=true children=");
}

TEST(KernelNode, WithoutSamplesLacksTheListsAndTheEndTime) {
    const ptree node = getKernelJSON("k", "", 0, {}, 0, {}, -1, {}, {}, false, SHARED_NONE);
    EXPECT_EQ(node_text(node),
              "type=kernel name=k compute_unit=0 sourcefile={filename= line=0} start_time=-1 num_samples=0 "
              "shared_counter_run_type=-1 is_autorun=false children=");
}

TEST(KernelNode, TimestampsAndCyclesArePresentIndependently) {
    const ptree times = getKernelJSON("k", "", 0, {}, 0, {}, 0, {5}, {}, false, SHARED_NONE);
    EXPECT_TRUE(times.get_child_optional("sample_timestamps"));
    EXPECT_FALSE(times.get_child_optional("total_cycles_between_samples"));
    const ptree cycles = getKernelJSON("k", "", 0, {}, 0, {}, 0, {}, {5}, false, SHARED_NONE);
    EXPECT_FALSE(cycles.get_child_optional("sample_timestamps"));
    EXPECT_FALSE(cycles.get_child_optional("end_time"));
    EXPECT_TRUE(cycles.get_child_optional("total_cycles_between_samples"));
}

// Kernels whose report is asked for, and a memory with two ports on its one interface.
class KernelJsonTest : public testing::Test {
  protected:
    static std::vector<std::string> child_names(const ptree& node) {
        std::vector<std::string> names;
        for (const auto& [key, child] : node.get_child("children")) {
            EXPECT_EQ(key, "");
            const auto port = child.get_optional<std::string>("port");
            names.push_back(child.get<std::string>("name") + (port ? ":" + *port : ""));
        }
        return names;
    }
    static TlyExtMem* memory() {
        static TlyExtMem* const made = [] {
            auto* memory = new TlyExtMem("DDR", 0.0f);
            memory->add_interface("bank", 512, {"p0", "p1", "p2"});
            return memory;
        }();
        return made;
    }
    // A wrapper with reads on port 0 and burst starts alone on port 1 of bank 0, and one more memory.
    static std::unique_ptr<TlyModuleInst> wrapper(const std::string& kernel,
                                                  const std::string& other_memory) {
        auto made = InstBuilder{.function = kernel, .name = kernel + "_function_wrapper_inst"}.make();
        made->updateExtMemCounter("DDR", EXT_MEM_READ, 0, 0, 5, true);
        made->updateExtMemCounter("DDR", EXT_MEM_READ_BURST, 0, 1, 5, true);
        made->updateExtMemCounter("DDR", EXT_MEM_WRITE, 0, 2, 5, true);
        if (!other_memory.empty())
            made->updateExtMemCounter(other_memory, EXT_MEM_READ, 0, 0, 5, true);
        return made;
    }

    ExtMems no_memories;
};

TEST_F(KernelJsonTest, ADisplayNameReplacesTheNameInTheNodeOnly) {
    const auto function = InstBuilder{.function = "shown", .name = "shown_function_inst"}.make();
    const auto other = InstBuilder{.function = "shown", .name = "Display_function_inst"}.make();
    TlyKernel kernel("shown", "Display", "", "k.cl", 3);
    kernel.add_module_inst(function.get());
    kernel.add_module_inst(other.get());
    const ptree node = kernel.getJSON(false, no_memories);
    EXPECT_EQ(node.get<std::string>("name"), "Display");
    EXPECT_EQ(node.get<int>("sourcefile.line"), 3);
    EXPECT_EQ(child_names(node), (std::vector<std::string>{"Display_function_inst"}));
}

TEST_F(KernelJsonTest, OnlyTheFunctionAndWrapperInstancesAreHeldBack) {
    const std::vector<std::string> names = {"kj_function_inst", "kj_function_wrapper_inst", "x",
                                            "kj_function_wrapper"};
    std::vector<std::unique_ptr<TlyModuleInst>> insts;
    TlyKernel kernel("kj");
    for (const std::string& name : names) {
        insts.push_back(InstBuilder{.function = "kj", .name = name}.make());
        kernel.add_module_inst(insts.back().get());
    }
    EXPECT_EQ(child_names(kernel.getJSON(false, no_memories)),
              (std::vector<std::string>{"x", "kj_function_wrapper"}));
}

TEST_F(KernelJsonTest, ExternalMemoriesStandAtTheWrappersPlace) {
    const auto before = InstBuilder{.function = "place", .name = "before"}.make();
    const auto carrier = wrapper("place", "");
    const auto after = InstBuilder{.function = "place", .name = "after"}.make();
    TlyKernel kernel("place");
    for (TlyModuleInst* inst : {before.get(), carrier.get(), after.get()})
        kernel.add_module_inst(inst);
    kernel.add_sample_totalcycle({100});
    ExtMems memories{{"DDR", memory()}};
    // Port 1 has neither reads nor writes.
    EXPECT_EQ(child_names(kernel.getJSON(false, memories)),
              (std::vector<std::string>{"before", "DDR:p0", "DDR:p2", "after"}));
}

TEST_F(KernelJsonTest, AMemoryThatTheBoardDoesNotListIsToldAndLeftOut) {
    const auto carrier = wrapper("unlisted", "HBM");
    TlyKernel kernel("unlisted");
    kernel.add_module_inst(carrier.get());
    kernel.add_sample_totalcycle({100});
    ExtMems memories{{"DDR", memory()}};
    ptree node;
    EXPECT_EQ(stderr_of([&] { kernel.getJSON(false, memories).swap(node); }),
              "Warning: external memory from kernel does not match external memory from board.\n");
    EXPECT_EQ(child_names(node), (std::vector<std::string>{"DDR:p0", "DDR:p2"}));
}

TEST_F(KernelJsonTest, OnlyAResetEmptiesTheLists) {
    const auto inst = InstBuilder{.function = "emptied", .tags = {"ivalid"}}.make();
    add_sample(*inst, {"5"});
    TlyKernel kernel("emptied");
    kernel.add_module_inst(inst.get());
    kernel.add_sample_timestamp(7);
    kernel.add_sample_totalcycle({100});
    const ptree kept = kernel.getJSON(false, no_memories);
    EXPECT_EQ(kernel.get_sample_timestamps(), (Values{7}));
    EXPECT_EQ(inst->getIValidCount(), (Values{5}));
    const ptree reset = kernel.getJSON(true, no_memories);
    EXPECT_TRUE(kernel.get_sample_timestamps().empty());
    EXPECT_TRUE(inst->getIValidCount().empty());
    EXPECT_EQ(node_text(kept), node_text(reset));
}

TEST_F(KernelJsonTest, ANodeKeepsItsSamplesWhileTheKernelGoesOn) {
    TlyKernel kernel("goes_on");
    kernel.add_sample_timestamp(7);
    const ptree node = kernel.getJSON(false, no_memories);
    kernel.add_sample_timestamp(8);
    kernel.resetKernel();
    kernel.add_sample_timestamp(9);
    EXPECT_EQ(node_text(node.get_child("sample_timestamps")), "[7]");
}

} // namespace
