// SPDX-License-Identifier: Apache-2.0
#include "summary_tables.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "diagnosis.h"
#include "made_summary.h"
#include "rules_reader.h"

using namespace zan::tool;
using namespace zan::profile;
using testing::HasSubstr;
using testing::Not;

namespace {

ProfileSummary shown_run(std::vector<KernelSummary> kernels) {
    ProfileSummary summary = made::run(std::move(kernels));
    diagnose(summary, built_in_rules());
    return summary;
}

// Ten kernels of five blocks with long names, six memories, ten loops, six kinds of transfers.
ProfileSummary large_run() {
    std::vector<KernelSummary> kernels;
    for (int i = 0; i < 10; i++) {
        std::vector<BlockSummary> blocks = {made::loop()};
        for (int j = 0; j < 5; j++)
            blocks.push_back(made::global_read("a_block_with_quite_a_long_name_" + std::to_string(j)));
        kernels.push_back(made::kernel("a_kernel_with_a_long_name_" + std::to_string(i), blocks));
    }
    ProfileSummary summary = shown_run(std::move(kernels));
    summary.memories.resize(6, summary.memories[0]);
    summary.transfers.resize(6, {".mem_transfer_read", 1, 2, 3'000, 1'500, 3});
    return summary;
}

std::vector<std::string> lines_of(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

// The lines but sentences, which begin with blanks.
std::size_t num_lines(const std::string& text) {
    std::size_t count = 0;
    for (const std::string& line : lines_of(text))
        count += !line.starts_with("  ");
    return count;
}

std::string line_with(const std::string& text, const std::string& part) {
    for (const std::string& line : lines_of(text)) {
        if (line.find(part) != std::string::npos)
            return line;
    }
    return "";
}

} // namespace

TEST(SummaryTables, ALargeRunFitsAScreen) {
    const std::string text = summary_text(large_run(), {});
    EXPECT_LE(num_lines(text), 45u);
    for (const std::string& line : lines_of(text))
        EXPECT_LE(line.size(), 100u + 2u) << line; // an ellipsis has three bytes
    EXPECT_THAT(text, HasSubstr("and 3 more kernels; --top shows them\n"));
    EXPECT_THAT(text, HasSubstr("and 42 more blocks; --top shows them\n"));
    EXPECT_THAT(text, HasSubstr("and 7 more loops; --top shows them\n"));
    EXPECT_THAT(text, HasSubstr("and 3 more memories; --top shows them\n"));
    EXPECT_THAT(text, HasSubstr("and 3 more kinds of transfers; --top shows them\n"));
}

TEST(SummaryTables, TopShowsAllOfTheRest) {
    SummaryView view;
    view.top = 2;
    const std::string text = summary_text(large_run(), view);
    EXPECT_THAT(text, HasSubstr("and 48 more blocks; --top shows them\n"));
    EXPECT_THAT(text, Not(HasSubstr("more kernels")));
    EXPECT_THAT(text, Not(HasSubstr("more loops")));
}

TEST(SummaryTables, TheAnswersComeFirst) {
    const auto lines = lines_of(summary_text(shown_run({made::kernel("k", {made::global_read()})}), {}));
    ASSERT_GT(lines.size(), 6u);
    EXPECT_EQ(lines[0], "Which kernel took the time?  k: 100% of the run, 100 us in 1 invocation");
    EXPECT_EQ(lines[1],
              "Which block holds it up?     k/load: 40% of its cycles stalled, at most 40.0 us lost");
    EXPECT_EQ(lines[2], "On which line?               device/a.cl:9");
    EXPECT_EQ(lines[3], "Is memory the reason?        No, DDR is 60% free");
    EXPECT_EQ(lines[4], "");
    EXPECT_EQ(lines[5], "span 100 us: kernels ran in 100.0% of it; 1 kernel, 0 invocations, 0 samples");
}

TEST(SummaryTables, SourcesLoseTheirFoldersBeforeNamesAreCut) {
    BlockSummary block = made::global_read("a_block_whose_name_is_long");
    block.sources = {{{"device/include/some/folder/kernel.h", 123, 1}}};
    const ProfileSummary summary = shown_run({made::kernel("kernel", {block})});
    EXPECT_THAT(line_with(summary_text(summary, {}), "a_block_whose_name_is_long  "),
                HasSubstr("  kernel.h:123"));
    SummaryView wide;
    wide.width = 160;
    EXPECT_THAT(summary_text(summary, wide), HasSubstr("  device/include/some/folder/kernel.h:123\n"));
}

TEST(SummaryTables, EachDeviceHasItsTables) {
    ProfileSummary summary =
        shown_run({made::kernel("a", {made::global_read()}), made::kernel("b", {made::global_read()})});
    EXPECT_THAT(summary_text(summary, {}), Not(HasSubstr("device 0")));
    summary.kernels[1].device = 1;
    const std::string text = summary_text(summary, {});
    const std::size_t first = text.find("\ndevice 0\nKERNEL");
    const std::size_t second = text.find("\ndevice 1\nKERNEL");
    ASSERT_NE(first, std::string::npos);
    ASSERT_NE(second, std::string::npos);
    EXPECT_LT(first, second);
    EXPECT_THAT(text, HasSubstr("\ndevice 1\nBLOCK"));
}

TEST(SummaryTables, KernelsThatTookMostOfTheTimeComeFirst) {
    KernelSummary longer = made::kernel("longer", {});
    longer.metrics[Metric::kernel_total] = 200'000;
    KernelSummary autorun = made::kernel("forever", {});
    autorun.autorun = true;
    autorun.metrics[Metric::kernel_total] = 300'000;
    const std::string text = summary_text(shown_run({autorun, made::kernel("shorter", {}), longer}), {});
    EXPECT_LT(text.find("\nlonger "), text.find("\nshorter "));
    EXPECT_LT(text.find("\nshorter "), text.find("\nforever "));
}

TEST(SummaryTables, ALongAnswerIsWrapped) {
    ProfileSummary summary = shown_run({made::kernel("k", {})});
    // 29 columns of the question, and 35, 1 and 35: a hundred. The last word has no room.
    summary.answers.kernel = std::string(35, 'a') + " " + std::string(35, 'b') + " c";
    const auto lines = lines_of(summary_text(summary, {}));
    EXPECT_EQ(lines[0], "Which kernel took the time?  " + std::string(35, 'a') + " " + std::string(35, 'b'));
    EXPECT_EQ(lines[1], std::string(29, ' ') + "c");
}

TEST(SummaryTables, UseOfAMemoryThatIsALowerBoundSaysSo) {
    ProfileSummary summary = shown_run({made::kernel("k", {made::global_read()})});
    summary.memories[0].metrics[Metric::memory_mean] = 10'000;
    EXPECT_EQ(line_with(summary_text(summary, {}), "DDR     "),
              "DDR         10000         -      20000  50.0%    -     -");
    summary.memories[0].lower_bound = true;
    EXPECT_EQ(line_with(summary_text(summary, {}), "DDR     "),
              "DDR       >=10000         -      20000  >=50.0%    -     -");
}

TEST(SummaryTables, TimesOfAutorunKernelsAreNotShown) {
    KernelSummary kernel = made::kernel("forever", {made::global_read()});
    kernel.autorun = true;
    kernel.metrics[Metric::waiting] = 73.3;
    const std::string line = line_with(summary_text(shown_run({kernel}), {}), "autorun");
    EXPECT_THAT(line, HasSubstr("73.3%"));
    EXPECT_THAT(line, Not(HasSubstr("us")));
}

TEST(SummaryTables, LoopsThatCostTimeAreAmongTheBlocks) {
    BlockSummary store = made::block("store", BlockKind::global, Direction::write);
    store.metrics[Metric::stall] = 4;
    store.metrics[Metric::valid] = 20;
    BlockSummary slow = made::loop("slow");
    const std::string text = summary_text(shown_run({made::kernel("k", {store, slow})}), {});
    EXPECT_THAT(line_with(text, "k/slow   loop"), HasSubstr("80.0 us")); // (5 - 1) · 20% of 100 us
    EXPECT_THAT(text, HasSubstr("  Begins an iteration every 5 cycles, 5 even without all stalls: look for"));
}

TEST(SummaryTables, ColorsMeanCauses) {
    SummaryView view;
    view.colors = true;
    const std::string text = summary_text(shown_run({made::kernel("k", {made::global_read()})}), view);
    EXPECT_THAT(text, HasSubstr("\x1b[31m  Waits for answers of DDR"));
    EXPECT_THAT(text, HasSubstr("\x1b[33m40.0%\x1b[0m"));
    EXPECT_THAT(summary_text(large_run(), {}), Not(HasSubstr("\x1b")));
}

TEST(SummaryTables, NamesCannotDriveATerminal) {
    KernelSummary kernel = made::kernel("k\x1b[2J\xE2\x80\xAE", {made::global_read("b\n")});
    ProfileSummary summary = shown_run({kernel});
    summary.notes.push_back({"code", "text\x07"});
    for (const std::string& line : lines_of(summary_text(summary, {}))) {
        EXPECT_EQ(line.find_first_of("\x1b\x07\r"), std::string::npos);
        EXPECT_EQ(line.find("\xE2\x80\xAE"), std::string::npos);
    }
}

TEST(SummaryTables, ARunOfNothingHasAnswersAlone) {
    ProfileSummary summary;
    diagnose(summary, built_in_rules());
    EXPECT_EQ(summary_text(summary, {}),
              "Which kernel took the time?  No kernel ran\n"
              "Which block holds it up?     Unknown: the profile has no counters of its "
              "blocks\n"
              "On which line?               None\n"
              "Is memory the reason?        Unknown\n"
              "\n"
              "span -; 0 kernels, 0 invocations, 0 samples\n");
}

TEST(SummaryTables, AKernelOfSeveralDevicesHasTablesOfItsOwn) {
    ProfileSummary summary =
        shown_run({made::kernel("a", {made::global_read()}), made::kernel("b", {made::global_read()})});
    summary.kernels[1].device.reset();
    const std::string text = summary_text(summary, {});
    EXPECT_THAT(text, HasSubstr("\nseveral devices\nKERNEL"));
    EXPECT_LT(text.find("\nseveral devices\nBLOCK"), text.find("\ndevice 0\nBLOCK"));
    EXPECT_LT(text.find("\nb/load  "), text.find("\na/load  "));
}

TEST(SummaryTables, OnlyDevicesOfTheKernelThatIsAskedForAreShown) {
    ProfileSummary summary =
        shown_run({made::kernel("a", {made::global_read()}), made::kernel("b", {made::global_read()})});
    summary.kernels[1].device = 1;
    SummaryView view;
    view.kernel = "b";
    const std::string text = summary_text(summary, view);
    EXPECT_THAT(text, HasSubstr("\ndevice 1\nKERNEL"));
    EXPECT_THAT(text, Not(HasSubstr("device 0")));
    EXPECT_THAT(text, Not(HasSubstr("\na ")));
}

TEST(SummaryTables, AMetricToSortByIsAColumnUnlessItIsOneAnyway) {
    BlockSummary block = made::global_read();
    block.metrics[Metric::fill_share] = 12.34;
    const ProfileSummary summary = shown_run({made::kernel("k", {block})});
    SummaryView view;
    view.sort = Metric::fill_share;
    EXPECT_EQ(line_with(summary_text(summary, view), "BLOCK "),
              "BLOCK   WHAT         LOST  STALL  VALID   IDLE  MB/S   EFF  FILL_SHARE  SOURCE");
    EXPECT_THAT(line_with(summary_text(summary, view), "k/load  DDR"), HasSubstr("  100%       12.3%  "));
    view.sort = Metric::idle;
    EXPECT_EQ(line_with(summary_text(summary, view), "BLOCK "),
              "BLOCK   WHAT         LOST  STALL  VALID   IDLE  MB/S   EFF  SOURCE");
}

TEST(SummaryTables, WithoutAPeakThereAreNoSharesOfIt) {
    ProfileSummary summary = shown_run({made::kernel("k", {made::global_read()})});
    summary.memories[0].metrics[Metric::memory_mean] = 10'000;
    for (const Value& peak : {Value(), Value(0.0)}) {
        summary.memories[0].peak = peak;
        const std::string shown_peak = peak ? "0" : "-";
        EXPECT_EQ(line_with(summary_text(summary, {}), "DDR     "),
                  "DDR         10000         -          " + shown_peak + "     -    -     -");
    }
}

TEST(SummaryTables, OfNoTimeThereIsNoShare) {
    ProfileSummary summary = shown_run({made::kernel("k", {})});
    summary.metrics[Metric::span] = 0;
    EXPECT_THAT(summary_text(summary, {}), HasSubstr("\nspan 0 ns; 1 kernel, 0 invocations, 0 samples\n"));
}

// A summary that has not been judged.
TEST(SummaryTables, ABlockWithoutASentenceIsARowAlone) {
    const std::string text = summary_text(made::run({made::kernel("k", {made::global_read()})}), {});
    const auto lines = lines_of(text);
    const auto row = std::ranges::find_if(lines, [](const auto& line) { return line.starts_with("k/load"); });
    ASSERT_NE(row, lines.end());
    ASSERT_NE(row + 1, lines.end());
    EXPECT_EQ(*(row + 1), "");
}

TEST(SummaryTables, ThatNothingStandsOutIsNotSaid) {
    ProfileSummary summary = shown_run({made::kernel("k", {made::global_read()})});
    Sentence& sentence = summary.kernels[0].blocks[0].sentence;
    sentence.text = "Nothing stands out";
    EXPECT_THAT(summary_text(summary, {}), HasSubstr("\n  Nothing stands out\n"));
    sentence.rule = "fine";
    EXPECT_THAT(summary_text(summary, {}), Not(HasSubstr("Nothing stands out")));
}
