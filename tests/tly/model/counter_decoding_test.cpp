// SPDX-License-Identifier: Apache-2.0
// How the fields of a line reach the counters.
#include <gtest/gtest.h>

#include <climits>
#include <functional>

#include "capture.h"
#include "inst_builder.h"

namespace {

using Values = std::vector<long long>;
using Getter = std::function<Values(const TlyModuleInst&)>;

struct Family {
    std::vector<std::string> tags;
    Getter samples;
};

const std::vector<Family>& families() {
    static const std::vector<Family> table = {
        {{"ostall", "chread_ostall", "chwrite_ostall"}, &TlyModuleInst::getOStallCount},
        {{"istall", "chread_istall", "chwrite_istall"}, &TlyModuleInst::getIStallCount},
        {{"memorystalls", "chread_fifo_stall", "chwrite_fifo_stall"}, &TlyModuleInst::getExtStallCount},
        {{"ivalid", "chread_ivalid", "chwrite_ivalid", "loop_ivalid"}, &TlyModuleInst::getIValidCount},
        {{"totalreq", "chread_total_req", "chwrite_total_req"}, &TlyModuleInst::getIReqCount},
        {{"unalignedrequests"}, &TlyModuleInst::getUnalignedAccesses},
        {{"cachehit"}, &TlyModuleInst::getCacheHits},
        {{"bandwidth"}, &TlyModuleInst::getBandwidth},
        {{"idle", "chread_idle", "chwrite_idle"}, &TlyModuleInst::getIdleCount},
        {{"readwritecount"}, &TlyModuleInst::getNBursts},
        {{"burstcount"}, &TlyModuleInst::getTotalBurstWords},
        {{"chread_total_fifo_size", "chwrite_total_fifo_size"}, &TlyModuleInst::getTotalFifoSize},
        {{"chread_max_fifo_size", "chwrite_max_fifo_size"}, &TlyModuleInst::getMaxFifoSize},
    };
    return table;
}

TEST(CounterDecoding, EachTagFeedsItsOwnFamilyAlone) {
    for (const Family& family : families()) {
        for (const std::string& tag : family.tags) {
            const auto inst = InstBuilder{.function = "family", .tags = {tag}}.make();
            add_sample(*inst, {"5"});
            for (const Family& other : families())
                EXPECT_EQ(other.samples(*inst), (Values{&other == &family ? 5 : 0}))
                    << tag << ", " << other.tags[0];
        }
    }
}

TEST(CounterDecoding, TagsOfOneFamilyAreSummed) {
    for (const Family& family : families()) {
        InstBuilder builder{.function = "summed", .tags = family.tags};
        builder.tags.push_back(family.tags[0]);
        std::vector<std::string> fields;
        long long sum = 0;
        for (std::size_t i = 0; i < builder.tags.size(); ++i) {
            fields.push_back(std::to_string(1 << i));
            sum += 1 << i;
        }
        const auto inst = builder.make();
        add_sample(*inst, fields);
        EXPECT_EQ(family.samples(*inst), (Values{sum})) << family.tags[0];
    }
}

TEST(CounterDecoding, SumsWrapAt64Bits) {
    const auto inst = InstBuilder{.function = "wraps", .tags = {"ivalid", "loop_ivalid"}}.make();
    add_sample(*inst, {"9223372036854775807", "2"}); // 2^63 - 1 + 2 wraps to -2^63 + 1
    EXPECT_EQ(inst->getIValidCount(), (Values{LLONG_MIN + 1}));
}

TEST(CounterDecoding, BothCycleTagsFeedTheTotalCycles) {
    const auto inst = InstBuilder{.function = "cycles", .tags = {"clock", "clock_cycles_function"}}.make();
    add_sample(*inst, {"5", "6"});
    EXPECT_EQ(inst->getTotalCycles(), (Values{11}));
}

TEST(CounterDecoding, UnknownTagsAreIgnoredSilently) {
    const auto inst =
        InstBuilder{.function = "unknown", .tags = {"clock_other_function", "shared", "", "IVALID"}}.make();
    EXPECT_EQ(stderr_of([&] { EXPECT_EQ(add_sample(*inst, {"1", "2", "3", "4"}), 0); }), "");
    for (const Family& family : families())
        EXPECT_EQ(family.samples(*inst), (Values{0})) << family.tags[0];
}

TEST(CounterDecoding, AnInvalidValueIsReportedAndCountsAsMinusOneAndTheNextTagGoesOn) {
    const auto inst = InstBuilder{.function = "invalid", .tags = {"ivalid", "idle"}}.make();
    const std::string messages = stderr_of([&] {
        EXPECT_EQ(add_sample(*inst, {"abc", "7"}, SHARED_NONE, 12), -1);
    });
    EXPECT_EQ(messages, "WARNING: value for counter at line 12 was invalid: abc.counter\n");
    EXPECT_EQ(inst->getIValidCount(), (Values{-1}));
    EXPECT_EQ(inst->getIdleCount(), (Values{7}));
    EXPECT_EQ(inst->getInvalidValues(), (std::vector<std::string>{"abc.counter"}));
    EXPECT_EQ(add_sample(*inst, {"1", "2"}), 0); // the result is that of the line
    EXPECT_EQ(inst->getInvalidValues().size(), 1u);
}

TEST(CounterDecoding, OffsetsOutsideTheLineAreEmptyFields) {
    const auto inst = InstBuilder{.function = "outside"}.make();
    inst->addPortTag("ivalid", 2, 0);
    inst->addPortTag("idle", -1, 0);
    inst->addPortTag("ostall", INT_MAX, 0);
    inst->addPortTag("istall", INT_MIN, 0);
    std::string expected;
    for (int i = 0; i < 4; ++i)
        expected += "WARNING: value for counter at line 1 was invalid: .counter\n";
    EXPECT_EQ(stderr_of([&] { EXPECT_EQ(add_sample(*inst, {"1", "2"}), -1); }), expected);
    EXPECT_EQ(inst->getIValidCount(), (Values{-1}));
    EXPECT_EQ(inst->getIdleCount(), (Values{-1}));
}

TEST(CounterDecoding, OnlyTheCountersOfTheAskedComputeUnitAreRead) {
    const auto inst = InstBuilder{.function = "units"}.make();
    inst->addPortTag("ivalid", 0, 0);
    inst->addPortTag("idle", 1, 1);
    inst->updateCounters({"5", "bad"}, 0, 0, true, SHARED_NONE, 1); // the other unit's field isn't looked at
    inst->updateCounters({"bad", "6"}, 1, 0, true, SHARED_NONE, 2);
    inst->updateCounters({"7", "8"}, -1, 0, true, SHARED_NONE, 3);
    EXPECT_EQ(inst->getIValidCount(), (Values{5, 0, 7}));
    EXPECT_EQ(inst->getIdleCount(), (Values{0, 6, 8}));
}

// Of the counters in fields 0 and 1.
TEST(CounterDecoding, BlocksAreTakenWhereTheLineHasAllCounters) {
    const auto inst = InstBuilder{.function = "blocks", .tags = {"ivalid", "ostall"}}.make();
    EXPECT_TRUE(inst->can_take_blocks(0, 2, 0));
    EXPECT_FALSE(inst->can_take_blocks(1, 2, 0)) << "field 0 comes before the counters";
    EXPECT_FALSE(inst->can_take_blocks(0, 1, 0)) << "field 1 is not on the line";
    EXPECT_TRUE(inst->can_take_blocks(1, 1, 1)) << "another compute unit has no counters";
}

TEST(CounterDecoding, WithoutPushValuesGatherForTheNextSample) {
    const auto inst = InstBuilder{.function = "gather", .tags = {"ivalid"}}.make();
    inst->updateCounters({"5"}, 0, 1, false, SHARED_NONE, 1);
    inst->updateCounters({"6"}, 0, 1, false, SHARED_NONE, 2);
    EXPECT_TRUE(inst->getIValidCount().empty());
    inst->pushValuesOnVectors();
    EXPECT_EQ(inst->getIValidCount(), (Values{11}));
    add_sample(*inst, {"1"}); // a pushed line starts at 0
    EXPECT_EQ(inst->getIValidCount(), (Values{11, 1}));
}

// Tags of each kind of shared counter, in the order of the run types.
const std::vector<std::vector<std::string>> shared_kinds = {
    {"ivalid", "chread_ivalid", "chwrite_ivalid", "loop_ivalid"},
    {"memorystalls", "chread_fifo_stall", "chwrite_fifo_stall"},
    {"idle", "chread_idle", "chwrite_idle"},
    {"totalreq", "chread_total_req", "chwrite_total_req"},
};

TEST(SharedCounters, TheMappingHasThirteenTags) {
    std::size_t num_tags = 0;
    for (std::size_t type = 0; type < shared_kinds.size(); ++type) {
        for (const std::string& tag : shared_kinds[type]) {
            EXPECT_EQ(TlyModuleInst::CNT_SHARED_MAPPING.at(tag), static_cast<int>(type)) << tag;
            ++num_tags;
        }
    }
    EXPECT_EQ(num_tags, 13u);
    EXPECT_EQ(TlyModuleInst::CNT_SHARED_MAPPING.size(), 13u);
}

TEST(SharedCounters, ARunFeedsOnlyTheTagsOfItsKind) {
    const Getter getters[] = {&TlyModuleInst::getIValidCount, &TlyModuleInst::getExtStallCount,
                              &TlyModuleInst::getIdleCount, &TlyModuleInst::getIReqCount};
    for (int type = 0; type < 4; ++type) {
        const auto inst = InstBuilder{.function = "kinds", .shared = true}.make();
        for (const auto& kind : shared_kinds)
            inst->addPortTag(kind.front(), 0, 0);
        add_sample(*inst, {"9"}, static_cast<SharedCounterTypes>(type));
        for (int other = 0; other < 4; ++other)
            EXPECT_EQ(getters[other](*inst), (Values{other == type ? 9 : 0})) << type << ", " << other;
    }
}

TEST(SharedCounters, WithoutATypeEachTagAtAnOffsetTakesTheValue) {
    const auto inst = InstBuilder{.function = "no_type"}.make();
    inst->addPortTag("ivalid", 0, 0);
    inst->addPortTag("memorystalls", 0, 0);
    add_sample(*inst, {"9"});
    EXPECT_EQ(inst->getIValidCount(), (Values{9}));
    EXPECT_EQ(inst->getExtStallCount(), (Values{9}));
}

TEST(SharedCounters, TagsOutsideTheMappingAreReadInEveryRun) {
    const auto inst = InstBuilder{.function = "unmapped", .shared = true, .tags = {"burstcount"}}.make();
    for (const auto type : {SHARED_IVALID, SHARED_EXT_STALL, SHARED_IDLE, SHARED_TOTAL_REQ})
        add_sample(*inst, {"5"}, type);
    EXPECT_EQ(inst->getTotalBurstWords(), (Values{5, 5, 5, 5}));
}

TEST(SharedCounters, TypesMayChangeFromLineToLine) {
    const auto inst = InstBuilder{.function = "changing", .shared = true}.make();
    inst->addPortTag("ivalid", 0, 0);
    inst->addPortTag("memorystalls", 0, 0);
    add_sample(*inst, {"5"}, SHARED_IVALID);
    add_sample(*inst, {"6"}, SHARED_EXT_STALL);
    EXPECT_EQ(inst->getIValidCount(), (Values{5, 0}));
    EXPECT_EQ(inst->getExtStallCount(), (Values{0, 6}));
}

TEST(SharedCounters, AnInvalidValueIsReportedEvenWhereTheRunSkipsIt) {
    const auto inst = InstBuilder{.function = "skipped", .shared = true, .tags = {"ivalid"}}.make();
    EXPECT_EQ(stderr_of([&] { EXPECT_EQ(add_sample(*inst, {"x"}, SHARED_IDLE), -1); }),
              "WARNING: value for counter at line 1 was invalid: x.counter\n");
    EXPECT_EQ(inst->getIValidCount(), (Values{0}));
}

TEST(SharedCounters, TheFirstTypeMakesRequestsValidWhateverTheTag) {
    const auto by_type = InstBuilder{.function = "by_type", .shared = true, .tags = {"burstcount"}}.make();
    add_sample(*by_type, {"5"}, SHARED_IVALID);
    EXPECT_TRUE(by_type->getIReqCountValid());

    const auto no_tag = InstBuilder{.function = "no_tag", .shared = true}.make();
    no_tag->addPortTag("burstcount", 0, 1); // of another compute unit
    add_sample(*no_tag, {"5"}, SHARED_IVALID);
    EXPECT_FALSE(no_tag->getIReqCountValid());
}

TEST(SharedCounters, OtherTypesMakeRequestsValidOnlyThroughARequestTag) {
    const auto inst = InstBuilder{.function = "by_tag", .shared = true, .tags = {"totalreq"}}.make();
    add_sample(*inst, {"5"}, SHARED_IDLE);
    EXPECT_FALSE(inst->getIReqCountValid());
    add_sample(*inst, {"5"}, SHARED_TOTAL_REQ);
    EXPECT_TRUE(inst->getIReqCountValid());
}

} // namespace
