// SPDX-License-Identifier: Apache-2.0
// The module instance as a record: attributes, source locations, tags, the life of its samples.
#include "tly_module_inst.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "capture.h"
#include "inst_builder.h"

namespace {

using Values = std::vector<long long>;

TEST(TlyModuleInst, AChangeOfTheLocationsHasANumberOfItsOwn) {
    const auto other = InstBuilder{.function = "described"}.make();
    const auto inst = InstBuilder{.function = "described"}.make();
    std::vector<std::uint64_t> numbers{other->description_number(), inst->description_number()};
    inst->addLine(1);
    numbers.push_back(inst->description_number());
    inst->addFilename("f");
    numbers.push_back(inst->description_number());
    inst->addColNum(2);
    numbers.push_back(inst->description_number());
    inst->addIsCallsite(true);
    numbers.push_back(inst->description_number());
    std::sort(numbers.begin(), numbers.end());
    EXPECT_EQ(std::adjacent_find(numbers.begin(), numbers.end()), numbers.end());
    EXPECT_GT(numbers.front(), 0u);
    const std::uint64_t last = inst->description_number();
    inst->reset();
    EXPECT_EQ(inst->description_number(), last);
}

TEST(TlyModuleInst, KeepsItsAttributes) {
    const TlyModuleInst inst("n", "m", "f", "mt", "rw", "lsu", "gm", "bw", "opt", true, 3, true);
    EXPECT_EQ(inst.getName(), "n");
    EXPECT_EQ(inst.getModule(), "m");
    EXPECT_EQ(inst.getFunction(), "f");
    EXPECT_EQ(inst.getAttrMemoryType(), "mt");
    EXPECT_EQ(inst.getAttrRw(), "rw");
    EXPECT_EQ(inst.getAttrLsuType(), "lsu");
    EXPECT_EQ(inst.getAttrGlobalMemName(), "gm");
    EXPECT_EQ(inst.getAttrByteWidth(), "bw");
    EXPECT_EQ(inst.getAttrMemoryOpt(), "opt");
    EXPECT_TRUE(inst.isAutorun());
    EXPECT_EQ(inst.getNumComputeUnits(), 3);
    EXPECT_TRUE(inst.compiledSharedCounters());
}

TEST(TlyModuleInst, StartsEmpty) {
    const auto inst = InstBuilder{.function = "starts_empty"}.make();
    EXPECT_EQ(inst->getFmax(), 0.0f);
    EXPECT_EQ(inst->getNPorts(), 0);
    EXPECT_EQ(inst->getNTags(), 0);
    EXPECT_EQ(inst->getPortTagSize(), 0);
    EXPECT_EQ(inst->getNumLines(), 0);
    EXPECT_EQ(inst->getNumCols(), 0);
    EXPECT_EQ(inst->getNumFilenames(), 0);
    EXPECT_EQ(inst->getNumExtMems(), 0);
    EXPECT_EQ(inst->getNumHasShared(), 0);
    EXPECT_FALSE(inst->hasSharedPorts());
    EXPECT_FALSE(inst->getIReqCountValid());
    EXPECT_FALSE(inst->getHasTotalFifoSize());
    EXPECT_FALSE(inst->getHasMaxFifoSize());
    EXPECT_TRUE(inst->getInvalidValues().empty());
    EXPECT_TRUE(inst->getIValidCount().empty());
}

TEST(TlyModuleInst, IndexedSourceGettersReturnSentinelsOutsideTheirLists) {
    const auto inst = InstBuilder{.function = "sources"}.make();
    inst->addFilename("a.cl");
    inst->addLine(7);
    inst->addColNum(3);
    inst->addIsCallsite(true);
    inst->addIsCallsite(false);
    EXPECT_EQ(inst->getFileName(0), "a.cl");
    EXPECT_EQ(inst->getLine(0), 7);
    EXPECT_EQ(inst->getColNum(0), 3);
    EXPECT_EQ(inst->getIsCallsite(0), 1);
    EXPECT_EQ(inst->getIsCallsite(1), 0);
    for (const int outside : {-1, 2, 100}) {
        EXPECT_EQ(inst->getFileName(outside), "") << outside;
        EXPECT_EQ(inst->getLine(outside), -1) << outside;
        EXPECT_EQ(inst->getColNum(outside), -1) << outside;
        EXPECT_EQ(inst->getIsCallsite(outside), -1) << outside;
    }
    EXPECT_EQ(inst->getLine(1), -1); // just past the end
}

TEST(TlyModuleInst, SampleGettersReturnMinusOneOutsideTheirLists) {
    const auto inst = InstBuilder{.function = "sample_getters", .tags = {"ivalid"}}.make();
    add_sample(*inst, {"5"});
    EXPECT_EQ(inst->getIValidCountSample(0), 5);
    EXPECT_EQ(inst->getIReqCountSample(0), 0);
    EXPECT_EQ(inst->getCacheHitsSample(0), 0);
    EXPECT_EQ(inst->getBandwidthSample(0), 0);
    EXPECT_EQ(inst->getIdleSample(0), 0);
    EXPECT_EQ(inst->getNBurstsSample(0), 0);
    EXPECT_EQ(inst->getTotalBurstWordsSample(0), 0);
    for (const int outside : {-1, 1, 50}) {
        EXPECT_EQ(inst->getIValidCountSample(outside), -1) << outside;
        EXPECT_EQ(inst->getIReqCountSample(outside), -1) << outside;
        EXPECT_EQ(inst->getCacheHitsSample(outside), -1) << outside;
        EXPECT_EQ(inst->getBandwidthSample(outside), -1) << outside;
        EXPECT_EQ(inst->getIdleSample(outside), -1) << outside;
        EXPECT_EQ(inst->getNBurstsSample(outside), -1) << outside;
        EXPECT_EQ(inst->getTotalBurstWordsSample(outside), -1) << outside;
    }
}

TEST(TlyModuleInst, PortsAreKeptInTheOrderOfAdding) {
    const auto inst = InstBuilder{.function = "ports"}.make();
    inst->addPortTag("ivalid", 9, 0);
    inst->addPortTag("idle", 7, 2);
    EXPECT_EQ(inst->getPortTagList(), (std::vector<std::string>{"ivalid", "idle"}));
    EXPECT_EQ(inst->getPortTagOffsets(), (std::vector<int>{9, 7}));
    EXPECT_EQ(inst->getPortCompUnit(1), 2);
    EXPECT_THROW(inst->getPortCompUnit(2), std::out_of_range);
    EXPECT_THROW(inst->getPortCompUnit(-1), std::out_of_range);
    EXPECT_EQ(inst->getNPorts(), 2);
    EXPECT_EQ(inst->getNTags(), 2);
    EXPECT_EQ(inst->getPortTagSize(), 2);
}

// The offset of the cycle counter has no getter; getCsvTotalCycles reads the field that it names.
TEST(TlyModuleInst, BothCycleTagsSetTheOffsetOfTheCycleCounter) {
    std::string fields[] = {"0", "1", "2", "3", "4", "5", "6", "7", "8", "90"};
    for (const char* tag : {"clock", "clock_foo_function"}) {
        const auto inst = InstBuilder{.function = "foo"}.make();
        inst->addPortTag(tag, 9, 0);
        EXPECT_EQ(inst->getCsvTotalCycles(fields, 10), 90) << tag;
    }
    const auto first = InstBuilder{.function = "foo"}.make();
    first->addPortTag("clock", 0, 0);
    std::string one_field[] = {"70"};
    EXPECT_EQ(first->getCsvTotalCycles(one_field, 1), 70);
    const auto other = InstBuilder{.function = "foo"}.make();
    other->addPortTag("clock_bar_function", 9, 0);
    EXPECT_EQ(other->getCsvTotalCycles(fields, 10), -1);
}

TEST(TlyModuleInst, CsvTotalCyclesShowMissingAndBadFields) {
    const auto inst = InstBuilder{.function = "csv"}.make();
    inst->addPortTag("clock", 1, 0);
    std::string fields[] = {"5", "x"};
    EXPECT_EQ(inst->getCsvTotalCycles(fields, 1), -1);
    EXPECT_EQ(inst->getCsvTotalCycles(fields, 2), -2);
    EXPECT_EQ(inst->getInvalidValues(), (std::vector<std::string>{"x.cycle"}));
    inst->clearInvalidValues();
    EXPECT_TRUE(inst->getInvalidValues().empty());
}

TEST(TlyModuleInst, OffsetsOfAnAutorunInstanceMove) {
    const auto inst = InstBuilder{.function = "moved", .autorun = true, .tags = {"ivalid", "clock"}}.make();
    inst->updateAutorunOffsets(5);
    EXPECT_EQ(inst->getPortTagOffsets(), (std::vector<int>{5, 6}));
    std::string fields[] = {"0", "1", "2", "3", "4", "5", "60"};
    EXPECT_EQ(inst->getCsvTotalCycles(fields, 7), 60);
}

TEST(TlyModuleInst, AnAutorunInstanceWithoutACycleCounterStaysWithoutOne) {
    const auto inst = InstBuilder{.function = "no_cycles", .autorun = true, .tags = {"ivalid"}}.make();
    inst->updateAutorunOffsets(5);
    EXPECT_EQ(inst->getPortTagOffsets(), (std::vector<int>{5}));
    std::string fields[] = {"0", "1", "2", "3", "4", "5"};
    EXPECT_EQ(inst->getCsvTotalCycles(fields, 6), -1); // not field 4, which an offset of -1 + 5 would name
}

TEST(TlyModuleInst, OffsetsOfOtherInstancesStay) {
    const auto inst = InstBuilder{.function = "stays", .tags = {"ivalid"}}.make();
    inst->updateAutorunOffsets(5);
    EXPECT_EQ(inst->getPortTagOffsets(), (std::vector<int>{0}));
}

TEST(TlyModuleInst, TheFirstOffsetOfASharedTagStays) {
    const auto inst = InstBuilder{.function = "shared_tags"}.make();
    EXPECT_EQ(inst->getSharedOffset("shared"), -1);
    inst->addSharedTag("shared", 9);
    inst->addSharedTag("shared", 12);
    EXPECT_EQ(inst->getSharedOffset("shared"), 9);
    EXPECT_EQ(inst->getSharedOffset("chread_shared"), -1);
    EXPECT_TRUE(inst->hasSharedPorts());
    inst->addHasShared(1);
    inst->addHasShared(2);
    EXPECT_EQ(inst->getNumHasShared(), 3);
}

TEST(TlyModuleInst, AllListsHaveAnEntryForEachLine) {
    const auto inst = InstBuilder{.function = "all_lists", .tags = {"ivalid"}}.make();
    add_sample(*inst, {"5"});
    add_sample(*inst, {"6"});
    EXPECT_EQ(inst->getIValidCount(), (Values{5, 6}));
    for (const auto& list :
         {inst->getOStallCount(), inst->getIStallCount(), inst->getExtStallCount(), inst->getIReqCount(),
          inst->getUnalignedAccesses(), inst->getCacheHits(), inst->getBandwidth(), inst->getIdleCount(),
          inst->getNBursts(), inst->getTotalBurstWords(), inst->getTotalFifoSize(), inst->getMaxFifoSize()})
        EXPECT_EQ(list, (Values{0, 0}));
}

TEST(TlyModuleInst, ACounterThatIsNamedLaterHasZerosForTheSamplesBefore) {
    const auto inst = InstBuilder{.function = "named_later", .tags = {"ivalid"}}.make();
    add_sample(*inst, {"5"});
    inst->addPortTag("idle", 0, 0);
    add_sample(*inst, {"6"});
    EXPECT_EQ(inst->getIdleCount(), (Values{0, 6}));
    inst->partialReset();
    inst->updateSingleCounter("cachehit", 8, true);
    inst->pushValuesOnVectors();
    EXPECT_EQ(inst->getCacheHits(), (Values{0, 0, 8}));
    EXPECT_EQ(inst->getIdleCount(), (Values{0, 6, 0}));
}

TEST(TlyModuleInst, ResetEmptiesSamplesAndFlagsAndKeepsTags) {
    const auto inst =
        InstBuilder{.function = "reset",
                    .tags = {"totalreq", "chread_total_fifo_size", "chread_max_fifo_size", "clock",
                             "profile_extmem_k_function_m_bank0_port0_read_data_inc_en_x"}}
            .make();
    inst->addSharedTag("shared", 3);
    inst->addHasShared(1);
    stderr_of([&] { add_sample(*inst, {"5", "6", "7", "8", "x"}); });
    EXPECT_TRUE(inst->getIReqCountValid());
    EXPECT_TRUE(inst->getHasTotalFifoSize());
    EXPECT_TRUE(inst->getHasMaxFifoSize());
    EXPECT_EQ(inst->getNumExtMems(), 1);
    EXPECT_EQ(inst->getInvalidValues().size(), 1u);
    EXPECT_EQ(inst->getTotalCycles(), (Values{8}));

    inst->reset();
    EXPECT_FALSE(inst->getIReqCountValid());
    EXPECT_FALSE(inst->getHasTotalFifoSize());
    EXPECT_FALSE(inst->getHasMaxFifoSize());
    EXPECT_EQ(inst->getNumExtMems(), 0);
    EXPECT_TRUE(inst->getInvalidValues().empty());
    EXPECT_TRUE(inst->getIReqCount().empty());
    EXPECT_TRUE(inst->getIStallCount().empty());
    EXPECT_EQ(stderr_of([&] { EXPECT_TRUE(inst->getTotalCycles().empty()); }), ""); // the entry is there
    EXPECT_EQ(inst->getNTags(), 5);
    EXPECT_EQ(inst->getSharedOffset("shared"), 3);
    EXPECT_EQ(inst->getNumHasShared(), 1);

    add_sample(*inst, {"1", "2", "3", "4", "50"});
    EXPECT_EQ(inst->getIReqCount(), (Values{1}));
    EXPECT_EQ(inst->getTotalCycles(), (Values{4}));
    EXPECT_EQ(inst->getNumExtReads("m", 0, 0), (Values{50}));
}

TEST(TlyModuleInst, TotalCyclesAreThoseOfTheFunction) {
    const auto clocked = InstBuilder{.function = "of_function", .tags = {"clock"}}.make();
    const auto other = InstBuilder{.function = "of_function", .tags = {"ivalid"}}.make();
    add_sample(*clocked, {"100"});
    add_sample(*other, {"5"});
    add_sample(*clocked, {"90"});
    EXPECT_EQ(other->getTotalCycles(), (Values{100, 90}));
    clocked->reset();
    EXPECT_TRUE(other->getTotalCycles().empty());
}

TEST(TlyModuleInst, EachInstanceWithACycleCounterAddsToTheCyclesOfTheFunction) {
    const auto a = InstBuilder{.function = "two_clocks", .tags = {"clock"}}.make();
    const auto b = InstBuilder{.function = "two_clocks", .tags = {"clock_two_clocks_function"}}.make();
    add_sample(*a, {"100"});
    add_sample(*b, {"101"});
    EXPECT_EQ(a->getTotalCycles(), (Values{100, 101}));
}

TEST(TlyModuleInst, MakingAnInstanceResetsTheCyclesOfItsFunction) {
    const auto first = InstBuilder{.function = "made_later", .tags = {"clock"}}.make();
    add_sample(*first, {"100"});
    // cppcheck-suppress unreadVariable ; that it is made is what counts
    const auto second = InstBuilder{.function = "made_later"}.make();
    EXPECT_TRUE(first->getTotalCycles().empty());
}

TEST(TlyModuleInst, AFunctionWithoutCyclesIsWarnedOf) {
    const auto inst = InstBuilder{.function = "cycleless", .tags = {"ivalid"}}.make();
    add_sample(*inst, {"5"});
    EXPECT_EQ(stderr_of([&] { EXPECT_TRUE(inst->getTotalCycles().empty()); }),
              "WARNING: No total cycles found for kernel cycleless\n");
}

// 1 stall in 3 cycles: 10000 / 3 = 3333.33, rounded up 3334, in percent 33.34.
TEST(TlyModuleInst, StallPercentageOfTheLastSampleIsRoundedUp) {
    const auto inst = InstBuilder{.function = "stalls", .tags = {"memorystalls", "clock"}}.make();
    add_sample(*inst, {"9", "10"});
    add_sample(*inst, {"1", "3"});
    EXPECT_EQ(inst->getStallPercentage(), 3334.0f / 100.0f);
}

TEST(TlyModuleInstDeathTest, StallPercentageNeedsASample) {
    const auto inst = InstBuilder{.function = "no_stalls", .tags = {"memorystalls", "clock"}}.make();
    EXPECT_DEATH(inst->getStallPercentage(), "Assertion `!stalls.empty\\(\\)' failed");
}

TEST(TlyModuleInstDeathTest, StallPercentageNeedsCycles) {
    const auto inst = InstBuilder{.function = "stalls_alone", .tags = {"memorystalls"}}.make();
    add_sample(*inst, {"1"});
    EXPECT_DEATH(inst->getStallPercentage(),
                 "No total cycles found for kernel stalls_alone\n.*"
                 "Assertion `!cycles.empty\\(\\)' failed");
}

TEST(TlyModuleInst, SampleTimestampsAreThoseOfTheFunction) {
    const auto inst = InstBuilder{.function = "timestamps"}.make();
    const auto twin = InstBuilder{.function = "timestamps"}.make();
    EXPECT_EQ(stderr_of([&] { EXPECT_TRUE(inst->getSampleTimestamps().empty()); }),
              "WARNING: no sample timestamps in moduleInst\n");
    inst->addSampleTimestamp(5);
    twin->addSampleTimestamp(6);
    EXPECT_EQ(inst->getSampleTimestamps(), (Values{5, 6}));
    const auto unrelated = InstBuilder{.function = "any_other"}.make(); // is reset when it is made
    stderr_of([&] { EXPECT_TRUE(inst->getSampleTimestamps().empty()); });
}

} // namespace
