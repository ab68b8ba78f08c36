// SPDX-License-Identifier: Apache-2.0
#include "tly_module_inst.h"

#include <cmath>

#include "contract.h"
#include "diagnostics.h"
#include "number_text.h"

namespace {

template <class T>
int size_of(const std::vector<T>& list) {
    return static_cast<int>(list.size());
}

// The entry at i, or `outside` for an index that the list doesn't have.
template <class Result, class T>
Result entry_or(const std::vector<T>& list, int i, Result outside) {
    const auto index = static_cast<std::size_t>(i); // a negative index is beyond every list
    return index < list.size() ? static_cast<Result>(list[index]) : outside;
}

} // namespace

TlyModuleInst::TlyModuleInst(std::string name, std::string module, std::string function,
                             std::string memory_type, std::string rw, std::string lsu_type,
                             std::string global_mem_name, std::string byte_width, std::string memory_opt,
                             bool autorun, int num_compute_units, bool compiled_shared_counters)
    : m_name(std::move(name)),
      m_module(std::move(module)),
      m_attr_memory_type(std::move(memory_type)),
      m_attr_rw(std::move(rw)),
      m_attr_lsu_type(std::move(lsu_type)),
      m_attr_global_mem_name(std::move(global_mem_name)),
      m_attr_byte_width(std::move(byte_width)),
      m_attr_memory_opt(std::move(memory_opt)),
      m_function(std::move(function)),
      m_autorun(autorun),
      m_num_compute_units(num_compute_units),
      m_compiled_shared_counters(compiled_shared_counters),
      m_total_cycles_tag("clock_" + m_function + "_function") {
    reset(); // for the cycles of the function, which other instances may have recorded before
}

void TlyModuleInst::addFilename(std::string filename) {
    m_filenames.push_back(std::move(filename));
    m_description_number = unique_number();
}

void TlyModuleInst::addLine(int line) {
    m_lines.push_back(line);
    m_description_number = unique_number();
}

void TlyModuleInst::addColNum(int column) {
    m_col_nums.push_back(column);
    m_description_number = unique_number();
}

void TlyModuleInst::addIsCallsite(bool is_callsite) {
    m_is_callsite.push_back(is_callsite);
    m_description_number = unique_number();
}

int TlyModuleInst::getNumFilenames() const {
    return size_of(m_filenames);
}

int TlyModuleInst::getNumLines() const {
    return size_of(m_lines);
}

int TlyModuleInst::getNumCols() const {
    return size_of(m_col_nums);
}

const std::string& TlyModuleInst::getFileName(int i) const {
    static const std::string none;
    const auto index = static_cast<std::size_t>(i); // a negative index is beyond every list
    return index < m_filenames.size() ? m_filenames[index] : none;
}

int TlyModuleInst::getLine(int i) const {
    return entry_or(m_lines, i, -1);
}

int TlyModuleInst::getColNum(int i) const {
    return entry_or(m_col_nums, i, -1);
}

int TlyModuleInst::getIsCallsite(int i) const {
    return entry_or(m_is_callsite, i, -1);
}

// What a tag means is worked out here, once. Lines, of which there may be millions, only go over the table.
void TlyModuleInst::addPortTag(std::string tag, int offset, int comp_unit) {
    const TagMeaning meaning = meaning_of_tag(tag, m_total_cycles_tag);
    if (meaning.target == TagTarget::counter)
        m_counters.activate(meaning.counter);
    if (meaning.target == TagTarget::total_cycles)
        m_total_cycles_offset = offset;
    if (meaning.target == TagTarget::ext_mem)
        m_ext_mem_ports.push_back({decode_ext_mem_tag(tag)});
    m_ports.push_back({std::move(tag), offset, comp_unit, meaning, m_ext_mem_ports.size() - 1});
}

void TlyModuleInst::updateAutorunOffsets(int delta) {
    if (!m_autorun)
        return;
    for (PortCounter& port : m_ports)
        port.offset += delta;
    if (m_total_cycles_offset >= 0) // -1 stands for no cycle counter, and stays
        m_total_cycles_offset += delta;
}

int TlyModuleInst::getNTags() const {
    return size_of(m_ports);
}

std::vector<int> TlyModuleInst::getPortTagOffsets() const {
    std::vector<int> result;
    for (const PortCounter& port : m_ports)
        result.push_back(port.offset);
    return result;
}

std::vector<std::string> TlyModuleInst::getPortTagList() const {
    std::vector<std::string> result;
    for (const PortCounter& port : m_ports)
        result.push_back(port.tag);
    return result;
}

int TlyModuleInst::getPortCompUnit(int i) const {
    return m_ports.at(static_cast<std::size_t>(i)).comp_unit;
}

void TlyModuleInst::addSharedTag(std::string tag, int offset) {
    m_shared_tags.emplace(std::move(tag), offset);
}

int TlyModuleInst::getSharedOffset(const std::string& tag) const {
    const auto found = m_shared_tags.find(tag);
    return found == m_shared_tags.end() ? -1 : found->second;
}

