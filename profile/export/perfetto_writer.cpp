// SPDX-License-Identifier: Apache-2.0
// What readers of a trace take for granted, and what is easy to miss:
// - Each packet carries the number of its sequence, or its clock means nothing and its events are dropped.
// - Tracks of one name and one parent are shown as one unless their merging is off.
// - Times are in a clock of the sequence, whose unit the first packet says. The unit is known only at the
//   end, so the first packet holds ten bytes for it, which are replaced then.
// - Events of one time keep their order in the file: a slice must end before the next one begins.
#include "perfetto_writer.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <utility>

#include "export_rows.h"
#include "kernel_label.h"
#include "slice_lanes.h"
#include "utf8_text.h"

namespace zan::profile {

namespace {

constexpr std::size_t trace_piece = std::size_t{1} << 18;
constexpr std::int64_t sequence = 1;
constexpr std::int64_t tick_clock = 64; // 64 to 127 belong to their sequence
constexpr std::int64_t boot_clock = 6;

// Numbers of fields, by messages.
namespace trace {
constexpr unsigned packet = 1;
}
namespace trace_packet {
constexpr unsigned clock_snapshot = 6, timestamp = 8, sequence_id = 10, track_event = 11, sequence_flags = 13,
                   timestamp_clock_id = 58, track_descriptor = 60;
constexpr std::int64_t incremental_state_cleared = 1; // of the flags
} // namespace trace_packet
namespace clock_snapshot {
constexpr unsigned clocks = 1;
constexpr unsigned clock_id = 1, timestamp = 2, unit_multiplier_ns = 4; // of a clock
} // namespace clock_snapshot
namespace track_descriptor {
constexpr unsigned uuid = 1, name = 2, parent_uuid = 5, counter = 8, child_ordering = 11, description = 14,
                   sibling_merge_behavior = 15;
constexpr std::int64_t chronological = 2; // of children
constexpr std::int64_t never_merged = 2;  // with siblings
} // namespace track_descriptor
namespace counter_descriptor {
constexpr unsigned unit_name = 6, y_axis_share_key = 7;
}
namespace track_event {
constexpr unsigned debug_annotations = 4, type = 9, track_uuid = 11, name = 23, counter_value = 30,
                   double_counter_value = 44;
constexpr std::int64_t slice_begin = 1, slice_end = 2, counter = 4; // types
} // namespace track_event
namespace debug_annotation {
constexpr unsigned int_value = 4, string_value = 6, name = 10;
}

std::int64_t trace_time(std::int64_t time) {
    return std::max<std::int64_t>(time, 0);
}

void add_argument(ProtoBytes& event, std::string_view name, const std::string& text) {
    if (text.empty())
        return;
    ProtoBytes argument;
    argument.bytes(debug_annotation::name, valid_utf8_text(name));
    argument.bytes(debug_annotation::string_value, valid_utf8_text(text));
    event.message(track_event::debug_annotations, argument);
}

void add_argument(ProtoBytes& event, std::string_view name, std::int64_t number) {
    ProtoBytes argument;
    argument.bytes(debug_annotation::name, name).integer(debug_annotation::int_value, number);
    event.message(track_event::debug_annotations, argument);
}

ProtoBytes timed_packet(std::int64_t time, const ProtoBytes& event) {
    ProtoBytes packet;
    packet.integer(trace_packet::timestamp, trace_time(time));
    packet.integer(trace_packet::timestamp_clock_id, tick_clock);
    packet.integer(trace_packet::sequence_id, sequence);
    packet.message(trace_packet::track_event, event);
    return packet;
}

char* write_tag(char* out, unsigned field, unsigned wire_type) {
    return write_varint(out, field << 3 | wire_type);
}

// A field of a number that fits into seven bits, or of a message of such a length.
char* write_small(char* out, unsigned field, unsigned wire_type, std::size_t value) {
    out = write_tag(out, field, wire_type);
    *out++ = static_cast<char>(value);
    return out;
}

} // namespace

PerfettoWriter::PerfettoWriter(TraceTarget target) : m_target(std::move(target)) {
    // In both clocks it is 0. The unit stands last, with a byte for its tag and ten for its value.
    ProtoBytes boot;
    boot.integer(clock_snapshot::clock_id, boot_clock).integer(clock_snapshot::timestamp, 0);
    ProtoBytes ticks;
    ticks.integer(clock_snapshot::clock_id, tick_clock).integer(clock_snapshot::timestamp, 0);
    ticks.integer(clock_snapshot::unit_multiplier_ns, -1); // has ten bytes
    ProtoBytes snapshot;
    snapshot.message(clock_snapshot::clocks, boot).message(clock_snapshot::clocks, ticks);
    ProtoBytes packet;
    packet.integer(trace_packet::sequence_id, sequence);
    packet.integer(trace_packet::sequence_flags, trace_packet::incremental_state_cleared);
    packet.message(trace_packet::clock_snapshot, snapshot);
    add_packet(packet);
    m_unit_place = m_text.size() - long_varint;
}

void PerfettoWriter::hand_on_when_full() {
    if (m_text.size() < trace_piece)
        return;
    m_target.append(m_text);
    m_text.clear();
}

void PerfettoWriter::add_packet(const ProtoBytes& packet) {
    ProtoBytes trace_bytes;
    trace_bytes.message(trace::packet, packet);
    m_text += trace_bytes.text();
}

std::int64_t PerfettoWriter::add_track(std::int64_t parent, const std::string& name,
                                       const std::string& description, const ProtoBytes* counter) {
    ProtoBytes track;
    track.integer(track_descriptor::uuid, ++m_num_tracks);
    if (parent != 0)
        track.integer(track_descriptor::parent_uuid, parent);
    track.bytes(track_descriptor::name, valid_utf8_text(name));
    if (!description.empty())
        track.bytes(track_descriptor::description, valid_utf8_text(description));
    if (counter)
        track.message(track_descriptor::counter, *counter);
    track.integer(track_descriptor::child_ordering, track_descriptor::chronological);
    track.integer(track_descriptor::sibling_merge_behavior, track_descriptor::never_merged);
    ProtoBytes packet;
    packet.integer(trace_packet::sequence_id, sequence).message(trace_packet::track_descriptor, track);
    add_packet(packet);
    return m_num_tracks;
}

void PerfettoWriter::new_kernel(std::int64_t, const KernelNode& node) {
    m_places.push_back(call_chain_text({{node.source}}));
    const std::string name = unit_label(node.name, node.compute_unit);
    m_kernels.push_back(add_track(0, name, m_places.back(), nullptr));
}

void PerfettoWriter::new_block(std::int64_t id, std::int64_t, const BlockNode& node) {
    m_blocks[id] = {node.name, call_chain_text(node.sources)};
}

void PerfettoWriter::new_port(std::int64_t id, std::int64_t, const PortNode& node) {
    m_ports[id] = {node.memory + " " + node.port, ""};
}

std::int64_t PerfettoWriter::counter_of(const SampleSeries& series) {
    const CounterKey key(series.table, series.kernel, series.owner.value_or(0), series.metric.name);
    const auto found = m_counters.find(key);
    if (found != m_counters.end())
        return found->second;
    Owner owner;
    if (series.owner)
        owner = series.table == ExportTable::sample ? m_blocks[*series.owner] : m_ports[*series.owner];
    // Counters of one unit in a kernel have one axis, so that they can be compared.
    ProtoBytes counter;
    counter.bytes(counter_descriptor::unit_name, series.metric.unit);
    counter.bytes(counter_descriptor::y_axis_share_key,
                  std::to_string(series.kernel) + " " + std::string(series.metric.unit));
    std::string name = owner.name;
    if (!name.empty())
        name += " ";
    name += series.metric.name;
    const std::int64_t track =
        add_track(m_kernels[static_cast<std::size_t>(series.kernel) - 1], name, owner.description, &counter);
    m_counters.emplace(key, track);
    return track;
}

// A counter keeps its value until the next one: a sample's value stands where the sample begins, and a 0
// where the last one ends.
void PerfettoWriter::series(const SampleSeries& series) {
    if (!series.lines_up || !series.measured || !series.invocation)
        return;
    const std::int64_t track = counter_of(series);
    std::int64_t begin = series.begin;
    SeriesReader reader(series);
    SeriesChunk chunk;
    while (reader.next(chunk)) {
        add_chunk(chunk, track, begin);
        hand_on_when_full();
    }
    ProtoBytes event;
    event.integer(track_event::type, track_event::counter).integer(track_event::track_uuid, track);
    add_packet(timed_packet(begin, event.integer(track_event::counter_value, 0)));
}

// The same as by ProtoBytes, without a text for each value: all lengths are below 128.
void PerfettoWriter::add_chunk(const SeriesChunk& chunk, std::int64_t track, std::int64_t& begin) {
    constexpr std::size_t most_packet = 64;
    enum WireType : unsigned { varint = 0, fixed64 = 1, length = 2 };
    const std::size_t old_size = m_text.size();
    m_text.resize(old_size + chunk.size * most_packet);
    char* out = m_text.data() + old_size;
    for (std::size_t i = 0; i < chunk.size && chunk.timed[i]; begin = chunk.times[i++]) {
        if (!chunk.known[i])
            continue;
        char event[most_packet];
        char* end = write_small(event, track_event::type, varint, track_event::counter);
        end =
            write_varint(write_tag(end, track_event::track_uuid, varint), static_cast<std::uint64_t>(track));
        if (chunk.are_counts) {
            end = write_varint(write_tag(end, track_event::counter_value, varint),
                               static_cast<std::uint64_t>(chunk.counts[i]));
        } else {
            end = write_tag(end, track_event::double_counter_value, fixed64);
            const auto bits = std::bit_cast<std::uint64_t>(chunk.value(i));
            for (unsigned shift = 0; shift < 64; shift += 8)
                *end++ = static_cast<char>(bits >> shift);
        }
        char* const packet = out + 2;
        out = write_varint(write_tag(packet, trace_packet::timestamp, varint),
                           static_cast<std::uint64_t>(trace_time(begin)));
        out = write_small(out, trace_packet::timestamp_clock_id, varint, tick_clock);
        out = write_small(out, trace_packet::sequence_id, varint, sequence);
        const auto event_size = static_cast<std::size_t>(end - event);
        out = write_small(out, trace_packet::track_event, length, event_size);
        std::memcpy(out, event, event_size);
        out += event_size;
        write_small(packet - 2, trace::packet, length, static_cast<std::size_t>(out - packet));
    }
    m_text.resize(static_cast<std::size_t>(out - m_text.data()));
}

void PerfettoWriter::add_slice(std::int64_t track, const TimeSpan& span, const std::string& name,
                               const ProtoBytes& arguments) {
    ProtoBytes event;
    event.integer(track_event::type, track_event::slice_begin).integer(track_event::track_uuid, track);
    event.bytes(track_event::name, valid_utf8_text(name)).append(arguments);
    add_packet(timed_packet(span.begin, event));
    ProtoBytes end;
    end.integer(track_event::type, track_event::slice_end).integer(track_event::track_uuid, track);
    add_packet(timed_packet(span.end, end));
    hand_on_when_full();
}

void PerfettoWriter::add_invocations(const WholeRun& run, std::size_t place) {
    const KernelTotals& kernel = run.totals.kernels()[place];
    const std::string name = unit_label(kernel.key.name, kernel.key.compute_unit);
    const auto& invocations = run.ids.kernels[place].invocations;
    std::vector<std::int64_t> tracks = {m_kernels[place]};
    bool is_first = true;
    for (const LaneSlice& slice : slice_lanes(kernel.invocations.spans())) {
        if (slice.lane >= tracks.size())
            tracks.push_back(add_track(0, name, m_places[place], nullptr));
        ProtoBytes arguments;
        add_argument(arguments, "invocation_id", invocations[slice.place].id);
        add_argument(arguments, "samples", static_cast<std::int64_t>(invocations[slice.place].num_samples));
        add_argument(arguments, "source", m_places[place]);
        // They are the same in all slices of the kernel, and many.
        for (std::size_t i = 0; is_first && i < kernel.blocks.size(); ++i)
            add_argument(arguments, "source of " + kernel.blocks[i].name,
                         call_chain_text(kernel.blocks[i].sources));
        is_first = false;
        add_slice(tracks[slice.lane], kernel.invocations.spans()[slice.place], kernel.key.name, arguments);
    }
}

void PerfettoWriter::add_transfers(const WholeRun& run) {
    struct Queue {
        std::vector<TimeSpan> spans;
        std::vector<std::string> types;
    };
    std::map<int, Queue> queues;
    for (const auto& [key, spans] : run.totals.transfers()) {
        Queue& queue = queues[key.second];
        queue.spans.insert(queue.spans.end(), spans.begin(), spans.end());
        queue.types.insert(queue.types.end(), spans.size(), key.first);
    }
    for (const auto& [number, queue] : queues) {
        std::vector<std::int64_t> tracks;
        for (const LaneSlice& slice : slice_lanes(queue.spans)) {
            if (slice.lane >= tracks.size())
                tracks.push_back(add_track(0, "transfers of queue " + std::to_string(number), "", nullptr));
            add_slice(tracks[slice.lane], queue.spans[slice.place], queue.types[slice.place], {});
        }
    }
}

void PerfettoWriter::finish(const WholeRun& run) {
    for (std::size_t place = 0; place < run.ids.kernels.size(); ++place)
        add_invocations(run, place);
    add_transfers(run);
    m_target.append(m_text);
    m_text.clear();
    char unit[long_varint];
    // A unit below a nanosecond can't be said: its ticks are shown as nanoseconds.
    const double nanoseconds = std::max(std::round(run.summary.nanoseconds.value_or(1.0)), 1.0);
    write_long_varint(unit, static_cast<std::uint64_t>(nanoseconds));
    m_target.replace(m_unit_place, std::string_view(unit, sizeof unit));
}

} // namespace zan::profile
