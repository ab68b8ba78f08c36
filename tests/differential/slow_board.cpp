// SPDX-License-Identifier: Apache-2.0
#include "slow_board.h"

#include <tinyxml2.h>

#include <cstdlib>
#include <set>

#include "slow_nodes.h"

namespace slow {

namespace {

using Element = tinyxml2::XMLElement;

struct Range {
    unsigned long long first = 0;
    unsigned long long last = 0;
};

// An attribute's text; empty without it.
std::string text_or_empty(const Element& element, const char* name) {
    const char* const value = element.Attribute(name);
    return value ? value : "";
}

Interface read_interface(const Element& element) {
    Interface result;
    result.name = text_or_empty(element, "name");
    result.width = element.UnsignedAttribute("width");
    result.max_burst = element.UnsignedAttribute("maxburst", 1);
    if (element.Attribute("port"))
        result.ports.push_back(text_or_empty(element, "port"));
    for (const Element* port = element.FirstChildElement("port"); port;
         port = port->NextSiblingElement("port"))
        result.ports.push_back(text_or_empty(*port, "name"));
    return result;
}

Memory read_memory(const Element& element) {
    Memory memory;
    memory.name = text_or_empty(element, "name");
    memory.bandwidth = element.FloatAttribute("max_bandwidth");
    for (const Element* child = element.FirstChildElement(); child; child = child->NextSiblingElement())
        memory.interfaces.push_back(read_interface(*child));
    return memory;
}

// From the first byte of all interfaces to the last one.
Range range_of(const Element& memory) {
    Range range;
    for (const Element* child = memory.FirstChildElement(); child; child = child->NextSiblingElement()) {
        const unsigned long long first = std::strtoull(text_or_empty(*child, "address").c_str(), nullptr, 0);
        const unsigned long long last =
            first + std::strtoull(text_or_empty(*child, "size").c_str(), nullptr, 0) - 1;
        const bool is_only = child == memory.FirstChildElement();
        range.first = is_only || first < range.first ? first : range.first;
        range.last = is_only || last > range.last ? last : range.last;
    }
    return range;
}

bool overlap(const Element& a, const Element& b) {
    return range_of(a).first < range_of(b).last && range_of(a).last > range_of(b).first;
}

bool has_good_interfaces(const Memory& memory) {
    for (const Interface& interface : memory.interfaces) {
        if (interface.width == 0 || interface.ports.empty() ||
            interface.width != memory.interfaces[0].width ||
            interface.max_burst != memory.interfaces[0].max_burst)
            return false;
    }
    return !memory.interfaces.empty();
}

bool are_good_memories(const std::vector<const Element*>& elements, const std::string& board_name) {
    if (elements.empty())
        return board_name == "custom_ipa";
    std::set<std::string> names;
    for (const Element* element : elements) {
        const Memory memory = read_memory(*element);
        names.insert(memory.name);
        if (!element->Attribute("max_bandwidth") || memory.bandwidth < 0 || !has_good_interfaces(memory) ||
            (elements.size() > 1 && memory.name.empty()))
            return false;
    }
    for (const Element* a : elements) {
        // No generated list has more than one entry.
        if (a->Attribute("can_access") && names.count(text_or_empty(*a, "can_access")) == 0)
            return false;
        for (const Element* b : elements) {
            if (a != b && board_name != "custom_ipa" && overlap(*a, *b))
                return false;
        }
    }
    return true;
}

} // namespace

bool read_board(Run& run, const std::string& xml) {
    tinyxml2::XMLDocument document;
    if (document.Parse(xml.c_str()) != tinyxml2::XML_SUCCESS || !document.RootElement())
        return false;
    const Element& board = *document.RootElement();
    if (board.Name() != std::string("board") || !board.Attribute("name"))
        return false;
    std::vector<const Element*> elements;
    std::vector<Memory> memories;
    for (const Element* child = board.FirstChildElement("global_mem"); child;
         child = child->NextSiblingElement("global_mem")) {
        elements.push_back(child);
        // The default memory goes to the front, and so does each later one.
        memories.insert(text_or_empty(*child, "default") == "1" ? memories.begin() : memories.end(),
                        read_memory(*child));
    }
    const std::string name = text_or_empty(board, "name");
    if (!are_good_memories(elements, name))
        return false;
    for (const Memory& memory : memories) {
        if (!run.memories.insert({memory.name, memory}).second)
            run.say(
                "Warning: trying to insert new global memory object with a name that already belongs to an "
                "existing global memory. Global memory names must be unique");
    }
    add_node(run.board_nodes, board_node(name, memories));
    return true;
}

} // namespace slow
