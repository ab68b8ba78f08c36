// SPDX-License-Identifier: Apache-2.0
#include "profile_notes.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "stream_report.h"
#include "whole_file.h"

using namespace zan::profile;

namespace {

// The text of the note of that code, or "". Each code is on the page.
std::string note_of(const ProfileSummary& summary, const std::string& code) {
    const std::string page =
        read_file(std::filesystem::path(ZAN_SAMPLES_FOLDER).parent_path() / "docs" / "metrics.md");
    std::string text;
    for (const Note& note : summary.notes) {
        EXPECT_NE(page.find("| `" + note.code + "` |"), page.npos) << note.code;
        if (note.code == code)
            text = note.text;
    }
    return text;
}

StreamKernel plain_kernel() {
    return {.stamps = {100, 200}, .cycles = {100, 100}, .blocks = {{.valid = {50, 50}, .stall = {50, 50}}}};
}

TEST(ProfileNotes, AreNoneOfACleanRun) {
    EXPECT_TRUE(summary_of({.kernels = {plain_kernel()}}).notes.empty());
}

TEST(ProfileNotes, NameTheClock) {
    EXPECT_NE(note_of(summary_of({.kernels = {plain_kernel()}, .clock = "0.0"}), "no-clock"), "");
    EXPECT_NE(note_of(summary_of({.kernels = {plain_kernel()}, .clock = "700.0"}), "no-time-unit"),
              ""); // 43% off
    const std::string text =
        note_of(summary_of({.kernels = {plain_kernel()}, .clock = "1100.0"}), "clock-mismatch");
    EXPECT_NE(text.find("9%"), text.npos) << text; // 1 / 1.1
    EXPECT_EQ(note_of(summary_of({.kernels = {plain_kernel()}, .clock = "1040.0"}), "clock-mismatch"), "");
}

TEST(ProfileNotes, CountWhatIsLeftOut) {
    StreamKernel kernel = plain_kernel();
    kernel.blocks[0].stall = {50, -1};
    EXPECT_EQ(note_of(summary_of({.kernels = {kernel}}), "left-out").substr(0, 2), "1 ");
    kernel = plain_kernel();
    kernel.cycles = {100, 0};
    EXPECT_EQ(note_of(summary_of({.kernels = {kernel}}), "no-cycles").substr(0, 6), "1 of 2");
}

TEST(ProfileNotes, SayWhichSharedCountersWereMeasured) {
    StreamKernel kernel = plain_kernel();
    kernel.shared = 1;
    const std::string text = note_of(summary_of({.kernels = {kernel}}), "shared-counters");
    EXPECT_NE(text.find("stalled cycles were counted, not valid cycles, idle cycles, requests"), text.npos)
        << text;
}

TEST(ProfileNotes, SayThatTwoCountersCountTheClock) {
    StreamKernel kernel = plain_kernel();
    kernel.cycles = {100, 100, 100, 100};
    const ProfileSummary summary = summary_of({.kernels = {kernel}});
    EXPECT_EQ(note_of(summary, "extra-cycles").substr(0, 2), "2 ");
    EXPECT_EQ(summary.kernels[0].blocks[0].metrics[Metric::valid], std::nullopt);
    EXPECT_EQ(summary.kernels[0].metrics[Metric::kernel_time], 200.0);
}

TEST(ProfileNotes, SayThatTimesGoBack) {
    StreamKernel kernel = plain_kernel();
    kernel.stamps = {200, 150};
    const ProfileSummary summary = summary_of({.kernels = {kernel}});
    EXPECT_EQ(note_of(summary, "backwards").substr(0, 6), "1 of 2");
    EXPECT_EQ(summary.kernels[0].longest, 200.0); // the greatest time stamp
}

TEST(ProfileNotes, NameKernelsWithSeveralUnitsAndTheirMemories) {
    StreamKernel kernel = plain_kernel();
    kernel.blocks[0].memory = "DDR";
    kernel.blocks[0].bandwidth = {10.0f, 10.0f};
    const SummaryOptions options{.input = "", .nanoseconds = {}, .knows_units = true, .units = {{"k", 3U}}};
    const ProfileSummary summary = summary_of({.kernels = {kernel}, .memories = {{}}}, options);
    EXPECT_NE(note_of(summary, "compute-units").find("k has 3"), std::string::npos);
    EXPECT_NE(note_of(summary, "lower-bound").find("DDR"), std::string::npos);
}

TEST(ProfileNotes, SayThatAnAutorunKernelIsJudgedInPart) {
    StreamKernel kernel = plain_kernel();
    kernel.autorun = true;
    Totals totals(1);
    write_stream(totals.sink(), {.kernels = {kernel}});
    EXPECT_EQ(
        note_of(summarize(totals), "autorun-activity"),
        "an autorun kernel has too many samples to hold: whether it worked is judged by the blocks that "
        "stand before in the report");
    EXPECT_EQ(note_of(summary_of({.kernels = {kernel}}), "autorun-activity"), "");
}

} // namespace
