// SPDX-License-Identifier: Apache-2.0
#include "BoardGlobalMemVisitor.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>

#include "BaseAttributeTable.h"
#include "contract.h"

namespace zan::board::xml {

using zan::xml::anywhere;
using zan::xml::AttributeRow;
using zan::xml::AttributeState;
using zan::xml::call;
using zan::xml::check_attributes;
using zan::xml::find_word;
using zan::xml::is_not_negative;
using zan::xml::read_if;
using zan::xml::read_rows;
using zan::xml::read_to;
using zan::xml::read_word;
using zan::xml::skip;
using zan::xml::unsigned64_hex;
using zan::xml::Word;
using zan::xml::XMLAttribute;
using enum zan::xml::AttributeNeed;
using enum zan::xml::Occurrence;

namespace {

using Memory = GlobalMemConfig;
using MemoryRow = AttributeRow<BaseVisitor, Memory>;

// What a word adds to the allocations, and what it says of the memory's kind.
struct Allocation {
    Memory::AllocationType bit;
    Memory::Type type;
};
constexpr Word<Allocation> allocation_words[] = {
    {"host", {Memory::HostAllocation, Memory::SharedVirtual}},
    {"shared", {Memory::SharedAllocation, Memory::SharedVirtual}},
    {"device", {Memory::DeviceAllocation, Memory::DevicePrivate}},
};

constexpr Word<Memory::Type> type_words[] = {
    {"shared virtual", Memory::SharedVirtual},
    {"shared physical", Memory::SharedPhysical},
    {"device private", Memory::DevicePrivate},
};

// The pieces between commas. After a comma at the end there is none.
std::vector<std::string> pieces_of(const std::string& list) {
    std::istringstream stream(list);
    std::vector<std::string> pieces;
    for (std::string piece; std::getline(stream, piece, ',');)
        pieces.push_back(piece);
    return pieces;
}

void add_accessible(Memory& memory, const std::string& list) {
    for (std::string& name : pieces_of(list))
        memory.add_can_access(std::move(name));
}

// An attribute without any word stops the process.
AttributeState read_allocation_type(BaseVisitor& visitor, const XMLElement& elem, const XMLAttribute* attr,
                                    const MemoryRow& row, Memory& memory) {
    std::string list;
    visitor.query_attribute(elem, attr, row.name, &list, true, true);
    unsigned int allocation = Memory::UndefinedAllocation;
    Memory::Type type = Memory::TypeCount;
    for (std::string& piece : pieces_of(list)) {
        std::erase(piece, ' ');
        const Word<Allocation>* word = find_word(allocation_words, piece);
        if (!word) {
            visitor.report_attr_error(elem, row.name, "Unrecognized allocation_type entry: '" + piece + "'.");
            return AttributeState::refused;
        }
        allocation |= word->value.bit;
        type = word->value.type;
    }
    ZAN_CONTRACT(allocation != Memory::UndefinedAllocation, "allocation != UndefinedAllocation");
    ZAN_CONTRACT(type != Memory::TypeCount, "type != TypeCount");
    memory.set_allocation_type(static_cast<Memory::AllocationType>(allocation));
    memory.set_type(type);
    return AttributeState::good;
}

// A number that is too large for a `long` becomes the largest, and of that the lower 32 bits are the
// identifier.
AttributeState read_id(BaseVisitor& visitor, const XMLElement& elem, const XMLAttribute* attr,
                       const MemoryRow& row, Memory& memory) {
    constexpr int base_by_prefix = 0;
    std::string text;
    visitor.query_attribute(elem, attr, row.name, &text, true, true);
    char* end = nullptr;
    const long id = std::strtol(text.c_str(), &end, base_by_prefix);
    if (end == text.c_str() || *end != '\0' || id < 0) {
        visitor.report_error(elem, "Cannot parse id as an unsigned int");
        return AttributeState::refused;
    }
    memory.set_id(static_cast<unsigned int>(id));
    return AttributeState::good;
}

// A type overrides the kind that the allocations stand for, so it is read after them.
constexpr MemoryRow attributes[] = {
    {"max_bandwidth", required, read_if<is_not_negative, &Memory::set_max_bandwidth>,
     "Max global memory bandwidth must be non-negative."},
    {"primary_interface", optional, read_to<&Memory::set_primary_interface>},
    {"can_access", optional, read_to<add_accessible>},
    {"allocation_type", optional, read_allocation_type},
    {"type", optional, read_word<type_words, &Memory::set_type>, "Unrecognized type '{}'."},
    {"interleaved_bytes", optional, read_to<&Memory::set_interleaved_bytes, unsigned64_hex>},
    {"name", optional, read_to<&Memory::set_name>},
    {"id", optional, read_id},
};

constexpr MemoryRow attributes_after_names[] = {
    {"config_addr", optional, read_to<&Memory::set_config_addr, unsigned64_hex>},
};

} // namespace

GlobalMemVisitor::GlobalMemVisitor(BaseVisitor* parent, BoardSpec* spec)
    : BoardSectionVisitor(elements(), parent, spec) {
}

// The ports of an interface have been read with it.
GlobalMemVisitor::Rows GlobalMemVisitor::elements() {
    using Self = GlobalMemVisitor;
    static constexpr ElementRow rows[] = {
        {"global_mem", anywhere, any, call<&Self::visit_global_mem_elem>, call<&Self::leave_global_mem_elem>},
        {"interface", anywhere, any, call<&Self::visit_interface_elem>},
        {"port", anywhere, any, skip},
    };
    return rows;
}

bool GlobalMemVisitor::visit_global_mem_elem(const XMLElement& elem) {
    if (!check_attributes(*this, elem, attributes, {"default", "config_addr"}) || !add_memory(elem))
        return false;
    // The rule on names also applies after an attribute that can't be read, but not after a refused value.
    const AttributeState state = read_rows(*this, elem, attributes, *m_gmem);
    if (state == AttributeState::refused || !check_names(elem) || state == AttributeState::unreadable)
        return false;
    return read_rows(*this, elem, attributes_after_names, *m_gmem) == AttributeState::good;
}

// The memory joins the others before anything else of it is read, as the rule on names counts it.
bool GlobalMemVisitor::add_memory(const XMLElement& elem) {
    int is_default = 0;
    query_attribute(elem, "default", &is_default, true, false);
    if (m_has_error)
        return false;
    if (is_default != 0 && is_default != 1)
        return report_attr_error(elem, "default",
                                 "Global memmory attribute 'default' must equal to  0 or 1.");
    m_gmem = new GlobalMemConfig;
    m_spec->add_global_mem_config(m_gmem, is_default == 1);
    return true;
}

bool GlobalMemVisitor::check_names(const XMLElement& elem) {
    const auto& memories = m_spec->get_global_mem_configs();
    const bool any_nameless = std::any_of(memories.begin(), memories.end(),
                                          [](const auto& memory) { return memory->get_name().empty(); });
    return memories.size() < 2 || !any_nameless ||
           report_error(elem,
                        "All global memories must have a name when there are more than 1 global memories.");
}

bool GlobalMemVisitor::visit_interface_elem(const XMLElement& elem) {
    if (!require_attributes(elem, {"name", "type", "width", "address", "size"}))
        return false;
    auto intf = read_interface(elem);
    if (!intf)
        return false;
    ZAN_CONTRACT(m_gmem != nullptr, "m_gmem != __null");
    if (intf->get_type() != Interface::Agent)
        return report_error(elem, "Global memory interface must be an agent.");
    m_gmem->add_interface(intf.release());
    return true;
}

bool GlobalMemVisitor::leave_global_mem_elem(const XMLElement& elem) {
    const unsigned int count = m_gmem->get_num_intfs();
    if (count == 0)
        return report_error(elem, "At least one global memory interface must be defined.");
    const Interface& first = m_gmem->get_intf(0);
    for (unsigned int i = 1; i < count; ++i) {
        const Interface& intf = m_gmem->get_intf(i);
        if (intf.get_data_width() != first.get_data_width())
            return report_error(elem, "All global memory interfaces must have the same data width.");
        if (intf.get_max_burst_count() != first.get_max_burst_count())
            return report_error(elem, "All global memory interfaces must have the same max burst count.");
    }
    return true;
}

} // namespace zan::board::xml
