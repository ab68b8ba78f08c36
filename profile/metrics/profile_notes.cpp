// SPDX-License-Identifier: Apache-2.0
#include "profile_notes.h"

#include <algorithm>
#include <cmath>

#include "fmt/format.h"

namespace zan::profile {

namespace {

// Sums over all kernels of all runs.
struct Counted {
    std::uint64_t samples = 0;
    std::uint64_t left_out = 0; // of blocks
    std::uint64_t without_cycles = 0;
    std::uint64_t uncertain = 0;
    std::uint64_t backwards = 0;
    unsigned shared_types = 0;
    bool activity_in_part = false;
};

Counted count_all(const SummaryContext& context) {
    Counted counted;
    for (const auto& run : context.runs) {
        for (const KernelTotals& kernel : run->totals.kernels()) {
            counted.samples += kernel.num_samples;
            counted.without_cycles += kernel.num_without_cycles;
            counted.uncertain += kernel.num_uncertain;
            counted.backwards += kernel.num_backwards;
            counted.shared_types |= kernel.shared_types;
            counted.activity_in_part |= kernel.activity_in_part;
            for (const BlockTotals& block : kernel.blocks)
                counted.left_out += block.sums.num_left_out;
        }
    }
    return counted;
}

std::string shared_text(unsigned types) {
    constexpr std::string_view names[] = {"valid cycles", "stalled cycles", "idle cycles", "requests"};
    std::string counted;
    std::string missing;
    for (unsigned i = 0; i < std::size(names); ++i) {
        std::string& list = (types & (1U << i)) != 0 ? counted : missing;
        list += (list.empty() ? "" : ", ") + std::string(names[i]);
    }
    std::string text = "shared counters: " + counted + " were counted";
    if (!missing.empty())
        text += ", not " + missing + "; a run of each kind, given together, has all";
    return text;
}

void add_time_notes(std::vector<Note>& notes, const SummaryContext& context) {
    constexpr double most_deviation = 0.05;
    if (!context.clock_mhz)
        notes.push_back({"no-clock", "the report has no clock: no bandwidths, bytes and use of memories"});
    if (!context.unit.nanoseconds && context.clock_mhz)
        notes.push_back(
            {"no-time-unit",
             "the unit of times isn't known: cycles at the clock don't fit them in any; state it"});
    if (context.unit.deviation && *context.unit.deviation > most_deviation)
        notes.push_back(
            {"clock-mismatch",
             fmt::format("cycles at {} MHz differ by {:.0f}% from the time stamps: bandwidths are "
                         "doubtful",
                         context.runs.front()->totals.clock_text(), *context.unit.deviation * 100.0)});
}

void add_memory_notes(std::vector<Note>& notes, const ProfileSummary& summary) {
    std::string bounded;
    for (const MemorySummary& memory : summary.memories) {
        if (memory.lower_bound && memory.metrics[Metric::memory_mean])
            bounded += (bounded.empty() ? "" : ", ") + memory.name;
    }
    if (!bounded.empty())
        notes.push_back({"lower-bound", "not all that moves bytes is in the sums: " + bounded +
                                            " may be used more than shown"});
    std::string several;
    for (const KernelSummary& kernel : summary.kernels) {
        if (kernel.num_units.value_or(1) > 1)
            several +=
                fmt::format("{}{} has {}", several.empty() ? "" : ", ", kernel.name, *kernel.num_units);
    }
    if (!several.empty())
        notes.push_back({"compute-units", "a report has one compute unit of each kernel: " + several});
}

} // namespace

std::vector<Note> notes_of(const SummaryContext& context, const ProfileSummary& summary) {
    std::vector<Note> notes;
    const Counted counted = count_all(context);
    add_time_notes(notes, context);
    if (counted.shared_types != 0)
        notes.push_back({"shared-counters", shared_text(counted.shared_types)});
    if (counted.uncertain != 0)
        notes.push_back({"extra-cycles",
                         fmt::format("{} samples have more counts of cycles than one each: their shares and "
                                     "bandwidths are unknown",
                                     counted.uncertain)});
    if (counted.without_cycles != 0)
        notes.push_back({"no-cycles", fmt::format("{} of {} samples have no cycles and are left out",
                                                  counted.without_cycles, counted.samples)});
    if (counted.left_out != 0)
        notes.push_back(
            {"left-out", fmt::format("{} samples of blocks are left out: counts below 0, or no cycles",
                                     counted.left_out)});
    if (counted.backwards != 0)
        notes.push_back({"backwards", fmt::format("{} of {} samples end before they begin", counted.backwards,
                                                  counted.samples)});
    if (counted.activity_in_part)
        notes.push_back({"autorun-activity",
                         "an autorun kernel has too many samples to hold: whether it worked is "
                         "judged by the blocks that stand before in the report"});
    add_memory_notes(notes, summary);
    return notes;
}

} // namespace zan::profile
