// SPDX-License-Identifier: Apache-2.0
#include "summary_tables.h"

#include <algorithm>
#include <functional>
#include <sstream>
#include <utility>
#include <vector>

#include "diagnosis.h"
#include "printable.h"
#include "rules_reader.h"
#include "summary_rows.h"
#include "table.h"
#include "value_text.h"

namespace zan::tool {

using namespace profile;

namespace {

constexpr TableRows usual_rows;

struct ShownBlock {
    const KernelSummary* kernel;
    const BlockSummary* block;
    Value time; // that it is ranked by
};

// The table's text, and a line with how many rows aren't in it.
struct SummaryPart {
    explicit SummaryPart(std::vector<TableColumn> columns) : table(std::move(columns)) {}
    Table table;
    std::size_t num_hidden = 0;
    const char* hidden_words = "more";
};

Style style_of_tone(const std::string& tone) {
    constexpr std::pair<const char*, Style> styles[] = {
        {"cause", Style::bad}, {"good", Style::good}, {"note", Style::faint}, {"none", Style::faint}};
    const auto* found = std::ranges::find(styles, tone, &std::pair<const char*, Style>::first);
    return found == std::end(styles) ? Style::plain : found->second;
}

bool is_shown(const KernelSummary& kernel, const SummaryView& view, const std::optional<int>& device) {
    return (view.kernel.empty() || kernel.name == view.kernel) && kernel.device == device;
}

std::string counted(std::uint64_t count, const char* what) {
    return count_text(static_cast<double>(count)) + " " + what + (count == 1 ? "" : "s");
}

std::string answers_text(const ProfileSummary& summary, const SummaryView& view) {
    const std::pair<const char*, const std::string*> answers[] = {
        {"Which kernel took the time?  ", &summary.answers.kernel},
        {"Which block holds it up?     ", &summary.answers.block},
        {"On which line?               ", &summary.answers.source},
        {"Is memory the reason?        ", &summary.answers.memory}};
    std::string text;
    for (const auto& [question, answer] : answers) {
        const std::string_view name = question;
        const std::string lines = wrapped(printable(*answer), view.width, name.size());
        text += styled(question, Style::faint, view.colors) +
                styled(lines.substr(std::min(name.size(), lines.size())), Style::strong, view.colors) + "\n";
    }
    return text;
}

std::string span_text(const ProfileSummary& summary) {
    const Value& span = summary.metrics[Metric::span];
    std::string text = "span " + time_cell(summary, span);
    if (span && *span > 0 && summary.kernel_time)
        text += ": kernels ran in " + percent_cell(*summary.kernel_time / *span * 100) + " of it";
    return text + "; " + counted(summary.kernels.size(), "kernel") + ", " +
           counted(summary.num_invocations, "invocation") + ", " + counted(summary.num_samples, "sample") +
           "\n";
}

// Those that took most of the time first, and autorun kernels last.
std::vector<const KernelSummary*> shown_kernels(const ProfileSummary& summary, const SummaryView& view,
                                                const std::optional<int>& device) {
    std::vector<const KernelSummary*> kernels;
    for (const KernelSummary& kernel : summary.kernels) {
        if (is_shown(kernel, view, device))
            kernels.push_back(&kernel);
    }
    std::ranges::stable_sort(kernels, {}, [](const KernelSummary* kernel) {
        return std::pair(kernel->autorun,
                         kernel->autorun ? 0.0 : -kernel->metrics[Metric::kernel_total].value_or(0));
    });
    return kernels;
}

// Times of autorun kernels say nothing, so these have the part of it in which they had no work.
SummaryPart kernels_part(const ProfileSummary& summary, const SummaryView& view,
                         const std::optional<int>& device) {
    const auto kernels = shown_kernels(summary, view, device);
    const bool any_autorun = !kernels.empty() && kernels.back()->autorun;
    std::vector<TableColumn> columns = {
        {"KERNEL", Align::left, 16}, {"TIMES", Align::right}, {"MEDIAN", Align::right}, {"P95", Align::right},
        {"TOTAL", Align::right},     {"BUSY", Align::right},  {"ALONE", Align::right}};
    if (any_autorun)
        columns.push_back({"WAITING", Align::right});
    columns.push_back({"SOURCE"});
    SummaryPart part(std::move(columns));
    const std::size_t num_shown = view.top ? kernels.size() : std::min(kernels.size(), usual_rows.kernels);
    for (std::size_t i = 0; i < num_shown; i++) {
        const KernelSummary& kernel = *kernels[i];
        const auto time = [&](Metric metric) {
            return TableCell{kernel.autorun ? "-" : time_cell(summary, kernel.metrics[metric])};
        };
        const Value alone = kernel.autorun ? Value() : kernel.metrics[Metric::alone];
        std::vector<TableCell> cells = {
            {kernel_cell(kernel)},      {kernel.autorun ? "autorun" : std::to_string(kernel.num_invocations)},
            time(Metric::kernel_time),  time(Metric::kernel_p95),
            time(Metric::kernel_total), {percent_cell(kernel.metrics[Metric::busy])},
            {percent_cell(alone)}};
        if (any_autorun)
            cells.push_back({percent_cell(kernel.metrics[Metric::waiting])});
        cells.push_back({place_cell(kernel.source, view.short_sources)});
        part.table.add_row(std::move(cells));
    }
    part.num_hidden = kernels.size() - num_shown;
    part.hidden_words = "more kernels; --top shows them";
    return part;
}

// Blocks of the table: all but loops, and loops that cost time.
std::vector<ShownBlock> shown_blocks(const ProfileSummary& summary, const SummaryView& view,
                                     const std::optional<int>& device) {
    std::vector<ShownBlock> blocks;
    for (const RankedBlock& ranked : sorted_blocks(summary, view.kernel, view.sort)) {
        const KernelSummary& kernel = summary.kernels[ranked.kernel];
        const BlockSummary& block = kernel.blocks[ranked.block];
        if (is_shown(kernel, view, device) && (block.kind != BlockKind::loop || ranked.time))
            blocks.push_back({&kernel, &block, ranked.time});
    }
    return blocks;
}

// The metric that blocks are sorted by, unless the table has it anyway.
std::optional<Metric> extra_metric(const SummaryView& view) {
    constexpr Metric in_table[] = {Metric::lost, Metric::stall,     Metric::valid,
                                   Metric::idle, Metric::bandwidth, Metric::efficiency};
    if (!view.sort || std::ranges::count(in_table, *view.sort) > 0)
        return {};
    return view.sort;
}

std::string heading_of(Metric metric) {
    std::string heading(row_of(metric).name);
    std::ranges::transform(heading, heading.begin(),
                           [](char c) { return c >= 'a' && c <= 'z' ? char(c - 32) : c; });
    return heading;
}

SummaryPart blocks_part(const ProfileSummary& summary, const SummaryView& view,
                        const std::optional<int>& device) {
    const auto extra = extra_metric(view);
    std::vector<TableColumn> columns = {{"BLOCK", Align::left, 24}, {"WHAT", Align::left, 13},
                                        {"LOST", Align::right},     {"STALL", Align::right},
                                        {"VALID", Align::right},    {"IDLE", Align::right},
                                        {"MB/S", Align::right},     {"EFF", Align::right}};
    if (extra)
        columns.push_back({heading_of(*extra), Align::right});
    columns.push_back({"SOURCE"});
    SummaryPart part(std::move(columns));
    const double stall_worth = built_in_rules().threshold("stall_worth");
    const std::size_t most = view.top.value_or(usual_rows.blocks);
    std::size_t num_rows = 0;
    for (const ShownBlock& shown : shown_blocks(summary, view, device)) {
        if (num_rows++ >= most) {
            part.num_hidden++;
            continue;
        }
        const BlockSummary& block = *shown.block;
        const auto metric = [&](Metric which) { return block.metrics[which]; };
        const bool stalls = metric(Metric::stall).value_or(0) >= stall_worth;
        std::vector<TableCell> cells = {
            {kernel_cell(*shown.kernel) + "/" + block.name},
            {what_cell(block)},
            {time_cell(summary, shown.time)},
            {percent_cell(metric(Metric::stall)), stalls ? Style::warning : Style::plain},
            {percent_cell(metric(Metric::valid))},
            {percent_cell(metric(Metric::idle))},
            {count_cell(metric(Metric::bandwidth))},
            {percent_cell(metric(Metric::efficiency), 0)}};
        if (extra)
            cells.push_back({metric_cell(summary, *extra, metric(*extra))});
        cells.push_back({source_cell(block, view.short_sources)});
        part.table.add_row(std::move(cells));
        if (block.sentence.rule != "fine" && !block.sentence.text.empty())
            part.table.add_sentence(block.sentence.text, style_of_tone(block.sentence.tone));
    }
    part.hidden_words = "more blocks; --top shows them";
    return part;
}

SummaryPart loops_part(const ProfileSummary& summary, const SummaryView& view,
                       const std::optional<int>& device) {
    std::vector<ShownBlock> loops;
    for (const KernelSummary& kernel : summary.kernels) {
        if (!is_shown(kernel, view, device))
            continue;
        for (const BlockSummary& block : kernel.blocks) {
            if (block.kind == BlockKind::loop)
                loops.push_back({&kernel, &block, block.metrics[Metric::valid]});
        }
    }
    std::ranges::stable_sort(loops, std::greater(),
                             [](const ShownBlock& loop) { return loop.time.value_or(-1); });
    SummaryPart part({{"LOOP", Align::left, 24},
                      {"VALID", Align::right},
                      {"CYCLES/ITERATION", Align::right},
                      {"WITHOUT STALLS", Align::right},
                      {"SOURCE"}});
    const std::size_t most = view.top ? loops.size() : usual_rows.loops;
    for (const ShownBlock& loop : loops) {
        if (&loop - loops.data() >= static_cast<std::ptrdiff_t>(most)) {
            part.num_hidden++;
            continue;
        }
        const MetricValues& metrics = loop.block->metrics;
        const auto cycles = [&](Metric which) {
            return TableCell{metric_cell(summary, which, metrics[which])};
        };
        part.table.add_row({{kernel_cell(*loop.kernel) + "/" + loop.block->name},
                            {percent_cell(metrics[Metric::valid])},
                            cycles(Metric::iteration),
                            cycles(Metric::net),
                            {source_cell(*loop.block, view.short_sources)}});
    }
    part.hidden_words = "more loops; --top shows them";
    return part;
}

// In megabytes a second and in percent of the peak. A lower bound begins with ">=".
SummaryPart memories_part(const ProfileSummary& summary, const SummaryView& view) {
    SummaryPart part({{"MEMORY", Align::left, 16},
                      {"MEAN MB/S", Align::right},
                      {"MAX MB/S", Align::right},
                      {"PEAK MB/S", Align::right},
                      {"MEAN", Align::right},
                      {"MAX", Align::right},
                      {"FULL", Align::right},
                      {"(mean over the span)"}});
    std::size_t num_rows = 0;
    for (const MemorySummary& memory : summary.memories) {
        if (!view.top && num_rows++ >= usual_rows.memories) {
            part.num_hidden++;
            continue;
        }
        const std::string bound = memory.lower_bound ? ">=" : "";
        const auto bounded = [&](const std::string& text) {
            return TableCell{text == "-" ? text : bound + text};
        };
        const auto share = [&](Metric which) {
            const Value& used = memory.metrics[which];
            const bool known = used && memory.peak && *memory.peak > 0;
            return bounded(percent_cell(known ? Value(*used / *memory.peak * 100) : Value()));
        };
        part.table.add_row({{memory.name},
                            bounded(count_cell(memory.metrics[Metric::memory_mean])),
                            bounded(count_cell(memory.metrics[Metric::memory_max])),
                            {count_cell(memory.peak)},
                            share(Metric::memory_mean),
                            share(Metric::memory_max),
                            bounded(percent_cell(memory.metrics[Metric::memory_full]))});
    }
    part.hidden_words = "more memories; --top shows them";
    return part;
}

SummaryPart transfers_part(const ProfileSummary& summary, const SummaryView& view) {
    SummaryPart part({{"TRANSFER", Align::left, 20},
                      {"QUEUE", Align::right},
                      {"COUNT", Align::right},
                      {"TOTAL", Align::right},
                      {"MEDIAN", Align::right},
                      {"BUSY", Align::right}});
    std::size_t num_rows = 0;
    for (const TransferSummary& transfer : summary.transfers) {
        if (!view.top && num_rows++ >= usual_rows.transfers) {
            part.num_hidden++;
            continue;
        }
        part.table.add_row({{transfer.type},
                            {std::to_string(transfer.queue)},
                            {std::to_string(transfer.num)},
                            {time_cell(summary, transfer.total)},
                            {time_cell(summary, transfer.median)},
                            {percent_cell(transfer.busy)}});
    }
    part.hidden_words = "more kinds of transfers; --top shows them";
    return part;
}

// Whether a row is wider than the view. Sentences, which begin with blanks, are wrapped anyway.
bool is_too_wide(const SummaryPart& part, const SummaryView& view) {
    std::istringstream text(part.table.text({}));
    for (std::string line; std::getline(text, line);) {
        if (!line.starts_with(' ') && display_width(line) > view.width)
            return true;
    }
    return false;
}

void append(std::string& text, const SummaryPart& part, const SummaryView& view) {
    if (part.table.empty())
        return;
    text += "\n" + part.table.text({view.width, view.colors});
    if (part.num_hidden > 0)
        text += styled("and " + count_text(static_cast<double>(part.num_hidden)) + " " + part.hidden_words,
                       Style::faint, view.colors) +
                "\n";
}

} // namespace

std::string summary_text(const ProfileSummary& summary, const SummaryView& view) {
    std::string text = answers_text(summary, view) + "\n" + span_text(summary);
    const auto devices = devices_of(summary);
    // Names of blocks matter more than folders of sources.
    SummaryView view_of_short_sources = view;
    view_of_short_sources.short_sources = true;
    const auto append_of_devices = [&](auto make_part) {
        for (const std::optional<int>& device : devices) {
            SummaryPart part = make_part(summary, view, device);
            if (is_too_wide(part, view))
                part = make_part(summary, view_of_short_sources, device);
            if (devices.size() > 1 && !part.table.empty())
                text += "\n" + styled(device ? "device " + std::to_string(*device) : "several devices",
                                      Style::strong, view.colors);
            append(text, part, view);
        }
    };
    append_of_devices(kernels_part);
    append_of_devices(blocks_part);
    append(text, memories_part(summary, view), view);
    append_of_devices(loops_part);
    append(text, transfers_part(summary, view), view);
    if (!summary.notes.empty())
        text += "\n";
    for (const Note& note : summary.notes)
        text +=
            styled(wrapped(printable("note: " + note.text), view.width, 0), Style::faint, view.colors) + "\n";
    return text;
}

} // namespace zan::tool
