// SPDX-License-Identifier: Apache-2.0
// What the reader and the nodes that it makes cost in allocations and memory.
#include <gtest/gtest.h>

#include "counting_new.h"
#include "folded_nodes.h"
#include "run_fixture.h"

namespace {

constexpr const char* kernel_name = "a_kernel_with_a_name_longer_than_a_small_string";

// Adds instances of three counters each to the kernel, and returns their number of counters.
int add_instances(RunFixture& run, int num_insts) {
    TlyKernel& made = run.kernel(kernel_name);
    int offset = 7;
    for (int i = 0; i < num_insts; ++i) {
        TlyModuleInst& block = run.inst(made, "block" + std::to_string(i));
        block.addPortTag(i == 0 ? "clock" : "idle", offset++, 0);
        block.addPortTag("ivalid", offset++, 0);
        block.addPortTag("profile_extmem_k_function_memory_bank1_port2_read_data_inc_en_x", offset++, 0);
    }
    return offset - 7;
}

std::string monitor_text(int num_lines, int num_counters) {
    std::string content;
    for (int line = 0; line < num_lines; ++line) {
        content += "0,1," + std::string(kernel_name) + ",1000," + std::to_string(line + 1) + ",-1," +
                   std::to_string(num_counters);
        for (int counter = 0; counter < num_counters; ++counter)
            content += "," + std::to_string(1 + line * 7 + counter);
        content += "\n";
    }
    return content;
}

// Allocations while a kernel with that many instances reads that many lines. Without any instance there is no
// description.
std::size_t allocations_of(int num_lines, int num_insts) {
    RunFixture run;
    const bool no_profiler = num_insts == 0;
    const int num_fields = no_profiler ? 5 : add_instances(run, num_insts);
    const std::string path = run.file(monitor_text(num_lines, num_fields));
    const std::size_t before = allocation_count();
    EXPECT_EQ(run.read_file(path, no_profiler), 0);
    return allocation_count() - before;
}

// The list of a function's total cycles lives as long as the process, so the first of two readings also pays
// for its growth; and which reading in an expression comes first is the compiler's choice. One before
// all others pays.
class Allocation : public testing::Test {
  protected:
    static void SetUpTestSuite() { allocations_of(20000, 1); }
};

// A list grows by doubling. Between 10,000 and 20,000 values that is once, at 16,384: three lists of each
// instance, and of the kernel's four those that aren't zeros alone.
TEST_F(Allocation, TenThousandMoreLinesCostNoMoreThanTheGrowthOfTheLists) {
    constexpr int num_insts = 20;
    EXPECT_LE(allocations_of(20000, num_insts), allocations_of(10000, num_insts) + 3 * num_insts + 4);
}

TEST_F(Allocation, WithoutADescriptionLinesCostOnlyTheGrowthOfTheKernelsLists) {
    EXPECT_LE(allocations_of(20000, 0), allocations_of(10000, 0) + 4);
}

// Were a line to cost anything for each of its 500 instances, 1,000 more lines would show it 500,000 times.
// The lists grow once, at 1,024.
TEST_F(Allocation, InstancesCostNothingOnALine) {
    constexpr int num_insts = 500;
    EXPECT_LE(allocations_of(2000, num_insts), allocations_of(1000, num_insts) + 3 * num_insts + 4);
}

TEST_F(Allocation, CountersThatAreAlwaysZeroStoreNothing) {
    SampleList<long long> zeros;
    const std::size_t before = allocation_count();
    for (int i = 0; i < 1000000; ++i)
        zeros.push_back(0);
    EXPECT_EQ(allocation_count(), before);
    EXPECT_EQ(zeros.size(), 1000000u);
}

// The node of an invocation shares the lists of its kernel: its allocations don't grow with the samples.
TEST_F(Allocation, ANodeCopiesNoSamples) {
    TlyKernel kernel("k");
    const auto allocations_of_node = [&] {
        std::unordered_map<std::string, TlyExtMem*> no_memories;
        const std::size_t before = allocation_count();
        ptree node = kernel.getJSON(false, no_memories);
        return allocation_count() - before;
    };
    kernel.add_sample_timestamp(1);
    const std::size_t with_one = allocations_of_node();
    for (int i = 0; i < 100000; ++i)
        kernel.add_sample_timestamp(i);
    EXPECT_LE(allocations_of_node(),
              with_one + 1); // the text of the last time may be too long for a small string
}

// The most memory that is held while a line with this many counters is read, for each of its bytes. All
// counters but three have the text `rest`.
double bytes_of_each_byte(int num_counters, const std::string& rest) {
    RunFixture run;
    add_instances(run, 1);
    std::string line =
        "0,1," + std::string(kernel_name) + ",1000,1,-1," + std::to_string(num_counters) + ",5,6,7";
    for (int counter = 3; counter < num_counters; ++counter)
        line += "," + rest;
    const std::string path = run.file(line);
    restart_most_bytes();
    EXPECT_EQ(run.read_file(path), 0);
    EXPECT_EQ(run.values("kernels", "num_samples"), std::vector<std::string>{"1"}) << "the line was left out";
    return static_cast<double>(most_bytes()) / static_cast<double>(line.size());
}

// The reader's buffer grows by doubling, and while it grows there are two of them: three bytes for each byte.
TEST_F(Allocation, ALineOfVeryManyShortFieldsTakesAFewTimesItsSize) {
    EXPECT_LT(bytes_of_each_byte(1'060'000, ""), 6);
    EXPECT_LT(bytes_of_each_byte(530'000, "1"), 6);
}

TEST_F(Allocation, AFewSmallNodesTakeAFewKilobytes) {
    restart_most_bytes();
    FoldedNodes nodes;
    for (const char* name : {"first", "second"}) {
        nodes.open({}, Form::object);
        nodes.text("name", name);
        nodes.close();
    }
    // The first block is of 4 KiB; the keys and their table come to less than that.
    EXPECT_LT(most_bytes(), 8192u);
}

} // namespace
