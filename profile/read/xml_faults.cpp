// SPDX-License-Identifier: Apache-2.0
#include "xml_faults.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace zan::profile {

namespace {

// Sets the line with its text, and the column of `offset` in it; for an unknown offset that of the first
// character that is no blank.
void set_place(Fault& fault, std::string_view text, int line, std::size_t offset) {
    std::size_t begin = 0;
    if (offset != xml::ErrorPlace::unknown && offset <= text.size()) {
        const std::size_t newline = text.substr(0, offset).rfind('\n');
        begin = newline == std::string_view::npos ? 0 : newline + 1;
        line = 1 + static_cast<int>(std::ranges::count(text.substr(0, begin), '\n'));
    } else {
        if (line <= 0)
            return;
        for (int i = 1; i < line && begin < text.size(); ++i)
            begin = std::min(text.find('\n', begin), text.size() - 1) + 1;
        offset = std::min(text.find_first_not_of(" \t", begin), text.size());
    }
    fault.line = static_cast<std::uint64_t>(line);
    fault.column = offset - begin + 1;
    fault.line_text = text.substr(begin, text.find_first_of("\r\n", begin) - begin);
}

// A message without its frame: the line "Error in '[mem]', line 3", and the newline at its end.
std::string_view rule_of(std::string_view error) {
    error.remove_prefix(std::min(error.find('\n'), error.size() - 1) + 1);
    return error.substr(0, error.find_last_not_of(" \n") + 1); // npos + 1 is 0
}

// "XML error: NAME, Error=NAME ErrorID=14 (0xe) Line number=3: what" to "it is no XML: what (NAME)".
std::string syntax_message(std::string_view error) {
    constexpr std::string_view head = "XML error: ";
    constexpr std::string_view line_word = "Line number=";
    error.remove_prefix(std::min(head.size(), error.size()));
    const std::string_view name = error.substr(0, error.find(','));
    std::string_view what = error.substr(std::min(error.find(line_word), error.size()));
    const std::size_t colon = what.find(": ");
    what = colon == std::string_view::npos ? std::string_view() : what.substr(colon + 2);
    what = what.substr(0, what.find('\n'));
    std::string message = "it is no XML";
    if (!what.empty())
        message.append(": ").append(what);
    return message.append(" (").append(name).append(")");
}

// Contracts that texts can break.
struct ContractRow {
    std::string_view contract;
    std::string_view what;
    std::string_view name; // of the element or attribute that it is about
};

constexpr ContractRow contract_rows[] = {
    {"allocation != UndefinedAllocation", "the attribute allocation_type is empty", "allocation_type"},
    {"m_config->has_automigrate()", "the element compile holds no auto_migrate", "compile"},
    {"m_config->has_generate()", "the element compile holds no generate", "compile"},
    {"m_config->has_synthesis()", "the element compile holds no synthesize", "compile"},
    {"!m_config->has_automigrate()", "the element compile holds auto_migrate twice", "compile"},
    {"!m_config->has_generate()", "the element compile holds generate twice", "compile"},
    {"!m_config->has_synthesis()", "the element compile holds synthesize twice", "compile"},
};

} // namespace

void take_xml_errors(const xml::BaseXmlLoader& loader, std::string_view text, const Fault& place,
                     FaultReceiver& faults) {
    for (unsigned int i = 0; i < loader.get_num_errors(); ++i) {
        const xml::ErrorPlace& error_place = loader.get_error_place(i);
        Fault fault = place;
        fault.kind = error_place.is_syntax ? FaultKind::not_xml : FaultKind::xml_rule;
        set_place(fault, text, error_place.line, error_place.offset);
        const std::string message = error_place.is_syntax ? syntax_message(loader.get_error(i))
                                                          : std::string(rule_of(loader.get_error(i)));
        fault.message = message;
        faults.take(fault);
    }
}

void take_broken_contract(const BrokenContract& contract, std::string_view text, const Fault& place,
                          FaultReceiver& faults) {
    const auto* row = std::ranges::find(contract_rows, contract.text, &ContractRow::contract);
    Fault fault = place;
    fault.kind = FaultKind::xml_rule;
    std::string message = std::string("it breaks a rule: ") + contract.text;
    if (row != std::end(contract_rows)) {
        message = row->what;
        const std::size_t offset = text.find(row->name);
        if (offset != std::string_view::npos)
            set_place(fault, text, 0, offset);
    }
    fault.message = message;
    faults.take(fault);
}

} // namespace zan::profile
