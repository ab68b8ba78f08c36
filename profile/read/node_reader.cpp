// SPDX-License-Identifier: Apache-2.0
// What must hold: the head of a kernel's node stands before its children, as in each report. Children are
// handed on one by one, so that a node of many blocks is never held as a whole.
#include "node_reader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

#include "number_text.h"

namespace zan::profile {

namespace {

using Place = NodeReader::Place;

struct Step {
    Place from;
    std::string_view key; // empty for the elements of an array
    Place to;
};

constexpr Step steps[] = {
    {Place::kernel_list, "", Place::kernel},
    {Place::kernel, "children", Place::children},
    {Place::kernel, "sourcefile", Place::kernel_source},
    {Place::children, "", Place::child},
    {Place::child, "module_inst_details", Place::details},
    {Place::child, "sourcefiles", Place::sources},
    {Place::sources, "", Place::source},
    {Place::source, "callsite", Place::callsites},
    {Place::callsites, "", Place::source},
    {Place::transfer_list, "", Place::transfer},
    {Place::board_list, "", Place::board},
    {Place::board, "children", Place::memory_list},
    {Place::memory_list, "", Place::memory},
    {Place::info_list, "", Place::info},
    {Place::root, "versions", Place::versions},
    {Place::root, "kernels", Place::kernels},
    {Place::kernels, "nodes", Place::kernel_list},
    {Place::root, "boards", Place::boards},
    {Place::boards, "nodes", Place::board_list},
    {Place::root, "memtransfers", Place::transfers},
    {Place::transfers, "nodes", Place::transfer_list},
    {Place::root, "run_info", Place::infos},
    {Place::infos, "nodes", Place::info_list},
};

struct CountsKey {
    Place place;
    std::string_view key;
    Counts counts;
};
constexpr CountsKey counts_keys[] = {
    {Place::kernel, "device_ids", Counts::devices},
    {Place::kernel, "command_queue_id", Counts::queues},
    {Place::kernel, "sample_timestamps", Counts::timestamps},
    {Place::kernel, "total_cycles_between_samples", Counts::cycles},
    {Place::details, "occupancy_samples", Counts::valid},
    {Place::details, "stall_samples", Counts::stall},
    {Place::details, "idle_samples", Counts::idle},
    {Place::details, "max_channel_depth_samples", Counts::max_fill},
    {Place::details, "activity_samples", Counts::requests},
    {Place::details, "cache_hit_samples", Counts::hits},
    {Place::details, "non_aligned_access_samples", Counts::unaligned},
};

struct RatesKey {
    Place place;
    std::string_view key;
    Rates rates;
};
constexpr RatesKey rates_keys[] = {
    {Place::details, "average_channel_depth_samples", Rates::fill},
    {Place::details, "bandwidth_samples", Rates::bandwidth},
    {Place::details, "bandwidth_eff_samples", Rates::efficiency},
    {Place::details, "average_burst_size", Rates::burst},
    {Place::child, "global_used_bw", Rates::bandwidth},
    {Place::child, "avg_write_burst", Rates::write_burst},
    {Place::child, "avg_read_burst", Rates::read_burst},
};

// A decimal number that is all of the text; NaN for any other text.
float float_of(std::string_view text) {
    float value = 0.0f;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size())
        return std::numeric_limits<float>::quiet_NaN();
    return value;
}

Value positive_number(std::string_view text) {
    const float value = float_of(text);
    return value > 0.0f && std::isfinite(value) ? Value(static_cast<double>(value)) : std::nullopt;
}

// Appends the numbers in the list's own type. The reader of a text can't know the type: "1" may be any.
template <class T, class Values>
void take_numbers(SampleList<T>& list, const Values& values) {
    using From = std::remove_cvref_t<decltype(values[0])>;
    if constexpr (std::is_same_v<Values, SampleList<T>>) {
        list = values; // elements don't come as lists
    } else {
        std::array<T, 256> block;
        for (std::size_t begin = 0; begin < values.size(); begin += block.size()) {
            const std::size_t count = std::min(block.size(), values.size() - begin);
            for (std::size_t i = 0; i < count; ++i) {
                const From value = values[begin + i];
                if constexpr (std::is_floating_point_v<From> && std::is_integral_v<T>)
                    block[i] = value >= -9.2e18f && value <= 9.2e18f ? static_cast<T>(value) : T{-1};
                else
                    block[i] = static_cast<T>(value);
            }
            list.append(block.data(), count);
        }
    }
}

} // namespace

