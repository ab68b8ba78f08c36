// SPDX-License-Identifier: Apache-2.0
// The samples, whose READMEs work out what is counted, and a pipeline: from their reports, and from their
// packages with their captures.
#include "metrics.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "byte_target.h"
#include "json_writer.h"
#include "make_package.h"
#include "pipeline.h"
#include "report_reader.h"
#include "run_reader.h"
#include "stream_report.h"
#include "temp_dir.h"
#include "whole_file.h"

using namespace zan::profile;

namespace {

namespace fs = std::filesystem;

ProfileSummary summary_of_text(const std::string& report) {
    MemorySource source(report);
    Totals totals;
    const auto fault = read_report(source, totals.sink());
    EXPECT_EQ(fault ? describe(*fault) : "", "");
    return summarize(totals);
}

std::string expected_report(const std::string& sample) {
    return read_file(fs::path(ZAN_SAMPLES_FOLDER) / sample / "expected_report.json");
}

ProfileSummary summary_of_sample(const std::string& sample) {
    return summary_of_text(expected_report(sample));
}

const BlockSummary& block_in(const ProfileSummary& summary, std::string_view kernel, std::string_view block) {
    for (const KernelSummary& candidate : summary.kernels) {
        for (const BlockSummary& found : candidate.blocks) {
            if (candidate.name == kernel && found.name == block)
                return found;
        }
    }
    throw std::runtime_error("no block " + std::string(block));
}

std::string notes_in(const ProfileSummary& summary) {
    std::string codes;
    for (const Note& note : summary.notes)
        codes += note.code + " ";
    return codes;
}

class NoFaults final : public FaultReceiver {
  public:
    void take(const Fault& fault) override { messages += std::string(fault.message) + "\n"; }
    std::string messages;
};

ProfileSummary summary_of_run(const std::string& package, const std::string& capture) {
    Totals totals;
    NoFaults faults;
    EXPECT_TRUE(read_run(package, capture, {}, totals.sink(), faults).is_whole) << faults.messages;
    return summarize(totals);
}

std::string package_of_sample(const TempDir& dir, const fs::path& sample) {
    PackageSections sections;
    for (const auto& entry : fs::directory_iterator(sample / "sections")) {
        const std::string file = entry.path().filename();
        sections.emplace_back(".zan." + file, read_file(entry.path()));
    }
    make_package(dir.path("design.zanx"), sections);
    return dir.path("design.zanx");
}

// From 1000 to 9700; `reader` runs from 2000 to 8000 and `writer` from 2500 to 8500.
TEST(MetricsOfSamples, ImagePipelineRuns) {
    const ProfileSummary summary = summary_of_sample("image_pipeline");
    EXPECT_EQ(summary.metrics[Metric::span], 8700.0);
    EXPECT_EQ(summary.kernel_time, 6500.0); // 74.7%
    EXPECT_EQ(summary.transfer_only, 1500.0);
    EXPECT_EQ(summary.start, "1000");
    EXPECT_EQ(summary.num_invocations, 4U);
    EXPECT_EQ(summary.num_samples, 8U);
    EXPECT_EQ(summary.clock_mhz, 250.0);
    EXPECT_EQ(summary.nanoseconds, 1.0);
    EXPECT_EQ(summary.board, "vela_pcie");
    ASSERT_EQ(summary.transfers.size(), 2U);
    EXPECT_EQ(summary.transfers[1].type, ".mem_transfer_write");
    EXPECT_EQ(summary.transfers[1].total, 800.0);
    EXPECT_NEAR(summary.transfers[1].busy, 9.2, 0.01);
}

// 1500 cycles of 4 ns: 350 + 70 stalled ones are 1.68 us, 150 + 180 are 1.32 us.
TEST(MetricsOfSamples, ImagePipelineHasBlocksThatWait) {
    const ProfileSummary summary = summary_of_sample("image_pipeline");
    const BlockSummary& store = block_in(summary, "writer", "store_pixels");
    EXPECT_DOUBLE_EQ(known(store.metrics[Metric::stall]), 28.0);
    EXPECT_DOUBLE_EQ(known(store.metrics[Metric::valid]), 68.0);
    EXPECT_DOUBLE_EQ(known(store.metrics[Metric::idle]), 4.0);
    EXPECT_DOUBLE_EQ(known(store.metrics[Metric::lost]), 1680.0);
    EXPECT_NEAR(known(store.metrics[Metric::bandwidth]), 12267, 0.5); // (11200 · 1000 + 14400 · 500) / 1500
    EXPECT_NEAR(known(store.metrics[Metric::efficiency]), 88.7, 0.01); // (9600 · 1000 + 13440 · 500) / 18.4e6
    EXPECT_NEAR(known(store.metrics[Metric::moved]), 44800 + 28800, 0.01);
    const BlockSummary& load = block_in(summary, "reader", "load_pixels");
    EXPECT_DOUBLE_EQ(known(load.metrics[Metric::lost]), 1320.0);
    EXPECT_DOUBLE_EQ(known(load.metrics[Metric::stall]), 22.0);
    EXPECT_NEAR(known(load.metrics[Metric::bandwidth]), 12533, 0.5);
    EXPECT_NEAR(known(load.metrics[Metric::port_use]), 78.3, 0.1);
    // While it stalls: 150 cycles at 12,800 and 180 at 12,000 MB/s, of 38,400.
    EXPECT_NEAR(known(load.metrics[Metric::memory_use]), (150 * 12800.0 + 180 * 12000.0) / 330 / 384, 0.01);
    EXPECT_NEAR(known(load.metrics[Metric::burst]), 1175.0 / 75.0, 1e-9); // 800 + 375 words, 50 + 25 bursts
}

// HBM0: 11,200 MB/s for 4 us and 14,400 for 2 us, which is its peak, in a span of 8.7 us.
TEST(MetricsOfSamples, ImagePipelineFillsAMemory) {
    const ProfileSummary summary = summary_of_sample("image_pipeline");
    ASSERT_EQ(summary.memories.size(), 2U);
    const MemorySummary& memory = summary.memories[1];
    EXPECT_EQ(memory.name, "HBM0");
    EXPECT_NEAR(known(memory.metrics[Metric::memory_mean]), (44800 + 28800) / 8.7, 0.01);
    EXPECT_NEAR(known(memory.metrics[Metric::memory_max]), 14400.0, 1e-6);
    EXPECT_NEAR(known(memory.metrics[Metric::memory_full]), 100.0 * 6.0 / 8.7, 1e-9); // 78% is full as well
}

// Stalled cycles were counted in one run of four: 150 + 140 of 1000. So were the requests: 2520 MB/s asked
// for of 2480. Summed up over all runs these would be 7.25% and 25.5%.
TEST(MetricsOfSamples, SharedCountersAreOfTheirOwnRuns) {
    const ProfileSummary summary = summary_of_sample("shared_counters");
    const BlockSummary& store = block_in(summary, "store_stream", "store_out");
    EXPECT_DOUBLE_EQ(known(store.metrics[Metric::stall]), 29.0);
    EXPECT_NEAR(known(store.metrics[Metric::efficiency]), 101.6, 0.05);
    EXPECT_DOUBLE_EQ(known(store.metrics[Metric::valid]), 62.0); // 300 + 320 of 1000
    EXPECT_DOUBLE_EQ(known(store.metrics[Metric::idle]), 9.0);   // 50 + 40
    EXPECT_EQ(summary.kernels[0].shared_types, 15U);
    // 29% of all 4000 cycles, 4 ns each.
    EXPECT_DOUBLE_EQ(known(store.metrics[Metric::lost]), 4640.0);
    const BlockSummary& read = block_in(summary, "store_stream", "read_stream");
    EXPECT_NEAR(known(read.metrics[Metric::bandwidth]), (1240 + 1320) / 2.0,
                1e-6); // of the run with requests
    EXPECT_EQ(read.metrics[Metric::fill], std::nullopt);
}

// The four runs of the sample, each by itself, then together.
TEST(MetricsOfSamples, RunsOfSharedCountersMerge) {
    std::vector<std::unique_ptr<Totals>> runs;
    std::vector<const Totals*> all;
    const long long counts[4][2] = {{300, 320}, {150, 140}, {50, 40}, {300, 330}};
    for (int type = 0; type < 4; ++type) {
        StreamBlock block{.operation = "write",
                          .memory = "DDR",
                          .valid = {0, 0},
                          .stall = {0, 0},
                          .idle = {0, 0},
                          .requests = {0, 0},
                          .bandwidth = {1200.0f, 1280.0f},
                          .efficiency = {0.0f, 0.0f}};
        std::vector<long long>* const series[] = {&block.valid, &block.stall, &block.idle, &block.requests};
        *series[type] = {counts[type][0], counts[type][1]};
        if (type == 3)
            block.efficiency = {1.0f, 1.03125f};
        // All runs begin at the same time by their own clocks.
        StreamKernel kernel{
            .start = 1000, .stamps = {3000, 5000}, .cycles = {500, 500}, .blocks = {block}, .shared = type};
        runs.push_back(totals_of({.kernels = {kernel}, .memories = {{}}, .clock = "250.0"}));
        all.push_back(runs.back().get());
    }
    const ProfileSummary alone = summarize(*runs[0]);
    EXPECT_EQ(alone.kernels[0].blocks[0].metrics[Metric::stall], std::nullopt);
    EXPECT_EQ(alone.kernels[0].blocks[0].metrics[Metric::efficiency], std::nullopt);
    EXPECT_EQ(notes_in(alone), "shared-counters ");

    const ProfileSummary together = summarize(all);
    ASSERT_EQ(together.kernels.size(), 1U);
    const BlockSummary& block = together.kernels[0].blocks.at(0);
    EXPECT_DOUBLE_EQ(known(block.metrics[Metric::stall]), 29.0);
    EXPECT_NEAR(known(block.metrics[Metric::efficiency]), 101.6, 0.05);
    EXPECT_DOUBLE_EQ(known(block.metrics[Metric::lost]), 4640.0);
    EXPECT_EQ(together.kernels[0].num_invocations, 4U);
    EXPECT_EQ(together.metrics[Metric::span], 16'000.0); // 4000 in each of four runs
    EXPECT_EQ(together.kernels[0].metrics[Metric::busy], 100.0);
}

// Nothing counts stalled and idle cycles: of 500 cycles 175 are valid, and the rest is unknown.
TEST(MetricsOfSamples, ComputeUnitsCountNoStalls) {
    const BlockSummary block = block_in(summary_of_sample("compute_units"), "histogram", "load_bytes");
    EXPECT_DOUBLE_EQ(known(block.metrics[Metric::valid]), 35.0);
    EXPECT_EQ(block.metrics[Metric::stall], std::nullopt);
    EXPECT_EQ(block.metrics[Metric::idle], std::nullopt);
    EXPECT_FALSE(block.stall_counted);
    EXPECT_EQ(block.metrics[Metric::lost], std::nullopt);
}

TEST(MetricsOfSamples, LoopsHaveIterations) {
    const ProfileSummary summary = summary_of_sample("loop");
    const BlockSummary& columns = block_in(summary, "row_sums", "columns");
    EXPECT_DOUBLE_EQ(known(columns.metrics[Metric::valid]), 77.4); // 774 of 1000 cycles
    EXPECT_DOUBLE_EQ(known(columns.iterations), 387.0);            // in two invocations
    EXPECT_NEAR(known(columns.metrics[Metric::iteration]), 1.292, 0.0005);
    EXPECT_EQ(columns.metrics[Metric::stall], std::nullopt);
    EXPECT_TRUE(columns.stall_counted);
}

// write_numbers: 1114 requests and 950 stalls, the channel's largest depth is 16. The report's mean depths
// are rounded up: 8.01 · 1000 + 14 · 1050 + 12.5 · 14.
TEST(MetricsOfSamples, ChannelsHaveAFillOutsideOfStalls) {
    const ProfileSummary summary = summary_of_sample("channel");
    const BlockSummary& write = block_in(summary, "producer", "write_numbers");
    EXPECT_NEAR(known(write.metrics[Metric::fill]), (8010 + 14700 + 175 - 950 * 16) / 1114.0, 0.01);
    EXPECT_EQ(write.metrics[Metric::max_fill], 16.0);
    EXPECT_EQ(write.kind, BlockKind::channel);
    const BlockSummary& read = block_in(summary, "consumer", "read_numbers");
    EXPECT_NEAR(known(read.metrics[Metric::fill]), (8.03 * 698 + 14.07 * 448 + 6.5 * 28) / 1024.0, 0.01);
    EXPECT_EQ(read.direction, Direction::read);
}

// clip works in all its samples. No counter counts its idle cycles.
TEST(MetricsOfSamples, AutorunKernelsComeLast) {
    const ProfileSummary summary = summary_of_sample("autorun");
    ASSERT_EQ(summary.kernels.size(), 3U);
    for (const KernelSummary& kernel : summary.kernels) {
        EXPECT_TRUE(kernel.autorun);
        EXPECT_EQ(kernel.metrics[Metric::waiting], 0.0);
    }
    EXPECT_EQ(summary.kernel_time, std::nullopt); // nothing was started
    const BlockSummary& read = block_in(summary, "clip", "read_in");
    EXPECT_DOUBLE_EQ(known(read.metrics[Metric::stall]), 100.0 * 16 / 750);
    EXPECT_EQ(read.metrics[Metric::idle], 0.0); // 725 valid and 16 stalled cycles of 750 leave 1.2%
}

TEST(MetricsOfSamples, SourcesAreCallChains) {
    const ProfileSummary summary = summary_of_sample("image_pipeline");
    const auto& sources = block_in(summary, "blur", "recv_pixels").sources;
    ASSERT_EQ(sources.size(), 1U);
    ASSERT_EQ(sources[0].size(), 2U); // inlined
    EXPECT_NE(sources[0][0].file.find("window.h"), std::string::npos);
    EXPECT_NE(sources[0][1].file.find("image.cl"), std::string::npos);
}

class SameSummary : public testing::TestWithParam<std::string> {};

INSTANTIATE_TEST_SUITE_P(Samples, SameSummary,
                         testing::Values("autorun", "channel", "compute_units", "image_pipeline",
                                         "inlined_calls", "kernel_names", "load_store_units", "loop",
                                         "shared_counters", "vector_add"));

// The version of the program is the one thing in which an expected report differs.
void expect_same(ProfileSummary from_report, ProfileSummary from_run) {
    from_report.program_version.clear();
    from_run.program_version.clear();
    EXPECT_EQ(from_report, from_run);
    EXPECT_FALSE(from_run.kernels.empty());
}

TEST_P(SameSummary, OfAReportAndOfItsPackageWithItsCapture) {
    const TempDir dir;
    const fs::path sample = fs::path(ZAN_SAMPLES_FOLDER) / GetParam();
    expect_same(summary_of_sample(GetParam()),
                summary_of_run(package_of_sample(dir, sample), sample / "profile.mon"));
}

// What the report of zanl-profile-tly holds.
std::string report_of_run(const std::string& package, const std::string& capture) {
    std::ostringstream text;
    {
        StreamTarget target(text);
        TextBuffer buffer(target);
        JsonWriter writer(buffer);
        NoFaults faults;
        read_run(package, capture, {}, writer, faults);
        writer.finish();
        buffer.flush();
    }
    return text.str();
}

class PipelineSummary : public testing::TestWithParam<bool> {
  protected:
    PipelineSummary() {
        const Pipeline pipeline{.num_frames = 3, .aligned = GetParam()};
        make_package(package, sections_of(pipeline));
        std::ofstream monitor(capture, std::ios::binary);
        write_monitor(pipeline, monitor);
    }

    TempDir dir;
    std::string package = dir.path("design.zanx");
    std::string capture = dir.path("profile.mon");
};
INSTANTIATE_TEST_SUITE_P(Versions, PipelineSummary, testing::Bool());

TEST_P(PipelineSummary, IsTheSameFromItsReport) {
    expect_same(summary_of_text(report_of_run(package, capture)), summary_of_run(package, capture));
}

// The pipeline is made of these shares, give or take 3 of 100 in each sample.
TEST_P(PipelineSummary, HasTheSharesThatItIsMadeOf) {
    const ProfileSummary summary = summary_of_run(package, capture);
    EXPECT_EQ(notes_in(summary), "");
    EXPECT_EQ(summary.nanoseconds, 1.0);
    EXPECT_NEAR(known(block_in(summary, "emit", "recv_graded").metrics[Metric::stall]), 49.0, 0.5);
    EXPECT_NEAR(known(block_in(summary, "merge", "recv_warped").metrics[Metric::stall]), 1.0, 0.05);
    EXPECT_NEAR(known(block_in(summary, "meter", "count").metrics[Metric::net]), 6.4, 0.1);
    EXPECT_NEAR(known(block_in(summary, "track", "load_before").metrics[Metric::unaligned]),
                GetParam() ? 1.0 : 61.0, 1.0);
    const BlockSummary& load = block_in(summary, "merge", "load_past");
    EXPECT_NEAR(known(load.metrics[Metric::memory_use]), 88.7, 2.0); // 34 of 38.4 GB/s
    // Autorun kernels: 35% over the samples with work, though the run is mostly waiting.
    EXPECT_NEAR(known(block_in(summary, "warp", "send_warped").metrics[Metric::stall]), 34.0, 1.5);
}

TEST_P(PipelineSummary, HasTheTeamOfTheMiddlePhase) {
    const ProfileSummary summary = summary_of_run(package, capture);
    for (const KernelSummary& kernel : summary.kernels) {
        const bool alone = kernel.name == "track" || kernel.name == "meter";
        EXPECT_EQ(kernel.team.size(), alone ? 0U : 4U) << kernel.name;
    }
}

TEST(Metrics, OfNothingAreMissing) {
    const ProfileSummary summary = summary_of({});
    EXPECT_EQ(summary.metrics[Metric::span], std::nullopt);
    EXPECT_EQ(summary.kernel_time, std::nullopt);
    EXPECT_EQ(summary.start, "");
    EXPECT_TRUE(summary.kernels.empty());
}

// Between the transfers, of which one overlaps the kernel, nothing runs from 60 to 80.
TEST(Metrics, TransfersHaveTimesOfTheirOwn) {
    StreamReport report{.kernels = {{.start = 20, .stamps = {60}, .cycles = {40}}}};
    report.transfers = {{.queue = 1, .start = 0, .end = 30},
                        {.queue = 1, .start = 80, .end = 90},
                        {.queue = 1, .start = 85, .end = 100},
                        {.queue = 2, .start = 90, .end = 100}};
    const ProfileSummary summary = summary_of(report);
    EXPECT_EQ(summary.metrics[Metric::span], 100.0);
    EXPECT_EQ(summary.kernel_time, 40.0);
    EXPECT_EQ(summary.transfer_only, 40.0); // 0 to 20 and 80 to 100
    ASSERT_EQ(summary.transfers.size(), 2U);
    EXPECT_EQ(summary.transfers[0].num, 3U);
    EXPECT_EQ(summary.transfers[0].total, 55.0);
    EXPECT_EQ(summary.transfers[0].median, 15.0);
    EXPECT_EQ(summary.transfers[0].busy, 50.0);
    EXPECT_EQ(summary.transfers[1].queue, 2);
}

TEST(Metrics, TimesAreNanosecondsWhateverTheUnit) {
    StreamReport report{.kernels = {{.start = 0, .stamps = {2}, .cycles = {2000}}}}; // microseconds
    EXPECT_EQ(summary_of(report).metrics[Metric::span], 2000.0);
    SummaryOptions options;
    options.nanoseconds = 1e6;
    EXPECT_EQ(summary_of(report, options).metrics[Metric::span], 2e6);
    report.clock = "0.0";
    EXPECT_EQ(summary_of(report).metrics[Metric::span], 2.0);
}

} // namespace
