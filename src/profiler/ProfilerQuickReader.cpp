// SPDX-License-Identifier: Apache-2.0
// A large description is read once, from front to back, straight into the model.
//
// What must hold: a description that is read here makes the same model as the visitors make of it, and they
// accept it. So this reader gives up at anything that it has no rule for; it reports nothing. A rule of a
// visitor stands here, too; quick_reader_test compares both ways on descriptions that have been changed in
// one place, all that they have in turn.
//
// Measured (bench/README.md): of the 190 million instructions of a run of W the description took 84, as a
// document that is made, walked and deleted.
#include "ProfilerQuickReader.h"

#include <array>
#include <cstring>
#include <optional>
#include <string_view>

namespace zan::profiler::xml {

namespace {

using Text = std::string_view;

constexpr std::size_t most_attributes = 8;

struct Attribute {
    Text name;
    Text value;
};

struct Tag {
    Text name;
    std::array<Attribute, most_attributes> attributes;
    std::size_t num_attributes = 0;
    bool is_empty = false; // it ends in "/>"
};

using CharacterSet = std::array<bool, 256>;

constexpr CharacterSet set_of(Text characters, bool with_zero) {
    CharacterSet set{};
    for (const char character : characters)
        set[static_cast<unsigned char>(character)] = true;
    set[0] = with_zero;
    return set;
}

constexpr CharacterSet name_characters =
    set_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_", false);
constexpr CharacterSet blank_characters = set_of(" \t\n\r", false);
// What ends a value, or makes it another text than the one between its quotes.
constexpr CharacterSet value_ends = set_of("\"'&<\n\r", true);

// Goes over the text. What returns false may have gone over a part.
class Scanner {
  public:
    explicit Scanner(const char* text) : m_at(text) {}

    bool at_end() const { return *m_at == '\0'; }
    bool skip_blanks() {
        const char* const begin = m_at;
        while (is_in(blank_characters, *m_at))
            ++m_at;
        return m_at != begin;
    }
    bool skip(Text text) {
        for (std::size_t i = 0; i < text.size(); ++i) { // ends at the zero at the latest
            if (m_at[i] != text[i])
                return false;
        }
        m_at += text.size();
        return true;
    }
    // Goes on after the next place of the text.
    bool skip_past(const char* text) {
        const char* const found = std::strstr(m_at, text);
        if (!found)
            return false;
        m_at = found + std::strlen(text);
        return true;
    }
    // The end of an element of this name.
    bool end_tag(Text name) { return skip("</") && skip(name) && skip(">"); }
    bool start_tag(Tag& tag) {
        tag.num_attributes = 0;
        if (!skip("<"))
            return false;
        tag.name = name();
        if (tag.name.empty())
            return false;
        while (skip_blanks()) {
            if (is_in(name_characters, *m_at) && !attribute(tag))
                return false;
        }
        tag.is_empty = *m_at == '/';
        if (tag.is_empty)
            ++m_at;
        return skip(">");
    }

  private:
    static bool is_in(const CharacterSet& set, char character) {
        return set[static_cast<unsigned char>(character)];
    }
    Text name() { return text_while(name_characters, true); }
    Text text_while(const CharacterSet& set, bool is_member) {
        const char* const begin = m_at;
        while (is_in(set, *m_at) == is_member)
            ++m_at;
        return {begin, static_cast<std::size_t>(m_at - begin)};
    }
    bool attribute(Tag& tag) {
        if (tag.num_attributes == tag.attributes.size())
            return false;
        Attribute& next = tag.attributes[tag.num_attributes++];
        next.name = name();
        if (*m_at != '=' || (m_at[1] != '"' && m_at[1] != '\''))
            return false;
        const char quote = m_at[1];
        m_at += 2;
        const char* const begin = m_at;
        for (; *m_at != quote; ++m_at) { // the other quote is a part of the value
            text_while(value_ends, false);
            if (*m_at == quote)
                break;
            if (*m_at != '"' && *m_at != '\'')
                return false;
        }
        next.value = {begin, static_cast<std::size_t>(m_at - begin)};
        ++m_at;
        return true;
    }