void NodeArrays::clear() {
    // Blocks of one kernel have different arrays, so the storage of long ones would add up.
    constexpr std::size_t most_kept = std::size_t{1} << 16;
    const auto clear_list = [](auto& list) {
        if (list.stored().size() > most_kept)
            list = {};
        else
            list.clear();
    };
    std::ranges::for_each(counts, clear_list);
    std::ranges::for_each(rates, clear_list);
}

NodeReader::Place NodeReader::place_of_child(std::string_view key) const {
    const Place from = place();
    for (const Step& step : steps) {
        if (step.from == from && step.key == key)
            return step.to;
    }
    return Place::skipped;
}

// Null in a place that has none.
NodeArrays* NodeReader::arrays_of_place() {
    switch (place()) {
        case Place::kernel:
            return &m_kernel.arrays;
        case Place::details:
            return &m_block.arrays;
        case Place::child:
            return &m_port.arrays;
        default:
            return nullptr;
    }
}

// Sets m_counts or m_rates to the array of that key in the open node; false if there is none. Those of an
// array that is open stay, whatever is in it.
bool NodeReader::find_array(std::string_view key) {
    NodeArrays* const arrays = arrays_of_place();
    if (!arrays)
        return false;
    m_counts = nullptr;
    m_rates = nullptr;
    for (const CountsKey& row : counts_keys) {
        if (row.place == place() && row.key == key)
            m_counts = &(*arrays)[row.counts];
    }
    for (const RatesKey& row : rates_keys) {
        if (row.place == place() && row.key == key)
            m_rates = &(*arrays)[row.rates];
    }
    return m_counts != nullptr || m_rates != nullptr;
}

void NodeReader::open(std::string_view key, Form form) {
    Place child = place_of_child(key);
    if (child == Place::source && !m_needs_sources)
        child = Place::skipped;
    if (child == Place::skipped && form == Form::array && find_array(key))
        child = m_counts ? Place::counts : Place::rates;
    m_open.push_back(child);
    begin(child);
}

void NodeReader::close() {
    if (m_open.empty())
        return;
    const Place closed = m_open.back();
    m_open.pop_back();
    end(closed);
}

void NodeReader::array(std::string_view key, const ReportArray& values) {
    if (find_array(key))
        take(values);
}

void NodeReader::elements(const ReportArray& values) {
    if (place() == Place::counts || place() == Place::rates)
        take(values);
}

// Whether the first number of the array that is found is enough.
bool NodeReader::takes_one() const {
    return m_counts != nullptr && !m_taker.needs_queues() &&
           (m_counts == &m_kernel.arrays[Counts::devices] || m_counts == &m_kernel.arrays[Counts::queues]);
}

void NodeReader::take(const ReportArray& values) {
    values.visit([&](const auto& numbers) {
        if (!m_counts)
            take_numbers(*m_rates, numbers);
        else if (!takes_one())
            take_numbers(*m_counts, numbers);
        else if (m_counts->empty())
            take_numbers(*m_counts, std::array{numbers[0]});
    });
}

void NodeReader::begin(Place place) {
    switch (place) {
        case Place::kernel:
            m_kernel.name.clear();
            m_kernel.compute_unit = 0;
            m_kernel.source = {};
            m_kernel.start.reset();
            m_kernel.shared = SharedType::none;
            m_kernel.autorun = false;
            m_kernel.arrays.clear();
            m_kernel_begun = false;
            break;
        case Place::children:
            begin_children();
            break;
        case Place::child:
            m_child_type.clear();
            m_block.name.clear();
            m_block.memory_type.clear();
            m_block.operation.clear();
            m_block.memory.clear();
            m_block.coalesced = false;
            m_block.sources.clear();
            m_block.arrays.clear();
            m_port.memory.clear();
            m_port.interface.clear();
            m_port.port.clear();
            m_port.read_only = false;
            m_port.write_only = false;
            m_port.arrays.clear();
            break;
        case Place::sources:
            m_needs_sources = m_taker.needs_sources(m_block.name);
            break;
        case Place::source:
            if (m_open.size() >= 2 && m_open[m_open.size() - 2] == Place::sources)
                m_block.sources.emplace_back();
            m_block.sources.back().emplace_back();
            break;
        case Place::transfer:
            m_transfer = {};
            break;
        case Place::memory:
            m_memory = {};
            break;
        default:
            break;
    }
}

void NodeReader::end(Place place) {
    switch (place) {
        case Place::kernel:
            begin_children(); // of a node that has none
            m_taker.end_kernel();
            break;
        case Place::child:
            finish_child();
            break;
        case Place::transfer:
            m_taker.transfer(m_transfer);
            break;
        case Place::memory:
            m_taker.board_memory(m_memory);
            break;
        case Place::board:
            m_taker.board(m_board);
            break;
        case Place::info:
            m_taker.clock(m_clock);
            break;
        case Place::versions:
            m_taker.versions(m_program_version, m_zanx_version);
            break;
        default:
            break;
    }
}

