// SPDX-License-Identifier: Apache-2.0
// The part of TlyModuleInst that takes the numbers of monitor lines into its counters: of one line, whose
// every fault is reported, and of a block of lines.
//
// What must hold: decoding a block leaves the same samples and flags, and writes the same messages, as
// decoding its lines one after the other. So a block has no faults to report. can_take_blocks() says which
// instances keep to that; the reader sees to the lines.
//
// Why blocks: a line brings one value for each of some thousand lists, which together outgrow the nearer
// caches. One by one, lines were decoded at 71 million values a second with 5 instances, and at 29 million
// with 500. Up to 64 lines at once touch each list once for all of them: 371 and 145 million. Sums are made
// column by column on the stack. Nothing is looked up: what a tag means was worked out when it was added.
#include <algorithm>
#include <set>
#include <tuple>

#include "diagnostics.h"
#include "tly_module_inst.h"

namespace {

// Reports the faults that a tag has on each of its values; true if the value can be recorded.
bool warn_of_faults(const ExtMemTag& tag, const TlyModuleInst& inst) {
    if (tag.names_op && tag.fault == ExtMemTag::Fault::none)
        return true;
    const MessageDetails details{
        .subject = tag.fault_text, .kernel = inst.getFunction(), .block = inst.getName()};
    if (!tag.names_op)
        diagnose(Message::memory_tag_without_operation, details);
    switch (tag.fault) {
        case ExtMemTag::Fault::none:
            return true;
        case ExtMemTag::Fault::properties:
            diagnose(Message::memory_tag_unreadable, details);
            return false;
        case ExtMemTag::Fault::bank:
            diagnose(Message::memory_bank_invalid, details);
            return false;
        case ExtMemTag::Fault::port:
            diagnose(Message::memory_port_invalid, details);
            return false;
    }
    return false;
}

// A shared counter measured one kind in a run; the tags of the other kinds get nothing from it.
bool is_measured(const TagMeaning& meaning, SharedCounterTypes type) {
    return type == SHARED_NONE || meaning.shared_type == SHARED_NONE || meaning.shared_type == type;
}

} // namespace

void TlyModuleInst::mark_invalid(std::string_view text, int line_number) {
    m_invalid_values.push_back(fmt::format("{}.{}", text, INV_COUNTER));
    diagnose(
        Message::bad_counter,
        {.line = line_number, .subject = m_invalid_values.back(), .kernel = m_function, .block = m_name});
}

int TlyModuleInst::updateCounters(const MonFields& fields, int comp_unit, bool push, SharedCounterTypes type,
                                  int line_number) {
    constexpr int all_units = -1;
    MonField room;
    int result = 0;
    if (push)
        partialReset();
    for (const PortCounter& port : m_ports) {
        if (comp_unit != all_units && port.comp_unit != comp_unit)
            continue;
        const auto index = static_cast<std::size_t>(port.offset); // a negative offset is beyond every line
        const MonField& field = fields.get(index, room);
        long long value = field.value;
        if (!field.is_number) {
            mark_invalid(field.text, line_number);
            value = -1;
            result = -1;
        }
        // Valid cycles may stand for requests, whatever the tag is that takes a value in such a run.
        if (type == SHARED_IVALID)
            m_ireq_count_valid = true;
        if (!is_measured(port.meaning, type))
            continue;
        if (port.meaning.target == TagTarget::ext_mem)
            record_ext_mem(m_ext_mem_ports[port.ext_mem_port], value, push);
        else
            add_value(port.meaning, value);
    }
    if (push)
        pushValuesOnVectors();
    return result;
}

int TlyModuleInst::updateCounters(std::vector<std::string> tokens, int comp_unit, int /*line_length*/,
                                  bool push, SharedCounterTypes type, int line_number) {
    std::vector<MonField> fields;
    fields.reserve(tokens.size());
    for (const std::string& token : tokens)
        fields.push_back(read_mon_field(token));
    return updateCounters(MonFields(fields), comp_unit, push, type, line_number);
}

void TlyModuleInst::updateSingleCounter(const std::string& tag, long long value, bool push) {
    const TagMeaning meaning = meaning_of_tag(tag, m_total_cycles_tag);
    if (meaning.target == TagTarget::ext_mem) {
        ExtMemPort port{decode_ext_mem_tag(tag)};
        record_ext_mem(port, value, push);
    } else {
        if (meaning.target == TagTarget::counter)
            m_counters.activate(meaning.counter);
        add_value(meaning, value);
    }
}

