// SPDX-License-Identifier: Apache-2.0
// tests/tools/zanl_profile/export reads whole traces; here are their bytes.
#include "perfetto_writer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "made_export.h"

namespace {

using namespace zan::profile;
using namespace std::string_literals;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

std::string trace_of(const std::string& report) {
    std::string trace;
    PerfettoWriter writer(
        {[&](std::string_view bytes) { trace += bytes; },
         [&](std::uint64_t offset, std::string_view bytes) { trace.replace(offset, bytes.size(), bytes); }});
    export_text(report, writer);
    return trace;
}

// The first packet: sequence 1, its state is new, clock 6 and clock 64 are both 0, and a tick of the latter
// has 1 ns, which is written with ten bytes.
TEST(PerfettoWriter, BeginsWithItsClock) {
    const std::string unit = "\x81\x80\x80\x80\x80\x80\x80\x80\x80\0"s;
    EXPECT_THAT(trace_of(odd_report), StartsWith("\x0a\x1d\x50\x01\x68\x01\x32\x17\x0a\x04\x08\x06\x10\0"
                                                 "\x0a\x0f\x08\x40\x10\0\x20"s +
                                                 unit));
}

// 10 cycles at 1 MHz are 10,000 ns, so the 10 ticks of the sample are 10 us.
TEST(PerfettoWriter, AnotherUnitIsPutIntoTheFirstPacket) {
    std::string report = odd_report;
    report.replace(report.find("1000.0"), 6, "1.0");
    const std::string unit = "\xe8\x87\x80\x80\x80\x80\x80\x80\x80\0"s; // 1000
    EXPECT_EQ(trace_of(report).substr(21, 10), unit);
}

// The first stall, 5 of block 1, begins at 100 (0x64), on the track that is the third.
TEST(PerfettoWriter, ACounterHasItsValueWhereTheSampleBegins) {
    const std::string event = "\x48\x04\x58\x03\xf0\x01\x05"s; // a counter, its track, its value
    const std::string packet = "\x40\x64\xd0\x03\x40\x50\x01\x5a\x07"s + event;
    EXPECT_THAT(trace_of(odd_report), HasSubstr("\x0a\x10"s + packet));
}

// The kernel's track, number 1, has a name of nine bytes after its number; those of counters name it before.
TEST(PerfettoWriter, CountersAreBelowTheTrackOfTheirKernel) {
    const std::string trace = trace_of(odd_report);
    EXPECT_THAT(trace, HasSubstr("\x08\x01\x12\x09=cmd(\"x\")"s));
    EXPECT_THAT(trace, HasSubstr("\x08\x03\x28\x01\x12"s));
}

TEST(PerfettoWriter, NamesAndPlacesAreThere) {
    const std::string trace = trace_of(odd_report);
    EXPECT_THAT(trace, HasSubstr("=cmd(\"x\")"));
    EXPECT_THAT(trace, HasSubstr("load bandwidth"));
    EXPECT_THAT(trace, HasSubstr("a.cl:7 < m.cl:9"));
    EXPECT_THAT(trace, HasSubstr("transfers of queue 2"));
    EXPECT_THAT(trace, Not(HasSubstr("queue 0")));
}

} // namespace
