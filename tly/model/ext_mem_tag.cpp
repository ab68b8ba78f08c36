// SPDX-License-Identifier: Apache-2.0
#include "ext_mem_tag.h"

#include "number_text.h"

namespace {

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

bool is_ext_mem_tag(std::string_view tag) {
    return holds(tag, "profile_extmem_");
}

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

    // The words may stand in any order. A part that ends before it begins takes all that follows: the
    // unsigned length wraps, and substr cuts it at the end of the tag.
    const std::size_t name_begin = function + function_word.size();
    const std::size_t bank_begin = bank + bank_word.size();
    result.memory = tag.substr(name_begin, bank - name_begin);
    if (decode_index(tag.substr(bank_begin, port - bank_begin), ExtMemTag::Fault::bank, result.bank, result))
        decode_index(tag.substr(port + port_word.size()), ExtMemTag::Fault::port, result.port, result);
    return result;
}
