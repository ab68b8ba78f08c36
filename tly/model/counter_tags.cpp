#include "counter_tags.h"

#include <array>

#include "number_text.h"
#include "tly_module_inst.h"

namespace {

using Inst = TlyModuleInst;

struct CounterTag {
    const std::string& tag;
    Counter counter;
};

// The order of the rows is of no matter: no tag stands in two of them.
const CounterTag counter_tags[] = {
    {Inst::CNT_ISTALL, Counter::istall},
    {Inst::CNT_CHREAD_ISTALL, Counter::istall},
    {Inst::CNT_CHWRITE_ISTALL, Counter::istall},
    {Inst::CNT_EXT_STALL, Counter::ext_stall},
    {Inst::CNT_CHREAD_EXT_STALL, Counter::ext_stall},
    {Inst::CNT_CHWRITE_EXT_STALL, Counter::ext_stall},
    {Inst::CNT_OSTALL, Counter::ostall},
    {Inst::CNT_CHREAD_OSTALL, Counter::ostall},
    {Inst::CNT_CHWRITE_OSTALL, Counter::ostall},
    {Inst::CNT_IVALID, Counter::ivalid},
    {Inst::CNT_CHREAD_IVALID, Counter::ivalid},
    {Inst::CNT_CHWRITE_IVALID, Counter::ivalid},
    {Inst::CNT_LOOP_IVALID, Counter::ivalid},
    {Inst::CNT_TOTAL_REQ, Counter::ireq},
    {Inst::CNT_CHREAD_TOTAL_REQ, Counter::ireq},
    {Inst::CNT_CHWRITE_TOTAL_REQ, Counter::ireq},
    {Inst::CNT_CHREAD_TOTAL_FIFO_SIZE, Counter::total_fifo},
    {Inst::CNT_CHWRITE_TOTAL_FIFO_SIZE, Counter::total_fifo},
    {Inst::CNT_CHREAD_MAX_FIFO_SIZE, Counter::max_fifo},
    {Inst::CNT_CHWRITE_MAX_FIFO_SIZE, Counter::max_fifo},
    {Inst::CNT_BANDWIDTH, Counter::bandwidth},
    {Inst::CNT_IDLE, Counter::idle},
    {Inst::CNT_IDLE_CHREAD, Counter::idle},
    {Inst::CNT_IDLE_CHWRITE, Counter::idle},
    {Inst::CNT_UNALIGNED_REQ, Counter::unaligned},
    {Inst::CNT_CACHEHIT, Counter::cachehit},
    {Inst::CNT_READWRITECOUNT, Counter::nbursts},
    {Inst::CNT_BURSTCOUNT, Counter::burst_words},
};

struct OperationWord {
    std::string_view word;
    ExtMemOpType op;
};

// The first word that a tag holds decides.
constexpr OperationWord operation_words[] = {
    {"_read_data_inc_en_", EXT_MEM_READ},
    {"_write_data_inc_en_", EXT_MEM_WRITE},
    {"_read_burst_count_en_", EXT_MEM_READ_BURST},
    {"_write_burst_count_en_", EXT_MEM_WRITE_BURST},
};

constexpr std::string_view ext_mem_prefix = "profile_extmem_";

bool holds(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

void decode_operation(std::string_view tag, ExtMemTag& result) {
    for (const OperationWord& row : operation_words) {
        if (holds(tag, row.word)) {
            result.op = row.op;
            return;
        }
    }
    result.names_op = false;
}

// Reads a bank or port number; false, with the fault noted, if the text is none. Negative numbers index
// nothing.
bool decode_index(std::string_view text, ExtMemTag::Fault fault, int& index, ExtMemTag& result) {
    const auto number = parse_int(text);
    if (!number || *number < 0) {
        result.fault = fault;
        result.fault_text = text;
        return false;
    }
    index = *number;
    return true;
}

} // namespace

ExtMemTag decode_ext_mem_tag(std::string_view tag) {
    constexpr std::string_view function_word = "_function_";
    constexpr std::string_view bank_word = "_bank";
    constexpr std::string_view port_word = "_port";
    ExtMemTag result;
    decode_operation(tag, result);

    const std::size_t function = tag.find(function_word);
    const std::size_t bank = tag.find(bank_word);
    const std::size_t port = tag.find(port_word);
    constexpr std::size_t none = std::string_view::npos;
    if (function == none || bank == none || port == none) {
        result.fault = ExtMemTag::Fault::properties;
        result.fault_text = tag;
        return result;
    }

    // The words may stand in any order. A part whose end lies in front of its begin takes all that follows:
    // the unsigned length wraps, and substr cuts it at the end of the tag.
    const std::size_t name_begin = function + function_word.size();
    const std::size_t bank_begin = bank + bank_word.size();
    result.memory = tag.substr(name_begin, bank - name_begin);
    if (decode_index(tag.substr(bank_begin, port - bank_begin), ExtMemTag::Fault::bank, result.bank, result))
        decode_index(tag.substr(port + port_word.size()), ExtMemTag::Fault::port, result.port, result);
    return result;
}

TagMeaning meaning_of_tag(std::string_view tag, std::string_view total_cycles_tag) {
    using Target = TagMeaning::Target;
    TagMeaning result;
    const auto shared = Inst::CNT_SHARED_MAPPING.find(std::string(tag));
    if (shared != Inst::CNT_SHARED_MAPPING.end())
        result.shared_type = shared->second;

    for (const CounterTag& row : counter_tags) {
        if (tag == row.tag) {
            result.target = Target::counter;
            result.counter = row.counter;
            return result;
        }
    }
    if (tag == total_cycles_tag || tag == Inst::CNT_COUNT_FUNCTION_VFABRIC)
        result.target = Target::total_cycles;
    else if (holds(tag, ext_mem_prefix))
        result.target = Target::ext_mem;
    return result;
}
