// How the numbers of a monitor line reach the counters of a module instance.
#include <algorithm>
#include <set>
#include <tuple>

#include "diagnostics.h"
#include "tly_module_inst.h"
#include "wrapping.h"

namespace {

// Gives the messages that a tag owes for each of its values; true if the value can be recorded.
bool write_faults(const ExtMemTag& tag) {
    if (!tag.names_op)
        diagnose("WARNING: extmem port tag does not match an op type\n");
    switch (tag.fault) {
        case ExtMemTag::Fault::none:
            return true;
        case ExtMemTag::Fault::properties:
            diagnose("WARNING: something went wrong when decoding the properties of the external memory {}\n",
                     tag.fault_text);
            return false;
        case ExtMemTag::Fault::bank:
            diagnose("WARNING: value for external memory bank was invalid: {}\n", tag.fault_text);
            return false;
        case ExtMemTag::Fault::port:
            diagnose("WARNING: value for external memory port was invalid: {}\n", tag.fault_text);
            return false;
    }
    return false;
}

} // namespace

void TlyModuleInst::mark_invalid(std::string_view text, int line_number) {
    m_invalid_values.push_back(fmt::format("{}.{}", text, INV_COUNTER));
    diagnose("WARNING: value for counter at line {} was invalid: {}\n", line_number, m_invalid_values.back());
}

int TlyModuleInst::updateCounters(std::span<const MonField> fields, int comp_unit, bool push,
                                  SharedCounterTypes type, int line_number) {
    constexpr int all_units = -1;
    static const MonField missing;
    int result = 0;
    if (push)
        partialReset();
    for (const PortCounter& port : m_ports) {
        if (comp_unit != all_units && port.comp_unit != comp_unit)
            continue;
        const auto index = static_cast<std::size_t>(port.offset); // a negative offset is beyond every line
        const MonField& field = index < fields.size() ? fields[index] : missing;
        long long value = field.value;
        if (!field.is_number) {
            mark_invalid(field.text, line_number);
            value = -1;
            result = -1;
        }
        // A shared counter measured one kind in this run; the tags of the other kinds get nothing from it.
        if (type == SHARED_IVALID)
            m_ireq_count_valid = true;
        if (type != SHARED_NONE && port.meaning.shared_type != SHARED_NONE &&
            port.meaning.shared_type != type)
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
    return updateCounters(fields, comp_unit, push, type, line_number);
}

void TlyModuleInst::updateSingleCounter(const std::string& tag, long long value, bool push) {
    const TagMeaning meaning = meaning_of_tag(tag, m_total_cycles_tag);
    if (meaning.target == TagTarget::ext_mem) {
        ExtMemPort port{decode_ext_mem_tag(tag)};
        record_ext_mem(port, value, push);
    } else {
        activate(meaning);
        add_value(meaning, value);
    }
}

void TlyModuleInst::add_value(const TagMeaning& meaning, long long value) {
    if (meaning.target == TagTarget::total_cycles) {
        m_has_total_cycles = true;
        m_total_cycles_current = wrapping_sum(m_total_cycles_current, value);
        return;
    }
    if (meaning.target != TagTarget::counter)
        return;
    long long& accumulator = m_current[static_cast<std::size_t>(meaning.counter)];
    accumulator = wrapping_sum(accumulator, value);
    note_counter(meaning.counter);
}

void TlyModuleInst::note_counter(Counter counter) {
    m_ireq_count_valid = m_ireq_count_valid || counter == Counter::ireq;
    m_has_total_fifo_size = m_has_total_fifo_size || counter == Counter::total_fifo;
    m_has_max_fifo_size = m_has_max_fifo_size || counter == Counter::max_fifo;
}

void TlyModuleInst::record_ext_mem(ExtMemPort& port, long long value, bool push) {
    if (!write_faults(port.tag))
        return;
    if (!port.samples)
        port.samples = ext_mem_list(port.tag.memory, port.tag.op, port.tag.bank, port.tag.port);
    ExtMemCounts::record(*port.samples, value, push);
}

// The list of a port whose numbers are not negative, made if there is none.
TlyModuleInst::Samples* TlyModuleInst::ext_mem_list(const std::string& mem_name, ExtMemOpType op, int bank,
                                                    int port) {
    ExtMemCounts*& counts = m_ext_mem_counts[mem_name];
    if (!counts)
        counts = new ExtMemCounts;
    return counts->samples(op, bank, port);
}

void TlyModuleInst::updateExtMemCounter(const std::string& mem_name, ExtMemOpType op, int bank, int port,
                                        long long value, bool push) {
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

// The sums of each counter family, and of the total cycles, on each line of a block.
struct TlyModuleInst::Columns {
    using Column = std::array<long long, LineBlock::max_lines>;
    static constexpr std::size_t total_cycles = num_counters;

    std::array<Column, num_counters + 1> sums; // those that are there
    std::array<bool, num_counters + 1> is_there{};

    void add(std::size_t index, const LineBlock& lines, std::size_t column) {
        if (is_there[index])
            lines.add_column(column, sums[index].data());
        else
            lines.column(column, sums[index].data());
        is_there[index] = true;
    }
};

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
    Columns columns;
    for (const PortCounter& port : m_ports) {
        if (port.comp_unit != comp_unit)
            continue;
        if (type == SHARED_IVALID)
            m_ireq_count_valid = true;
        if (type == SHARED_NONE || port.meaning.shared_type == SHARED_NONE ||
            port.meaning.shared_type == type)
            decode_column(port, lines, static_cast<std::size_t>(port.offset - first_counter), columns);
    }
    push_columns(columns, lines.size());
}

void TlyModuleInst::decode_column(const PortCounter& port, const LineBlock& lines, std::size_t column,
                                  Columns& columns) {
    switch (port.meaning.target) {
        case TagTarget::nothing:
        case TagTarget::shared_counter:
            return;
        case TagTarget::counter:
            columns.add(static_cast<std::size_t>(port.meaning.counter), lines, column);
            note_counter(port.meaning.counter);
            return;
        case TagTarget::total_cycles:
            columns.add(Columns::total_cycles, lines, column);
            m_has_total_cycles = true;
            return;
        case TagTarget::ext_mem: {
            ExtMemPort& target = m_ext_mem_ports[port.ext_mem_port];
            if (!target.samples)
                target.samples =
                    ext_mem_list(target.tag.memory, target.tag.op, target.tag.bank, target.tag.port);
            Columns::Column values;
            lines.column(column, values.data());
            target.samples->append(values.data(), lines.size());
        }
    }
}

// What pushValuesOnVectors does after each line.
void TlyModuleInst::push_columns(const Columns& columns, std::size_t count) {
    const auto push = [&](Samples& list, std::size_t index) {
        if (columns.is_there[index])
            list.append(columns.sums[index].data(), count);
        else
            list.append_zeros(count);
    };
    for (const Counter counter : m_active) {
        const auto index = static_cast<std::size_t>(counter);
        push(m_samples[index], index);
        m_current[index] = columns.is_there[index] ? columns.sums[index][count - 1] : 0;
    }
    m_zeros.append_zeros(count);
    if (!m_has_total_cycles)
        return;
    if (!m_function_cycles)
        m_function_cycles = &m_total_cycles[m_function]; // entries stay in place
    push(*m_function_cycles, Columns::total_cycles);
}
