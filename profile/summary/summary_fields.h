// SPDX-License-Identifier: Apache-2.0
// The members of a summary as its JSON names them: one list for writing and for reading. A key carries the
// unit of its value; the unit of times depends on the run, so the archive adds it.
//
// An archive has a function for each form of a member: text, flag and choice (with their usual value),
// number, time, count (never negative), integer, words (a list of texts), list, object, metrics, and choice
// (with the words for the values of an enumeration). A member that is missing, empty or as usual has no key.
#pragma once

#include <concepts>
#include <type_traits>

#include "profile_summary.h"

namespace zan::profile {

inline constexpr const char* kind_words[] = {"global", "loop", "channel", "other"};
inline constexpr const char* direction_words[] = {"none", "read", "write"};

// Const when it is written.
template <class Type, class Plain>
concept Is = std::same_as<std::remove_const_t<Type>, Plain>;

template <class Archive>
void fields(Archive& archive, Is<SourcePlace> auto& place) {
    archive.text("file", place.file);
    archive.integer("line", place.line);
    archive.integer("column", place.column);
}

template <class Archive>
void fields(Archive& archive, Is<Sentence> auto& sentence) {
    archive.text("rule", sentence.rule);
    archive.text("tone", sentence.tone);
    archive.text("text", sentence.text);
}

template <class Archive>
void fields(Archive& archive, Is<BlockSummary> auto& block) {
    archive.text("name", block.name);
    archive.choice("kind", block.kind, BlockKind::other, kind_words);
    archive.choice("direction", block.direction, Direction::none, direction_words);
    archive.text("memory", block.memory);
    archive.text("port", block.port);
    archive.flag("coalesced", block.coalesced, false);
    archive.list("sources", block.sources);
    archive.count("samples", block.num_samples);
    archive.count("samples_left_out", block.num_left_out);
    archive.flag("stall_counted", block.stall_counted, true);
    archive.number("counted_cycles", block.cycles);
    archive.number("iterations_per_invocation", block.iterations);
    archive.number("own_share_percent", block.own_share);
    archive.number("block_share_percent", block.block_share);
    archive.number("read_share_percent", block.read_share);
    archive.number("write_share_percent", block.write_share);
    archive.words("rivals", block.rivals);
    archive.number("largest_burst_words", block.max_burst);
    archive.number("access_bytes", block.access_bytes);
    archive.number("port_limit_mb_per_s", block.port_limit);
    archive.number("greatest_valid_percent", block.max_valid);
    archive.number("stalled_part_percent", block.stalled_part);
    archive.time("stalled_from", block.stalled_from);
    archive.time("stalled_to", block.stalled_to);
    archive.flag("innermost", block.innermost, false);
    archive.metrics(block.metrics);
    archive.object("sentence", block.sentence);
}

template <class Archive>
void fields(Archive& archive, Is<PortSummary> auto& port) {
    archive.text("memory", port.memory);
    archive.text("interface", port.interface);
    archive.text("port", port.port);
    archive.flag("reads", port.reads, false);
    archive.flag("writes", port.writes, false);
    archive.number("mean_mb_per_s", port.mean);
    archive.number("max_mb_per_s", port.max);
    archive.number("moved_bytes", port.bytes);
    archive.number("read_burst_words", port.read_burst);
    archive.number("write_burst_words", port.write_burst);
}

template <class Archive>
void fields(Archive& archive, Is<KernelSummary> auto& kernel) {
    archive.text("name", kernel.name);
    archive.integer("compute_unit", kernel.compute_unit);
    archive.optional_count("compute_units", kernel.num_units);
    archive.optional_integer("device", kernel.device);
    archive.object("source", kernel.source);
    archive.flag("autorun", kernel.autorun, false);
    archive.count("shared_counter_types", kernel.shared_types);
    archive.count("invocations", kernel.num_invocations);
    archive.count("samples", kernel.num_samples);
    archive.time("shortest", kernel.shortest);
    archive.time("longest", kernel.longest);
    archive.time("median_low", kernel.median_low);
    archive.time("median_high", kernel.median_high);
    archive.time("gaps", kernel.gaps);
    archive.time("union", kernel.union_time);
    archive.words("team", kernel.team);
    archive.text("culprit", kernel.culprit);
    archive.metrics(kernel.metrics);
    archive.list("blocks", kernel.blocks);
    archive.list("ports", kernel.ports);
}

template <class Archive>
void fields(Archive& archive, Is<InterfaceSummary> auto& interface) {
    archive.text("name", interface.name);
    archive.number("moved_bytes", interface.bytes);
    archive.number("use_percent", interface.use);
}

template <class Archive>
void fields(Archive& archive, Is<MemorySummary> auto& memory) {
    archive.text("name", memory.name);
    archive.number("peak_mb_per_s", memory.peak);
    archive.number("largest_burst_words", memory.max_burst);
    archive.flag("from_ports", memory.from_ports, false);
    archive.flag("lower_bound", memory.lower_bound, false);
    archive.number("read_share_percent", memory.read_share);
    archive.number("write_share_percent", memory.write_share);
    archive.list("interfaces", memory.interfaces);
    archive.metrics(memory.metrics);
}

template <class Archive>
void fields(Archive& archive, Is<TransferSummary> auto& transfer) {
    archive.text("type", transfer.type);
    archive.integer("queue", transfer.queue);
    archive.count("transfers", transfer.num);
    archive.plain_time("total", transfer.total);
    archive.plain_time("median", transfer.median);
    archive.plain_number("busy_percent", transfer.busy);
}

template <class Archive>
void fields(Archive& archive, Is<Note> auto& note) {
    archive.text("code", note.code);
    archive.text("text", note.text);
}

template <class Archive>
void fields(Archive& archive, Is<Answers> auto& answers) {
    archive.text("kernel", answers.kernel);
    archive.text("block", answers.block);
    archive.text("source", answers.source);
    archive.text("memory", answers.memory);
    archive.text("leading_kernel", answers.leading_kernel);
    archive.text("culprit_kernel", answers.culprit_kernel);
    archive.text("culprit_block", answers.culprit_block);
}

template <class Archive>
void fields(Archive& archive, Is<ProfileSummary> auto& summary) {
    archive.number("time_unit_ns", summary.nanoseconds);
    archive.text("input", summary.input);
    archive.text("program_version", summary.program_version);
    archive.text("zanx_version", summary.zanx_version);
    archive.text("board", summary.board);
    archive.text("clock_text", summary.clock_text);
    archive.number("clock_mhz", summary.clock_mhz);
    archive.text("start", summary.start);
    archive.time("kernels_ran", summary.kernel_time);
    archive.time("only_transfers_ran", summary.transfer_only);
    archive.count("invocations", summary.num_invocations);
    archive.count("samples", summary.num_samples);
    archive.metrics(summary.metrics);
    archive.object("answers", summary.answers);
    archive.list("kernels", summary.kernels);
    archive.list("memories", summary.memories);
    archive.list("transfers", summary.transfers);
    archive.list("notes", summary.notes);
}

// What the key of a metric ends in.
constexpr const char* unit_suffix(MetricUnit unit, bool time_unit_known) {
    switch (unit) {
        case MetricUnit::percent:
            return "_percent";
        case MetricUnit::time:
            return time_unit_known ? "_ns" : "_ticks";
        case MetricUnit::cycles:
            return "_cycles";
        case MetricUnit::megabytes_per_second:
            return "_mb_per_s";
        case MetricUnit::bytes:
            return "_bytes";
        case MetricUnit::words:
            break;
    }
    return "_words";
}

} // namespace zan::profile