void NodeReader::begin_children() {
    if (!m_kernel_begun)
        m_taker.begin_kernel(m_kernel);
    m_kernel_begun = true;
}

void NodeReader::finish_child() {
    if (m_child_type == "moduleinst") {
        m_taker.block(m_block);
    } else if (m_child_type == "extmem") {
        m_port.memory = m_block.name; // both kinds have the key
        m_taker.port(m_port);
    }
}

void NodeReader::text(std::string_view key, std::string_view text) {
    switch (place()) {
        case Place::kernel:
            kernel_text(key, text);
            break;
        case Place::kernel_source:
            source_text(m_kernel.source, key, text);
            break;
        case Place::child:
            child_text(key, text);
            break;
        case Place::details:
            details_text(key, text);
            break;
        case Place::source:
            source_text(m_block.sources.back().back(), key, text);
            break;
        case Place::transfer:
            transfer_text(key, text);
            break;
        case Place::memory:
            memory_text(key, text);
            break;
        case Place::board:
            if (key == "board_type")
                m_board = text;
            break;
        case Place::info:
            if (key == "fmax")
                m_clock = text;
            break;
        case Place::versions:
            if (key == "profiler_json_version")
                m_program_version = text;
            else if (key == "zanx_version")
                m_zanx_version = text;
            break;
        case Place::counts:
        case Place::rates:
            number_text(text);
            break;
        default:
            break;
    }
}

void NodeReader::kernel_text(std::string_view key, std::string_view text) {
    if (key == "name")
        m_kernel.name = text;
    else if (key == "compute_unit")
        m_kernel.compute_unit = parse_int(text).value_or(0);
    else if (key == "start_time")
        m_kernel.start = parse_long_long(text);
    else if (key == "shared_counter_run_type") {
        const int type = parse_int(text).value_or(-1);
        m_kernel.shared = type >= 0 && type <= 3 ? static_cast<SharedType>(type) : SharedType::none;
    } else if (key == "is_autorun")
        m_kernel.autorun = text == "true";
    else if (key == "children")
        begin_children();
}

void NodeReader::child_text(std::string_view key, std::string_view text) {
    if (key == "type")
        m_child_type = text;
    else if (key == "name")
        m_block.name = text;
    else if (key == "interface")
        m_port.interface = text;
    else if (key == "port")
        m_port.port = text;
    else if (key == "write_only")
        m_port.write_only = text == "true";
    else if (key == "read_only")
        m_port.read_only = text == "true";
}

void NodeReader::details_text(std::string_view key, std::string_view text) {
    if (key == "mem_type")
        m_block.memory_type = text;
    else if (key == "operation_type")
        m_block.operation = text;
    else if (key == "global_mem_name")
        m_block.memory = text;
    else if (key == "coalesced_memory")
        m_block.coalesced = text == "true";
}

void NodeReader::source_text(SourcePlace& place, std::string_view key, std::string_view text) {
    if (key == "filename")
        place.file = text;
    else if (key == "line")
        place.line = parse_int(text).value_or(0);
    else if (key == "column_num")
        place.column = parse_int(text).value_or(0);
}

void NodeReader::transfer_text(std::string_view key, std::string_view text) {
    if (key == "type_transfer")
        m_transfer.type = text;
    else if (key == "device_id")
        m_transfer.device = parse_int(text).value_or(0);
    else if (key == "command_queue_id")
        m_transfer.queue = parse_int(text).value_or(0);
    else if (key == "start_time")
        m_transfer.start = parse_long_long(text).value_or(0);
    else if (key == "end_time")
        m_transfer.end = parse_long_long(text).value_or(0);
}

void NodeReader::memory_text(std::string_view key, std::string_view text) {
    if (key == "global_memory_name")
        m_memory.name = text;
    else if (key == "max_theoretical_globalmem_bw")
        m_memory.peak = positive_number(text);
    else if (key == "max_burst_count")
        m_memory.max_burst = positive_number(text);
}

// An element of an array that isn't all numbers, so that it came text by text.
void NodeReader::number_text(std::string_view text) {
    if (!m_counts)
        m_rates->push_back(float_of(text));
    else if (!takes_one() || m_counts->empty())
        m_counts->push_back(parse_long_long(text).value_or(-1));
}

} // namespace zan::profile
