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

std::size_t count_in(const std::string& trace, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = trace.find(part); at != std::string::npos; at = trace.find(part, at + part.size()))
        ++count;
    return count;
}

// The kernel has the track 1, its counters have 2 to 4. The second invocation, from 120 to 150, begins before
// the first one ends at 130, and is a slice on a track of its own; the third fits after the first.
std::string overlapping_report() {
    const std::string node =
        R"json(, {"name": "=cmd(\"x\")", "compute_unit": "0",
        "sourcefile": {"filename": "a,b.cl", "line": "3"}, "start_time": "120", "sample_timestamps": ["150"]})json";
    std::string next = node;
    next.replace(next.find("120"), 3, "130");
    next.replace(next.find("150"), 3, "140");
    std::string report = odd_report;
    return report.insert(report.find("]},\n\"memtransfers\""), node + next);
}

TEST(PerfettoWriter, InvocationsThatOverlapHaveTracksOfTheirOwn) {
    const std::string trace = trace_of(overlapping_report());
    EXPECT_THAT(trace, HasSubstr("\x08\x05\x12\x09=cmd(\"x\")"s));
    EXPECT_EQ(count_in(trace, "\x48\x01\x58\x01"s), 2u); // begins of slices on track 1
    EXPECT_EQ(count_in(trace, "\x48\x01\x58\x05"s), 1u);
}

TEST(PerfettoWriter, AComputeUnitIsPartOfTheNamesOfItsTracks) {
    std::string report = overlapping_report();
    const std::string unit = "\"compute_unit\": \"0\"";
    for (std::size_t at = report.find(unit); at != std::string::npos; at = report.find(unit))
        report.replace(at, unit.size(), "\"compute_unit\": \"12\"");
    const std::string trace = trace_of(report);
    EXPECT_THAT(trace, HasSubstr("\x08\x01\x12\x0c=cmd(\"x\")#12"s));
    EXPECT_THAT(trace, HasSubstr("\x08\x05\x12\x0c=cmd(\"x\")#12"s));
}

TEST(PerfettoWriter, WithoutPlacesInSourcesThereAreNoArgumentsOfThem) {
    EXPECT_THAT(trace_of(odd_report), HasSubstr("source of load"));
    const std::string kernel_source = "\"sourcefile\": {\"filename\": \"a,b.cl\", \"line\": \"3\"},\n";
    EXPECT_THAT(trace_of(odd_report), HasSubstr("\x52\x06source\x32"s));
    EXPECT_THAT(trace_of(odd_report_without(kernel_source)), Not(HasSubstr("\x52\x06source\x32"s)));
}

// A sample whose time isn't known has no place: of three stalls and two times the third is left out, and
// without a start there is no counter at all.
TEST(PerfettoWriter, SamplesWithoutATimeAreLeftOut) {
    std::string report = odd_report;
    report.replace(report.find("\"5\", \"-1\""), 9, "\"5\", \"6\", \"7\"");
    const std::string trace = trace_of(report);
    EXPECT_EQ(count_in(trace, "\x48\x04\x58\x03\xf0\x01"s), 3u); // 5, 6, and the 0 at the end
    EXPECT_EQ(count_in(trace, "\x48\x04\x58\x03\xf0\x01\x07"s), 0u);
    EXPECT_EQ(count_in(trace_of(odd_report_without("\"start_time\": \"100\", ")), "\x48\x04"s), 0u);
}

// Each of the cycles 1 to 20,000 is a counter of track 2; they take more than the 256 KiB of a piece.
TEST(PerfettoWriter, HandsOverLongTracesInPieces) {
    std::vector<std::string> pieces;
    PerfettoWriter writer({[&](std::string_view bytes) { pieces.emplace_back(bytes); },
                           [](std::uint64_t, std::string_view) {}});
    export_text(odd_report_of_samples(20'000), writer);
    EXPECT_GT(pieces.size(), 1u);
    std::size_t count = 0;
    for (const std::string& piece : pieces)
        count += count_in(piece, "\x48\x04\x58\x02\xf0\x01"s);
    EXPECT_EQ(count, 20'001u); // and a 0 at the end
}

} // namespace
