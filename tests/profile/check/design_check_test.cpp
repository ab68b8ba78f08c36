// SPDX-License-Identifier: Apache-2.0
#include "design_check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "model_of.h"

namespace {

using namespace zan::profile;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> codes(const Description& description, const std::string& clock) {
    const ModelOf design(description);
    FindingLog log;
    check_design(design.model, clock, "d.zanx", log);
    std::vector<std::string> result;
    for (const Finding& finding : log.findings())
        result.push_back(std::string(finding.row->code) + ": " + finding.first.message);
    return result;
}

TEST(DesignCheck, Clocks) {
    const std::pair<std::string, double> rows[] = {
        {"250.0", 250}, {" 100 ", 100}, {"100.5\r", 100.5}, {"0.0", 0},   {"-1", 0},
        {"", 0},        {"fast", 0},    {"250 MHz", 0},     {"1e300", 0}, {"nan", 0},
    };
    for (const auto& [text, clock] : rows)
        EXPECT_EQ(stated_clock(text), clock) << text;
    EXPECT_THAT(codes(Description(), "250.0"), IsEmpty());
    EXPECT_THAT(codes(Description(), "0.0"), ElementsAre("no-clock: the timing report names no clock"));
    EXPECT_THAT(codes(Description(), "250 MHz"),
                ElementsAre("no-clock: the clock is '250 MHz', which is no number of MHz"));
}

TEST(DesignCheck, WidthsOfBlocksThatNeedOne) {
    Description description;
    description.function("k", "user_friendly_name='shown'")
        .module("m", {"ivalid"})
        .module("kdl_iowr", {"idle"});
    description.inst("k", "global", "m", "__global;read;x;DDR;wide;;x").connect("k", "global", "ivalid");
    description.inst("k", "good", "m", "__global;read;x;DDR;512;;x").connect("k", "good", "ivalid");
    description.inst("k", "loop", "m", "__loop").connect("k", "loop", "ivalid");
    description.inst("k", "local", "m", "__local").connect("k", "local", "ivalid");
    description.inst("k", "channel", "kdl_iowr").connect("k", "channel", "idle");
    EXPECT_THAT(codes(description, "1"), ElementsAre("no-width: shown/global has the width 'wide'",
                                                     "no-width: shown/channel has the width ''"));
}

TEST(DesignCheck, BothEndsOfAChannelNeedAWidth) {
    Description description;
    description.function("k").module("kdl_iowr", {"idle"}).module("kdl_iord", {"chread_idle"});
    description.inst("k", "out", "kdl_iowr").connect("k", "out", "idle");
    description.inst("k", "in", "kdl_iord").connect("k", "in", "chread_idle");
    EXPECT_THAT(codes(description, "1"),
                ElementsAre("no-width: k/out has the width ''", "no-width: k/in has the width ''"));
}

// What counts for the whole kernel is no access, whatever its memory is called.
TEST(DesignCheck, AKernelsOwnInstancesNeedNoWidth) {
    Description description;
    description.function("k").module("m", {"ivalid"});
    for (const char* name : {"k_function_inst", "k_function_wrapper_inst", "other_function_inst"})
        description.inst("k", name, "m", "__global;read;x;DDR;;;x").connect("k", name, "ivalid");
    EXPECT_THAT(codes(description, "1"), ElementsAre("no-width: k/other_function_inst has the width ''"));
}

TEST(DesignCheck, SeveralComputeUnits) {
    EXPECT_THAT(codes(Description().function("one").function("three", "", 3), "1"),
                ElementsAre("compute-units: three has 3 compute units"));
}

} // namespace