void TlyModuleInst::add_value(const TagMeaning& meaning, long long value) {
    if (meaning.target == TagTarget::counter) {
        m_counters.add(meaning.counter, value);
        note_counter(meaning.counter);
    } else if (meaning.target == TagTarget::total_cycles) {
        m_functions.add(value);
        m_has_total_cycles = true;
    }
}

void TlyModuleInst::note_counter(Counter counter) {
    m_ireq_count_valid = m_ireq_count_valid || counter == Counter::ireq;
    m_has_total_fifo_size = m_has_total_fifo_size || counter == Counter::total_fifo;
    m_has_max_fifo_size = m_has_max_fifo_size || counter == Counter::max_fifo;
}

void TlyModuleInst::record_ext_mem(ExtMemPort& port, long long value, bool push) {
    if (warn_of_faults(port.tag, *this))
        ExtMemCounts::record(ext_mem_list(port), value, push);
}

// The list of a port, made if there is none. The tag must have no fault.
TlyModuleInst::Samples& TlyModuleInst::ext_mem_list(ExtMemPort& port) {
    if (!port.samples) {
        const ExtMemTag& tag = port.tag;
        port.samples = m_ext_mem_counts[tag.memory].samples(tag.op, tag.bank, tag.port);
    }
    return *port.samples;
}

void TlyModuleInst::updateExtMemCounter(const std::string& mem_name, ExtMemOpType op, int bank, int port,
                                        long long value, bool push) {
    if (op < EXT_MEM_READ || op > EXT_MEM_WRITE_BURST)
        return;
    ExtMemTag tag;
    tag.memory = mem_name;
    tag.op = op;
    tag.bank = bank;
    tag.port = port;
    if (bank < 0 || port < 0) {
        tag.fault = bank < 0 ? ExtMemTag::Fault::bank : ExtMemTag::Fault::port;
        tag.fault_text = std::to_string(bank < 0 ? bank : port);
    }
    ExtMemPort target{std::move(tag)};
    record_ext_mem(target, value, push);
}

bool TlyModuleInst::counts_total_cycles(int comp_unit) const {
    return std::any_of(m_ports.begin(), m_ports.end(), [&](const PortCounter& port) {
        return port.comp_unit == comp_unit && port.meaning.target == TagTarget::total_cycles;
    });
}

bool TlyModuleInst::can_take_blocks(int first_counter, std::size_t counters_on_line, int comp_unit) const {
    std::set<std::tuple<std::string_view, ExtMemOpType, int, int>> lists;
    for (const PortCounter& port : m_ports) {
        if (port.comp_unit != comp_unit)
            continue;
        if (port.offset < first_counter ||
            static_cast<std::size_t>(port.offset - first_counter) >= counters_on_line)
            return false;
        if (port.meaning.target != TagTarget::ext_mem)
            continue;
        const ExtMemTag& tag = m_ext_mem_ports[port.ext_mem_port].tag;
        if (tag.fault != ExtMemTag::Fault::none || !tag.names_op ||
            !lists.emplace(tag.memory, tag.op, tag.bank, tag.port).second)
            return false;
    }
    return true;
}

void TlyModuleInst::updateCounters(const LineBlock& lines, int first_counter, int comp_unit,
                                   SharedCounterTypes type) {
    CounterColumns columns;
    for (const PortCounter& port : m_ports) {
        if (port.comp_unit != comp_unit)
            continue;
        if (type == SHARED_IVALID)
            m_ireq_count_valid = true;
        if (is_measured(port.meaning, type))
            decode_column(port, lines, static_cast<std::size_t>(port.offset - first_counter), columns);
    }
    m_counters.append_lines(columns, lines.size());
    if (m_has_total_cycles)
        columns.append_to(function_cycles(), CounterColumns::total_cycles, lines.size());
}

// What add_value and record_ext_mem do with a counter's value on each line.
void TlyModuleInst::decode_column(const PortCounter& port, const LineBlock& lines, std::size_t field,
                                  CounterColumns& columns) {
    switch (port.meaning.target) {
        case TagTarget::nothing:
        case TagTarget::shared_counter:
            return;
        case TagTarget::counter:
            columns.add(static_cast<std::size_t>(port.meaning.counter), lines, field);
            note_counter(port.meaning.counter);
            return;
        case TagTarget::total_cycles:
            columns.add(CounterColumns::total_cycles, lines, field);
            m_has_total_cycles = true;
            return;
        case TagTarget::ext_mem:
            std::array<long long, LineBlock::max_lines> values;
            lines.column(field, values.data());
            ext_mem_list(m_ext_mem_ports[port.ext_mem_port]).append(values.data(), lines.size());
    }
}
