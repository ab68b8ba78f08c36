// SPDX-License-Identifier: Apache-2.0
// The node of a kernel's invocation.
#include <gtest/gtest.h>

#include "capture.h"
#include "inst_builder.h"
#include "node_text.h"
#include "tly_json.h"
#include "tly_kernel.h"

namespace {

using Values = std::vector<long long>;
using ExtMems = std::unordered_map<std::string, TlyExtMem*>;

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

    KernelJsonTest() { memory.add_interface("bank", 512, {"p0", "p1", "p2"}); }

    TlyExtMem memory{"DDR", 0.0f};
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
    ExtMems memories{{"DDR", &memory}};
    // Port 1 has neither reads nor writes.
    EXPECT_EQ(child_names(kernel.getJSON(false, memories)),
              (std::vector<std::string>{"before", "DDR:p0", "DDR:p2", "after"}));
}

TEST_F(KernelJsonTest, AMemoryThatTheBoardDoesNotListIsReportedAndLeftOut) {
    const auto carrier = wrapper("unlisted", "HBM");
    TlyKernel kernel("unlisted");
    kernel.add_module_inst(carrier.get());
    kernel.add_sample_totalcycle({100});
    ExtMems memories{{"DDR", &memory}};
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
