// SPDX-License-Identifier: Apache-2.0
// Samples, invocations and faults of a monitor file, with kernels made by hand.
#include <gtest/gtest.h>

#include "capture.h"
#include "run_fixture.h"

namespace {

using Texts = std::vector<std::string>;

constexpr bool no_profiler = true;

class MonReaderTest : public testing::Test, protected RunFixture {
  protected:
    // A kernel with one instance that counts valid cycles in field 7 and clock cycles in field 8.
    TlyKernel& two_counter_kernel(const std::string& name) {
        TlyKernel& made = kernel(name);
        TlyModuleInst& block = inst(made, "block");
        block.addPortTag("ivalid", 7, 0);
        block.addPortTag("clock", 8, 0);
        return made;
    }
    Texts occupancies() const {
        Texts result;
        for (const auto& [key, node] : nodes("kernels")) {
            std::string text;
            for (const auto& [inner, value] : node.get_child("children.."
                                                             "module_inst_details.occupancy_samples"))
                text += value.data() + " ";
            result.push_back(text);
        }
        return result;
    }
    // Reads the lines, all of which are left out, and returns the messages.
    std::string messages_of_dropped_lines(const Texts& lines) {
        const std::string messages = stderr_of([&] { EXPECT_EQ(read(lines), 0); });
        EXPECT_TRUE(nodes("kernels").empty());
        EXPECT_TRUE(nodes("memtransfers").empty());
        return messages;
    }
};

constexpr const char* never_seen_k = "Warning: no data in the .mon file for the kernel k.\n";

TEST_F(MonReaderTest, AnEmptyFileWarnsOfEveryKernelInKeyOrder) {
    kernel("b");
    kernel("a");
    kernel("c", true);
    EXPECT_EQ(messages_of_dropped_lines({}),
              "Warning: no data in the .mon file for the kernel a.\n"
              "Warning: no data in the .mon file for the kernel b.\n"
              "Warning: no data in the .mon file for the autorun kernel c.\n");
}

TEST_F(MonReaderTest, AMissingFileEndsTheRun) {
    kernel("k");
    const std::string messages = stderr_of([&] { EXPECT_EQ(read_file("/nonexistent/profile.mon"), 1); });
    EXPECT_EQ(messages, "ABORT: .mon file errored while trying to open.\n");
}

TEST_F(MonReaderTest, AFolderCountsAsAnEmptyFile) {
    kernel("k");
    EXPECT_EQ(stderr_of([&] { EXPECT_EQ(read_file("/"), 0); }), never_seen_k);
}

TEST_F(MonReaderTest, LinesOfOneStartTimeAreSamplesOfOneInvocation) {
    two_counter_kernel("one_start");
    EXPECT_EQ(stderr_of([&] {
                  read({"0,1,one_start,1000,1100,-1,2,5,100", "0,2,one_start,1000,1200,-1,2,7,90"});
              }),
              "");
    EXPECT_EQ(values("kernels", "start_time"), (Texts{"1000"}));
    EXPECT_EQ(values("kernels", "end_time"), (Texts{"1200"}));
    EXPECT_EQ(values("kernels", "num_samples"), (Texts{"2"}));
    EXPECT_EQ(values("kernels", "device_ids"), (Texts{"0 0"}));
    EXPECT_EQ(values("kernels", "command_queue_id"), (Texts{"1 2"}));
    EXPECT_EQ(values("kernels", "sample_timestamps"), (Texts{"1100 1200"}));
    EXPECT_EQ(values("kernels", "total_cycles_between_samples"), (Texts{"100 90"}));
    EXPECT_EQ(occupancies(), (Texts{"5 7 "}));
}

TEST_F(MonReaderTest, EachNewStartTimeClosesAnInvocation) {
    two_counter_kernel("three_starts");
    read({"0,1,three_starts,1000,1100,-1,2,5,100", "0,1,three_starts,1000,1200,-1,2,6,100",
          "0,1,three_starts,2000,2100,-1,2,7,50", "0,1,three_starts,3000,3100,-1,2,8,60"});
    EXPECT_EQ(values("kernels", "start_time"), (Texts{"1000", "2000", "3000"}));
    EXPECT_EQ(values("kernels", "num_samples"), (Texts{"2", "1", "1"}));
    EXPECT_EQ(values("kernels", "total_cycles_between_samples"), (Texts{"100 100", "50", "60"}));
    EXPECT_EQ(occupancies(), (Texts{"5 6 ", "7 ", "8 "}));
}

TEST_F(MonReaderTest, LastInvocationsComeInKeyOrderAtTheEnd) {
    two_counter_kernel("order_b");
    two_counter_kernel("order_a");
    read({"0,1,order_b,1,2,-1,2,5,100", "0,1,order_a,3,4,-1,2,6,100", "0,1,order_b,5,6,-1,2,7,100"});
    EXPECT_EQ(values("kernels", "name"), (Texts{"order_b", "order_a", "order_b"}));
    EXPECT_EQ(values("kernels", "start_time"), (Texts{"1", "3", "5"}));
}

TEST_F(MonReaderTest, ADroppedLineLeavesNoTrace) {
    two_counter_kernel("no_trace");
    const std::string messages = stderr_of([&] {
        read({"0,1,no_trace,1000,1100,-1,2,5,100", "0,1,no_trace,2000,x,-1,2,6,100",
              "0,1,no_trace,1000,1200,-1,2,7,100"});
    });
    EXPECT_EQ(messages, "ERROR: Unable to parse sample time. Ignoring .mon line 2\n");
    EXPECT_EQ(values("kernels", "sample_timestamps"), (Texts{"1100 1200"}));
}

TEST_F(MonReaderTest, AnEmptyLineHasAMessageAndIsCounted) {
    two_counter_kernel("k");
    EXPECT_EQ(messages_of_dropped_lines({"", "0,1,k,x,2,-1,2,5,100"}),
              "warning: empty .mon line 1\nERROR: Unable to parse kernel start time. Ignoring .mon line 2\n" +
                  std::string(never_seen_k));
}

TEST_F(MonReaderTest, AnUnknownKernelHasAMessageWithItsLine) {
    two_counter_kernel("k");
    EXPECT_EQ(messages_of_dropped_lines({"0,1,other,1000,2500,-1,1,40"}),
              "Warning: profile.mon has some kernel which is not in the profiler.xml - Ignoring .mon line\n"
              "----> kernel in .mon at line 1: other\n" +
                  std::string(never_seen_k));
}

TEST_F(MonReaderTest, AMinusSignInTheDeviceIdIsTakenForTheName) {
    two_counter_kernel("k");
    EXPECT_EQ(messages_of_dropped_lines({"-1,0,k,1000,2500,-1,1,5"}),
              "Warning: profile.mon has some kernel which is not in the profiler.xml - Ignoring .mon line\n"
              "----> kernel in .mon at line 1: -1\n" +
                  std::string(never_seen_k));
}

TEST_F(MonReaderTest, ANameLosesItsLeadingDigits) {
    two_counter_kernel("x");
    read({"0,1,42x,1000,1100,-1,2,5,100"});
    EXPECT_EQ(values("kernels", "name"), (Texts{"x"}));
}

TEST_F(MonReaderTest, ALineOfDigitsAndCommasThrows) {
    EXPECT_THROW(read({"0,1,2,3"}), std::out_of_range);
}

TEST_F(MonReaderTest, AKernelWithoutInstancesIsSkipped) {
    kernel("k");
    EXPECT_EQ(messages_of_dropped_lines({"0,1,k,1000,2500,-1,1,40"}),
              "profile.mon has some kernel that does not have any moduleinsts - Skipping line 1\n" +
                  std::string(never_seen_k));
}

TEST_F(MonReaderTest, AnOriginalNameLeadsToItsKernel) {
    two_counter_kernel("mapped");
    original_names["original"] = "mapped";
    read({"0,1,original,1000,1100,-1,2,5,100", "0,1,mapped,1000,1200,-1,2,6,100"});
    EXPECT_EQ(values("kernels", "name"), (Texts{"mapped"}));
    EXPECT_EQ(values("kernels", "sample_timestamps"), (Texts{"1100 1200"}));
}

TEST_F(MonReaderTest, AnOriginalNameOfAKernelThatIsMissingThrows) {
    original_names["original"] = "missing";
    EXPECT_THROW(read({"0,1,original,1000,1100,-1,2,5,100"}), std::out_of_range);
}

TEST_F(MonReaderTest, EachFixedFieldHasItsMessageAndOnlyTheFirstFaultIsReported) {
    two_counter_kernel("k");
    const std::pair<const char*, const char*> rows[] = {
        {",1,k,1000,1100,-1,2,5,6", "device id"},
        {"99999999999,,k,1000,1100,-1,2,5,6", "device id"}, // no int
        {"0,,k,1000,1100,-1,2,5,6", "command queue id"},
        {"0,1,k,99999999999999999999,1100,-1,2,5,6", "kernel start time"},
        {"0,1,k,1000,,-1,2,5,6", "sample time"},
        {"0,1,k,1000,1100,,2,5,6", "shared counter type"},
        {"0,1,k,1000,1100,-1,,5,6", "number of counters"},
        {"0,1,k,1000,1100,-1,2147483648,5,6", "number of counters"},
    };
    std::string expected;
    Texts lines;
    for (const auto& [line, field] : rows) {
        lines.push_back(line);
        expected += "ERROR: Unable to parse " + std::string(field) + ". Ignoring .mon line " +
                    std::to_string(lines.size()) + "\n";
    }
    EXPECT_EQ(messages_of_dropped_lines(lines), expected + never_seen_k);
}

TEST_F(MonReaderTest, AKernelLineNeedsEightFields) {
    two_counter_kernel("k");
    EXPECT_EQ(messages_of_dropped_lines({"k", "0,1,k,1000,1100", "0,1,k,1000,1100,-1,0"}),
              "ERROR: Unexpected number of values. Ignoring .mon line 1\n"
              "ERROR: Unexpected number of values. Ignoring .mon line 2\n"
              "ERROR: Unexpected number of values. Ignoring .mon line 3\n" +
                  std::string(never_seen_k));
}

TEST_F(MonReaderTest, TheNumberOfCountersMustBeThatOfTheFieldsAfterIt) {
    two_counter_kernel("k");
    const std::string start =
        "Warning: number of .mon entries does not match number of counters for this kernel. Skipping line ";
    EXPECT_EQ(messages_of_dropped_lines(
                  {"0,1,k,1000,1100,-1,0,5", "0,1,k,1000,1100,-1,2,5,6,", "0,1,k,1000,1100,-1,-1,5"}),
              start + "1\n" + start + "2\n" + start + "3\n" + never_seen_k);
}

TEST_F(MonReaderTest, ACarriageReturnEndsTheLastCounterOnly) {
    two_counter_kernel("carriage");
    EXPECT_EQ(stderr_of([&] { read({"0,1,carriage,1000,1100,-1,2,5,100\r"}); }), "");
    EXPECT_EQ(values("kernels", "total_cycles_between_samples"), (Texts{"100"}));
}

TEST_F(MonReaderTest, TheLastLineNeedsNoNewline) {
    two_counter_kernel("no_newline");
    read_file(file("0,1,no_newline,1000,1100,-1,2,5,100"));
    EXPECT_EQ(occupancies(), (Texts{"5 "}));
}

TEST_F(MonReaderTest, AnInvalidCounterHasAMessageAndCountsAsMinusOne) {
    two_counter_kernel("invalid");
    EXPECT_EQ(stderr_of([&] { read({"0,1,invalid,1000,1100,-1,2,abc,100"}); }),
              "WARNING: value for counter at line 1 was invalid: abc.counter\n"
              "Warning: Invalid request count. Bandwidth measurement might be incorrect.\n");
    EXPECT_EQ(occupancies(), (Texts{"-1 "}));
}

TEST_F(MonReaderTest, ACounterOffsetBeyondTheLineIsAnEmptyField) {
    TlyModuleInst& block = inst(kernel("beyond"), "block");
    block.addPortTag("clock", 7, 0);
    block.addPortTag("memorystalls", 8, 0);
    EXPECT_EQ(stderr_of([&] { read({"0,1,beyond,1000,1100,-1,1,100"}); }),
              "WARNING: value for counter at line 1 was invalid: .counter\n");
    EXPECT_EQ(block.getExtStallCount(), (std::vector<long long>{-1}));
}

TEST_F(MonReaderTest, CountersOfFurtherComputeUnitsAreNotRead) {
    TlyModuleInst& block = inst(kernel("units"), "block");
    block.addPortTag("clock", 7, 0);
    block.addPortTag("ivalid", 8, 1);
    read({"0,1,units,1000,1100,-1,2,100,5"});
    EXPECT_EQ(occupancies(), (Texts{"0 "}));
}

TEST_F(MonReaderTest, AKernelWithoutCycleCountersIsWarnedOfOnEachLine) {
    inst(kernel("no_clock"), "block").addPortTag("ivalid", 7, 0);
    const std::string messages = stderr_of([&] {
        read({"0,1,no_clock,1,2,-1,1,5", "0,1,no_clock,1,3,-1,1,6"});
    });
    EXPECT_EQ(messages,
              "WARNING: No total cycles found for kernel no_clock\n"
              "WARNING: No total cycles found for kernel no_clock\n"
              "Warning: number of cycle samples is not equal to number of valid cycles\n");
    EXPECT_EQ(values("kernels", "total_cycles_between_samples"), (Texts{"(none)"}));
}

TEST_F(MonReaderTest, TransfersTouchNoKernel) {
    two_counter_kernel("k");
    EXPECT_EQ(stderr_of([&] { read({"0,1,.reprogram,3000,3400", "2,3,.usm_memcpy,5,4"}); }), never_seen_k);
    EXPECT_EQ(values("memtransfers", "type_transfer"), (Texts{".reprogram", ".usm_memcpy"}));
    EXPECT_EQ(values("memtransfers", "device_id"), (Texts{"0", "2"}));
    EXPECT_EQ(values("memtransfers", "command_queue_id"), (Texts{"1", "3"}));
    EXPECT_EQ(values("memtransfers", "start_time"), (Texts{"3000", "5"}));
    EXPECT_EQ(values("memtransfers", "end_time"), (Texts{"3400", "4"}));
}

TEST_F(MonReaderTest, ATransferOfEightFieldsEndsWithItsFifth) {
    EXPECT_EQ(stderr_of([&] { read({"0,1,.mem_transfer,3000,3400,9,8,7"}); }), "");
    EXPECT_EQ(values("memtransfers", "end_time"), (Texts{"3400"}));
}

TEST_F(MonReaderTest, AFaultyTransferMakesATransferOfTheNextLine) {
    two_counter_kernel("after_fault");
    const std::string messages = stderr_of([&] {
        read({"0,1,.mem_transfer_read,3000,3400,9", "0,1,after_fault,1000,1100,-1,2,5,100",
              "0,1,after_fault,2000,2100,-1,2,6,100"});
    });
    EXPECT_EQ(messages, "ERROR: Unexpected number of values. Ignoring .mon line 1\n");
    EXPECT_EQ(values("memtransfers", "type_transfer"), (Texts{"after_fault"}));
    EXPECT_EQ(values("memtransfers", "start_time"), (Texts{"1000"}));
    EXPECT_EQ(values("memtransfers", "end_time"), (Texts{"1100"}));
    EXPECT_EQ(values("kernels", "start_time"), (Texts{"2000"}));
}

TEST_F(MonReaderTest, AnUnreadableTransferTimeLeavesTheNextLineATransferToo) {
    two_counter_kernel("after_time");
    original_names["original"] = "after_time";
    const std::string messages = stderr_of([&] {
        read({"0,1,.mem_transfer_read,3000,x", "0,1,unknown,1,2,-1,1,5", "0,1,original,7,8"});
    });
    EXPECT_EQ(messages,
              "ERROR: Unable to parse sample time. Ignoring .mon line 1\n"
              "Warning: profile.mon has some kernel which is not in the profiler.xml - Ignoring .mon line\n"
              "----> kernel in .mon at line 2: unknown\n"
              "Warning: no data in the .mon file for the kernel after_time.\n");
    // The name of the transfer is the kernel's own.
    EXPECT_EQ(values("memtransfers", "type_transfer"), (Texts{"after_time"}));
}

TEST_F(MonReaderTest, WithoutADescriptionUnknownNamesMakeKernels) {
    const std::string messages = stderr_of([&] {
        read({"0,1,b,1000,1100,-1,0", "0,1,a,1,2,-1,5,1,2", "0,1,b,2000,2100,3,0", "-1,0,k,1,2,-1,0"},
             no_profiler);
    });
    EXPECT_EQ(messages, "");
    EXPECT_EQ(values("kernels", "name"), (Texts{"b", "-1", "a", "b"}));
    EXPECT_EQ(values("kernels", "shared_counter_run_type"), (Texts{"-1", "-1", "-1", "3"}));
    EXPECT_EQ(values("kernels", "children"), (Texts{"", "", "", ""}));
    EXPECT_EQ(values("kernels", "total_cycles_between_samples"), (Texts(4, "(none)")));
}

TEST_F(MonReaderTest, WithoutADescriptionTheCountersAreNotCompared) {
    EXPECT_EQ(stderr_of([&] {
                  read({"0,1,free,1,2,-1,x", "0,1,free,1,2,-1,9,1"}, no_profiler);
              }),
              "ERROR: Unable to parse number of counters. Ignoring .mon line 1\n");
    EXPECT_EQ(values("kernels", "num_samples"), (Texts{"1"}));
}

TEST_F(MonReaderTest, WithoutADescriptionThePseudoKernelNeverReachesTheReport) {
    const std::string name = autorun_profile_dummy_kernel;
    EXPECT_EQ(stderr_of([&] {
                  read({"0,1," + name + ",1,2,-1,0", "0,1," + name + ",5,6,-1,0"}, no_profiler);
              }),
              "");
    EXPECT_TRUE(nodes("kernels").empty());
    EXPECT_EQ(kernels.at(name)->get_sample_timestamps(), (std::vector<long long>{2, 6}));
    EXPECT_EQ(kernels.at(name)->get_start_time(), 5);
}

TEST_F(MonReaderTest, PullKernelInfoAppendsANodeAndReturnsOne) {
    TlyKernel& made = two_counter_kernel("pulled");
    made.add_sample_timestamp(5);
    EXPECT_EQ(pullKernelInfo(&made, &tree, false, ext_mems), 1);
    EXPECT_EQ(made.get_sample_timestamps(), (std::vector<long long>{5})) << "it was not to be reset";
    EXPECT_EQ(pullKernelInfo(&made, &tree, true, ext_mems), 1);
    EXPECT_EQ(values("kernels", "sample_timestamps"), (Texts{"5", "5"}));
    EXPECT_TRUE(made.get_sample_timestamps().empty());

    TlyKernel& pseudo = kernel(autorun_profile_dummy_kernel);
    pseudo.add_sample_timestamp(5);
    EXPECT_EQ(pullKernelInfo(&pseudo, &tree, true, ext_mems), 1);
    EXPECT_EQ(nodes("kernels").size(), 2u);
    EXPECT_EQ(pseudo.get_sample_timestamps().size(), 1u);
}

} // namespace