void TlyModuleInst::partialReset() {
    m_counters.start_line();
    m_functions.start_line();
}

void TlyModuleInst::pushValuesOnVectors() {
    m_counters.end_line();
    if (m_has_total_cycles)
        function_cycles().push_back(m_functions.line_sum());
}

void TlyModuleInst::reset() {
    m_counters.clear();
    m_ireq_count_valid = false;
    m_has_total_fifo_size = false;
    m_has_max_fifo_size = false;
    m_has_total_cycles = false;
    m_invalid_values.clear();
    m_functions.start_line();
    // These two reach beyond the instance: sample times of all functions, cycles of all instances of its own.
    m_functions.clear_timestamps();
    if (Samples* cycles = find_function_cycles())
        cycles->clear();
    // The next invocation may bring other memories, and the report is to list none without samples.
    m_ext_mem_counts.clear();
    for (ExtMemPort& port : m_ext_mem_ports)
        port.samples = nullptr;
}

// The cycles of the instance's function, for a sample to be added.
TlyModuleInst::Samples& TlyModuleInst::function_cycles() {
    if (!m_function_cycles)
        m_function_cycles = &m_functions.list_of(m_function);
    return *m_function_cycles;
}

// The same, null if no instance has added a sample yet.
TlyModuleInst::Samples* TlyModuleInst::find_function_cycles() const {
    return m_function_cycles ? m_function_cycles : m_functions.find(m_function);
}

long long TlyModuleInst::sample(Counter counter, int i) const {
    const Samples& list = samples(counter);
    const auto index = static_cast<std::size_t>(i); // a negative index is beyond every list
    return index < list.size() ? list[index] : -1;
}

TlyModuleInst::Samples TlyModuleInst::total_cycles() const {
    if (const Samples* cycles = find_function_cycles())
        return *cycles;
    diagnose(Message::no_cycles, {.kernel = m_function});
    return {};
}

// In double up to the last division: a float of the product would round before the ceiling does.
float TlyModuleInst::getStallPercentage() const {
    const Samples& stalls = samples(Counter::ext_stall);
    const Samples cycles = total_cycles();
    ZAN_CONTRACT(!stalls.empty(), "!stalls.empty()");
    ZAN_CONTRACT(!cycles.empty(), "!cycles.empty()");
    const double share = static_cast<double>(stalls.back()) * 10000.0 / static_cast<double>(cycles.back());
    return static_cast<float>(std::ceil(share)) / 100.0f;
}

long long TlyModuleInst::getCsvTotalCycles(std::string* fields, int count) {
    if (m_total_cycles_offset < 0 || m_total_cycles_offset >= count)
        return -1;
    const std::string& field = fields[m_total_cycles_offset];
    const auto cycles = parse_long_long(field);
    if (!cycles)
        m_invalid_values.push_back(field + "." + INV_CYCLE);
    return cycles.value_or(-2);
}

void TlyModuleInst::addSampleTimestamp(long long timestamp) {
    m_functions.add_timestamp(m_function, timestamp);
}

std::vector<long long> TlyModuleInst::getSampleTimestamps() const {
    if (const Samples* timestamps = m_functions.find_timestamps(m_function))
        return timestamps->to_vector();
    diagnose(Message::no_timestamps, {.kernel = m_function, .block = m_name});
    return {};
}

std::vector<std::string> TlyModuleInst::getExtMemNames() const {
    std::vector<std::string> names;
    for (const auto& [name, counts] : m_ext_mem_counts)
        names.push_back(name);
    return names;
}

int TlyModuleInst::getNumExtMems() const {
    return static_cast<int>(m_ext_mem_counts.size());
}

TlyModuleInst::Samples TlyModuleInst::ext_mem_samples(ExtMemOpType op, const std::string& mem_name, int bank,
                                                      int port) const {
    const auto memory = m_ext_mem_counts.find(mem_name);
    if (memory == m_ext_mem_counts.end())
        return {};
    const Samples* found = memory->second.find_samples(op, bank, port);
    return found ? *found : Samples();
}

std::vector<long long> TlyModuleInst::getNumExtReads(const std::string& mem_name, int bank, int port) const {
    return ext_mem_samples(EXT_MEM_READ, mem_name, bank, port).to_vector();
}

std::vector<long long> TlyModuleInst::getNumExtWrites(const std::string& mem_name, int bank, int port) const {
    return ext_mem_samples(EXT_MEM_WRITE, mem_name, bank, port).to_vector();
}

std::vector<long long> TlyModuleInst::getNumExtReadBurstStarts(const std::string& mem_name, int bank,
                                                               int port) const {
    return ext_mem_samples(EXT_MEM_READ_BURST, mem_name, bank, port).to_vector();
}

std::vector<long long> TlyModuleInst::getNumExtWriteBurstStarts(const std::string& mem_name, int bank,
                                                                int port) const {
    return ext_mem_samples(EXT_MEM_WRITE_BURST, mem_name, bank, port).to_vector();
}