    const char* m_at;
};

// The values of a tag, in the order of `names`; one that is missing has no data. False if there are others,
// or one twice.
template <std::size_t count>
bool take_values(const Tag& tag, const std::array<Text, count>& names, std::array<Text, count>& values) {
    std::size_t next = 0; // nearly all descriptions have the same order of attributes
    for (std::size_t i = 0; i < tag.num_attributes; ++i) {
        const Attribute& attribute = tag.attributes[i];
        if (next == count || names[next] != attribute.name) {
            next = 0;
            while (next < count && names[next] != attribute.name)
                ++next;
        }
        if (next == count || values[next].data())
            return false;
        values[next++] = attribute.value;
    }
    return true;
}

template <std::size_t count>
bool are_there(const std::array<Text, count>& values) {
    for (const Text value : values) {
        if (!value.data())
            return false;
    }
    return true;
}

// A number of so few digits that it can't be too large. What larger ones stand for is the visitors' to say.
bool take_number(Text text, unsigned int& number) {
    constexpr std::size_t most_digits = 9;
    number = 0;
    for (const char digit : text) {
        if (digit < '0' || digit > '9')
            return false;
        number = number * 10 + static_cast<unsigned int>(digit - '0');
    }
    return !text.empty() && text.size() <= most_digits;
}

// The same of an optional attribute, 0 if it is missing.
bool take_optional_number(Text text, unsigned int& number) {
    number = 0;
    return !text.data() || take_number(text, number);
}

// Each of the functions that add a record is false where a visitor would report something.
class QuickReader {
  public:
    explicit QuickReader(const char* xml) : m_text(xml) {}

    bool read();
    std::unique_ptr<ProfilerConfig> take() { return std::move(m_config); }

  private:
    using Add = bool (QuickReader::*)(const Tag&);
    using ReadChildren = bool (QuickReader::*)(Text parent);
    struct List {
        Text name;
        Text element;
        Add add;
        ReadChildren read_children;
    };

    static const std::array<List, 5> lists;

    bool read_list(const List& list);
    bool read_end(Text parent) { return m_text.end_tag(parent); }
    bool read_inst_children(Text parent);
    bool read_callsites(Text parent);
    bool add_function(const Tag& tag);
    bool add_module(const Tag& tag);
    bool add_port(const Tag& tag);
    bool add_inst(const Tag& tag);
    bool add_debug(const Tag& tag);
    bool add_callsite(const Tag& tag);
    bool add_signal(const Tag& tag);
    bool add_connection(const Tag& tag);

