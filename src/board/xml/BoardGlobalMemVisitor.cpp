#include "BoardGlobalMemVisitor.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>

#include "contract.h"

namespace zan::board::xml {

namespace {

using Memory = GlobalMemConfig;

struct AllocationWord {
    std::string_view text;
    Memory::AllocationType bit;
    Memory::Type type; // what the word says of the memory's kind
};
constexpr AllocationWord allocation_words[] = {
    {"host", Memory::HostAllocation, Memory::SharedVirtual},
    {"shared", Memory::SharedAllocation, Memory::SharedVirtual},
    {"device", Memory::DeviceAllocation, Memory::DevicePrivate},
};

struct TypeWord {
    std::string_view text;
    Memory::Type type;
};
constexpr TypeWord type_words[] = {
    {"shared virtual", Memory::SharedVirtual},
    {"shared physical", Memory::SharedPhysical},
    {"device private", Memory::DevicePrivate},
};

template <typename Word, size_t N>
const Word* find_word(const Word (&words)[N], std::string_view text) {
    const auto* found =
        std::find_if(std::begin(words), std::end(words), [&](const Word& word) { return word.text == text; });
    return found == std::end(words) ? nullptr : found;
}

// The pieces between commas; behind a comma at the end there is none.
std::vector<std::string> pieces_of(const std::string& list) {
    std::istringstream stream(list);
    std::vector<std::string> pieces;
    for (std::string piece; std::getline(stream, piece, ',');)
        pieces.push_back(piece);
    return pieces;
}

} // namespace

bool GlobalMemVisitor::VisitEnter(const XMLElement& elem, const XMLAttribute* first_attribute) {
    static constexpr ElementHandler<GlobalMemVisitor> handlers[] = {
        {"global_mem", &GlobalMemVisitor::visit_global_mem_elem},
        {"interface", &GlobalMemVisitor::visit_interface_elem},
        {"port", &GlobalMemVisitor::pass_over},
    };
    BaseVisitor::VisitEnter(elem, first_attribute);
    return visit_by_name(this, elem, handlers);
}

// The ports of an interface have been read with it.
bool GlobalMemVisitor::pass_over(const XMLElement&) {
    return false;
}

bool GlobalMemVisitor::visit_global_mem_elem(const XMLElement& elem) {
    if (!report_unexpected_attrs(elem, 10, "max_bandwidth", "type", "interleaved_bytes", "name", "id",
                                 "config_addr", "default", "primary_interface", "allocation_type",
                                 "can_access") ||
        !add_memory(elem))
        return !m_has_error;
    // The rule on names also applies after an attribute that can't be read, but not after a refused value.
    if (read_values(elem) == Reading::refused || !check_names(elem))
        return !m_has_error;
    if (!m_has_error)
        read_config_addr(elem);
    return !m_has_error;
}

GlobalMemVisitor::Reading GlobalMemVisitor::read_values(const XMLElement& elem) {
    float bandwidth = 0.0f;
    if (!query_attribute(elem, "max_bandwidth", &bandwidth, true, true))
        return Reading::failed;
    if (!set_max_bandwidth(elem, bandwidth) || !read_lists(elem) || !read_allocation_type(elem) ||
        !read_type(elem))
        return Reading::refused;
    if (!read_interleaving_and_name(elem))
        return Reading::failed;
    return read_id(elem) ? Reading::done : Reading::refused;
}

// The memory joins the others before anything else of it is read.
bool GlobalMemVisitor::add_memory(const XMLElement& elem) {
    int is_default = 0;
    if (elem.QueryIntAttribute("default", &is_default) == tinyxml2::XML_WRONG_ATTRIBUTE_TYPE)
        return report_attr_type_error(elem, "default", "");
    if (static_cast<unsigned int>(is_default) > 1)
        return report_attr_error(elem, "default",
                                 "Global memmory attribute 'default' must equal to  0 or 1.");
    m_gmem = new GlobalMemConfig;
    m_spec->add_global_mem_config(m_gmem, is_default == 1);
    return true;
}

bool GlobalMemVisitor::set_max_bandwidth(const XMLElement& elem, float bandwidth) {
    if (!(bandwidth >= 0.0f)) // a NaN isn't either
        return report_attr_error(elem, "max_bandwidth", "Max global memory bandwidth must be non-negative.");
    m_gmem->set_max_bandwidth(bandwidth);
    return true;
}

bool GlobalMemVisitor::read_lists(const XMLElement& elem) {
    std::string text;
    if (query_attribute(elem, "primary_interface", &text, true, false))
        m_gmem->set_primary_interface(text);
    if (query_attribute(elem, "can_access", &text, true, false)) {
        for (std::string& name : pieces_of(text))
            m_gmem->add_can_access(std::move(name));
    }
    return !m_has_error;
}

bool GlobalMemVisitor::read_allocation_type(const XMLElement& elem) {
    std::string text;
    if (!query_attribute(elem, "allocation_type", &text, true, false))
        return !m_has_error;
    unsigned int allocation = Memory::UndefinedAllocation;
    Memory::Type type = Memory::TypeCount;
    for (std::string& piece : pieces_of(text)) {
        std::erase(piece, ' ');
        const AllocationWord* word = find_word(allocation_words, piece);
        if (!word)
            return report_attr_error(elem, "allocation_type",
                                     "Unrecognized allocation_type entry: '" + piece + "'.");
        allocation |= word->bit;
        type = word->type;
    }
    ZAN_CONTRACT(allocation != Memory::UndefinedAllocation, "allocation != UndefinedAllocation");
    ZAN_CONTRACT(type != Memory::TypeCount, "type != TypeCount");
    m_gmem->set_allocation_type(static_cast<Memory::AllocationType>(allocation));
    m_gmem->set_type(type);
    return true;
}

// Overrides what the allocation says.
bool GlobalMemVisitor::read_type(const XMLElement& elem) {
    std::string text;
    if (!query_attribute(elem, "type", &text, true, false))
        return !m_has_error;
    const TypeWord* word = find_word(type_words, text);
    if (!word)
        return report_attr_error(elem, "type", "Unrecognized type '" + text + "'.");
    m_gmem->set_type(word->type);
    return true;
}

bool GlobalMemVisitor::read_interleaving_and_name(const XMLElement& elem) {
    zan::xml::unsigned64_hex bytes;
    if (query_attribute(elem, "interleaved_bytes", &bytes, true, false))
        m_gmem->set_interleaved_bytes(bytes);
    std::string name;
    if (!m_has_error && query_attribute(elem, "name", &name, true, false))
        m_gmem->set_name(name);
    return !m_has_error;
}

// Too large a number is the largest there is, and of that the lower 32 bits.
bool GlobalMemVisitor::read_id(const XMLElement& elem) {
    std::string text;
    if (!query_attribute(elem, "id", &text, true, false))
        return !m_has_error;
    constexpr int base_by_prefix = 0;
    char* end = nullptr;
    const long id = std::strtol(text.c_str(), &end, base_by_prefix);
    if (end == text.c_str() || *end != '\0' || id < 0)
        return report_error(elem, "Cannot parse id as an unsigned int");
    m_gmem->set_id(static_cast<unsigned int>(id));
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

bool GlobalMemVisitor::read_config_addr(const XMLElement& elem) {
    zan::xml::unsigned64_hex address;
    if (query_attribute(elem, "config_addr", &address, true, false))
        m_gmem->set_config_addr(address);
    return !m_has_error;
}

bool GlobalMemVisitor::visit_interface_elem(const XMLElement& elem) {
    if (!require_attributes(elem, {"name", "type", "width", "address", "size"}))
        return !m_has_error;
    auto intf = read_interface(elem);
    if (!intf)
        return false;
    ZAN_CONTRACT(m_gmem != nullptr, "m_gmem != __null");
    if (intf->get_type() != Interface::Agent)
        return report_error(elem, "Global memory interface must be an agent.");
    m_gmem->add_interface(intf.release());
    return !m_has_error;
}

bool GlobalMemVisitor::check_interfaces(const XMLElement& elem) {
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

bool GlobalMemVisitor::VisitExit(const XMLElement& elem) {
    if (!m_has_error && std::string_view(elem.Value()) == "global_mem" && !check_interfaces(elem))
        return false;
    return BaseVisitor::VisitExit(elem);
}

} // namespace zan::board::xml