    Scanner m_text;
    Tag m_tag; // that was read last
    std::unique_ptr<ProfilerConfig> m_config = std::make_unique<ProfilerConfig>();
    ProfilerConfigModuleInst* m_inst = nullptr; // the last one
    ProfilerConfigDebug* m_debug = nullptr;     // its last one
};

const std::array<QuickReader::List, 5> QuickReader::lists = {{
    {"FUNCTION_LIST", "FUNCTION", &QuickReader::add_function, &QuickReader::read_end},
    {"MODULE_LIST", "MODULE", &QuickReader::add_module, &QuickReader::read_end},
    {"PORT_LIST", "PORT", &QuickReader::add_port, &QuickReader::read_end},
    {"MODULEINST_LIST", "MODULEINST", &QuickReader::add_inst, &QuickReader::read_inst_children},
    {"CONNECTION_LIST", "CONNECTION", &QuickReader::add_connection, &QuickReader::read_end},
}};

// The lists may have any order, and each is there once at most. Neither they nor the root have attributes.
bool QuickReader::read() {
    constexpr Text root = "PROFILER";
    if (m_text.skip("<?xml") && !m_text.skip_past("?>"))
        return false;
    m_text.skip_blanks();
    if (!m_text.start_tag(m_tag) || m_tag.name != root || m_tag.num_attributes != 0 || m_tag.is_empty)
        return false;
    std::array<bool, lists.size()> is_read{};
    m_text.skip_blanks();
    while (!m_text.end_tag(root)) {
        if (!m_text.start_tag(m_tag) || m_tag.num_attributes != 0)
            return false;
        std::size_t index = 0;
        while (index < lists.size() && lists[index].name != m_tag.name)
            ++index;
        if (index == lists.size() || is_read[index] || (!m_tag.is_empty && !read_list(lists[index])))
            return false;
        is_read[index] = true;
        m_text.skip_blanks();
    }
    m_text.skip_blanks();
    return m_text.at_end();
}

bool QuickReader::read_list(const List& list) {
    m_text.skip_blanks();
    while (!m_text.end_tag(list.name)) {
        if (!m_text.start_tag(m_tag) || m_tag.name != list.element || !(this->*list.add)(m_tag))
            return false;
        if (!m_tag.is_empty) {
            m_text.skip_blanks();
            if (!(this->*list.read_children)(list.element))
                return false;
        }
        m_text.skip_blanks();
    }
    return true;
}

bool QuickReader::read_inst_children(Text parent) {
    while (!m_text.end_tag(parent)) {
        if (!m_text.start_tag(m_tag))
            return false;
        const Text name = m_tag.name;
        const bool is_debug = name == "DEBUG";
        if (is_debug ? !add_debug(m_tag) : name != "SIGNAL" || !add_signal(m_tag))
            return false;
        if (!m_tag.is_empty) {
            m_text.skip_blanks();
            if (is_debug ? !read_callsites(name) : !read_end(name))
                return false;
        }
        m_text.skip_blanks();
    }
    return true;
}

bool QuickReader::read_callsites(Text parent) {
    constexpr Text callsite = "CALLSITE";
    while (!m_text.end_tag(parent)) {
        if (!m_text.start_tag(m_tag) || m_tag.name != callsite || !add_callsite(m_tag))
            return false;
        if (!m_tag.is_empty) {
            m_text.skip_blanks();
            if (!read_end(callsite))
                return false;
        }
        m_text.skip_blanks();
    }
    return true;
}

bool QuickReader::add_function(const Tag& tag) {
    std::array<Text, 6> values{};
    if (!take_values<6>(
            tag,
            {"name", "num_compute_units", "filename", "line_number", "original_name", "user_friendly_name"},
            values))
        return false;
    const auto& [name, units, filename, line, original_name, user_friendly_name] = values;
    unsigned int num_units = 0;
    unsigned int line_number = 0;
    if (!name.data() || !units.data() || !filename.data() || !take_number(units, num_units) ||
        num_units == 0 || !take_optional_number(line, line_number) || m_config->getFunctionWithName(name))
        return false;
    m_config->addFunction(name, num_units, filename, line_number, original_name, user_friendly_name);
    return true;
}

bool QuickReader::add_module(const Tag& tag) {
    std::array<Text, 3> values{};
    if (!take_values<3>(tag, {"name", "function", "isKernelWrapper"}, values) || !are_there(values))
        return false;
    const auto& [name, function, is_wrapper] = values;
    if ((!function.empty() && !m_config->getFunctionWithName(function)) ||
        m_config->getModuleWithName(name) || (is_wrapper != "true" && is_wrapper != "false"))
        return false;
    m_config->addModule(name, function, is_wrapper == "true");
    return true;
}

bool QuickReader::add_port(const Tag& tag) {
    std::array<Text, 6> values{};
    if (!take_values<6>(tag, {"cntl_name", "incr_name", "tag", "desc", "module", "flag"}, values) ||
        !are_there(values))
        return false;
    const auto& [cntl_name, incr_name, port_tag, desc, module, flag] = values;
    unsigned int flag_number = 0;
    if (!take_number(flag, flag_number) || m_config->getPortWithTag(port_tag) ||
        !m_config->getModuleWithName(module))
        return false;
    m_config->addPort(cntl_name, incr_name, port_tag, desc, module, flag_number);
    return true;
}

bool QuickReader::add_inst(const Tag& tag) {
    std::array<Text, 6> values{};
    if (!take_values<6>(tag, {"name", "function", "module", "attribute", "isAutorun", "sharedOn"}, values) ||
        !are_there(values))
        return false;
    const auto& [name, function, module, attribute, is_autorun, shared_on] = values;
    if (!m_config->getFunctionWithName(function) || !m_config->getModuleWithName(module) ||
        m_config->getModuleInstWithNameAndFunction(name, function))
        return false;
    m_inst = m_config->addModuleInst(name, function, module, attribute, is_autorun != "false",
                                     shared_on != "false");
    return true;
}

// The attributes of a location; nothing if they aren't as they should be.
struct Location {
    Text file;
    unsigned int line = 0;
    unsigned int column = 0;
};

std::optional<Location> location_of(const Tag& tag) {
    std::array<Text, 3> values{};
    Location location;
    if (!take_values<3>(tag, {"file", "line", "column"}, values) || !are_there(values) || values[0].empty() ||
        !take_number(values[1], location.line) || !take_number(values[2], location.column))
        return std::nullopt;
    location.file = values[0];
    return location;
}

bool QuickReader::add_debug(const Tag& tag) {
    const auto location = location_of(tag);
    if (location)
        m_debug = m_inst->addDebug(location->file, location->line, location->column);
    return location.has_value();
}

bool QuickReader::add_callsite(const Tag& tag) {
    const auto location = location_of(tag);
    if (location)
        m_debug->add_callsite(location->file, location->line, location->column);
    return location.has_value();
}

bool QuickReader::add_signal(const Tag& tag) {
    std::array<Text, 3> values{};
    if (!take_values<3>(tag, {"cntl_name", "incr_name", "port_tag"}, values) || !are_there(values))
        return false;
    const auto& [cntl_name, incr_name, port_tag] = values;
    ProfilerConfigPort* port = m_config->getPortWithTag(port_tag);
    if (cntl_name.empty() || !port || port->getModule() != m_inst->getModule())
        return false;
    m_inst->addSignal(cntl_name, incr_name, port);
    return true;
}

bool QuickReader::add_connection(const Tag& tag) {
    std::array<Text, 5> values{};
    if (!take_values<5>(tag, {"moduleinst", "function", "compute_unit", "shared_with", "port_tag"}, values))
        return false;
    const auto& [moduleinst, function, unit, shared_with, port_tag] = values;
    unsigned int compute_unit = 0;
    if (!moduleinst.data() || !function.data() || !unit.data() || !port_tag.data() ||
        !take_number(unit, compute_unit))
        return false;
    ProfilerConfigModuleInst* inst = m_config->getModuleInstWithNameAndFunction(moduleinst, function);
    ProfilerConfigPort* port = m_config->getPortWithTag(port_tag);
    ProfilerConfigPort* shared_port = shared_with.data() ? m_config->getPortWithTag(shared_with) : nullptr;
    if (!inst || !port || compute_unit >= inst->getFunction()->getNumComputeUnits() ||
        (shared_with.data() && !shared_port) || port->getModule() != inst->getModule())
        return false;
    m_config->addConnection(inst, inst->getFunction(), compute_unit, port,
                            shared_with.empty() ? nullptr : shared_port);
    return true;
}

} // namespace

std::unique_ptr<ProfilerConfig> read_quickly(const char* xml) {
    QuickReader reader(xml);
    return reader.read() ? reader.take() : nullptr;
}

} // namespace zan::profiler::xml
