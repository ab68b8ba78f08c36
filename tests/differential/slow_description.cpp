// SPDX-License-Identifier: Apache-2.0
#include "slow_description.h"

#include <tinyxml2.h>

#include <algorithm>
#include <set>

#include "known_names.h"
#include "slow_text.h"

namespace slow {

namespace {

constexpr int first_counter = 7; // the field of a kernel's first counter

// Thrown for anything that the description must not hold.
struct Refused {};

void require(bool condition) {
    if (!condition)
        throw Refused();
}

using Element = tinyxml2::XMLElement;

// The elements inside one, each of which must have one of these names.
std::vector<const Element*> children(const tinyxml2::XMLNode& parent, const std::set<std::string>& names) {
    std::vector<const Element*> result;
    for (const Element* child = parent.FirstChildElement(); child; child = child->NextSiblingElement()) {
        require(names.count(child->Name()) == 1);
        result.push_back(child);
    }
    return result;
}

std::string text(const Element& element, const std::string& name) {
    const char* const value = element.Attribute(name.c_str());
    require(value != nullptr);
    return value;
}

// Digits alone. Large numbers are cut to 32 bits, after those of 64 bits, which stay at the largest one.
unsigned number(const Element& element, const std::string& name) {
    const std::string digits = text(element, name);
    require(!digits.empty() && digits.find_first_not_of("0123456789") == std::string::npos);
    unsigned long long value = 0;
    for (const char digit : digits) {
        const auto added = static_cast<unsigned long long>(digit - '0');
        if (value > (ULLONG_MAX - added) / 10)
            return UINT_MAX;
        value = value * 10 + added;
    }
    return static_cast<unsigned>(value & UINT_MAX);
}

void allow_attributes(const Element& element, const std::set<std::string>& names) {
    for (const auto* attribute = element.FirstAttribute(); attribute; attribute = attribute->Next())
        require(names.count(attribute->Name()) == 1);
}

struct Function {
    std::string name;
    unsigned num_compute_units = 0;
    std::string file;
    unsigned line = 0;
    std::string original_name;
    std::string display_name;
};

struct InstRecord {
    std::string name;
    std::string function;
    std::string module;
    std::string attribute;
    bool autorun = false;
    bool shared = false;
    std::vector<Location> locations;
};

struct Connection {
    InstRecord inst;
    std::string function;
    unsigned compute_unit = 0;
    std::string tag;
    std::string shared_with; // empty if the counter is its own
};

// What a whole document says.
struct Description {
    std::vector<Function> functions;
    std::set<std::string> modules;
    std::map<std::string, std::string> ports; // the module of each tag
    std::vector<InstRecord> insts;
    std::vector<Connection> connections;

    const Function* function(const std::string& name) const {
        const auto found = std::find_if(functions.begin(), functions.end(),
                                        [&](const Function& function) { return function.name == name; });
        return found == functions.end() ? nullptr : &*found;
    }
    const InstRecord* inst(const std::string& name, const std::string& function) const {
        const auto found = std::find_if(insts.begin(), insts.end(), [&](const InstRecord& inst) {
            return inst.name == name && inst.function == function;
        });
        return found == insts.end() ? nullptr : &*found;
    }
};

void read_function(Description& into, const Element& element) {
    allow_attributes(element, {"name", "num_compute_units", "filename", "line_number", "original_name",
                               "user_friendly_name"});
    children(element, {});
    Function function;
    function.name = text(element, "name");
    function.num_compute_units = number(element, "num_compute_units");
    require(function.num_compute_units != 0);
    function.file = text(element, "filename");
    if (element.Attribute("line_number"))
        function.line = number(element, "line_number");
    if (element.Attribute("original_name"))
        function.original_name = text(element, "original_name");
    if (element.Attribute("user_friendly_name"))
        function.display_name = text(element, "user_friendly_name");
    require(!into.function(function.name));
    into.functions.push_back(function);
}

void read_module(Description& into, const Element& element) {
    allow_attributes(element, {"name", "function", "isKernelWrapper"});
    children(element, {});
    const std::string function = text(element, "function");
    require(function.empty() || into.function(function));
    const std::string is_wrapper = text(element, "isKernelWrapper");
    require(is_wrapper == "true" || is_wrapper == "false");
    require(into.modules.insert(text(element, "name")).second);
}

void read_port(Description& into, const Element& element) {
    allow_attributes(element, {"cntl_name", "incr_name", "tag", "desc", "module", "flag"});
    children(element, {});
    for (const char* name : {"cntl_name", "incr_name", "desc"})
        text(element, name);
    number(element, "flag");
    const std::string module = text(element, "module");
    require(into.modules.count(module) == 1);
    require(into.ports.insert({text(element, "tag"), module}).second);
}

Place read_place(const Element& element) {
    allow_attributes(element, {"file", "line", "column"});
    require(!text(element, "file").empty());
    return {text(element, "file"), static_cast<int>(number(element, "line")),
            static_cast<int>(number(element, "column"))};
}

Location read_location(const Element& element) {
    Location location;
    location.place = read_place(element);
    for (const Element* child : children(element, {"CALLSITE"})) {
        children(*child, {});
        const Place call = read_place(*child);
        if (call.line != 0) // a call of no line is left out
            location.calls.push_back(call);
    }
    return location;
}

void check_signal(const Description& description, const InstRecord& inst, const Element& element) {
    allow_attributes(element, {"cntl_name", "incr_name", "port_tag"});
    children(element, {});
    require(!text(element, "cntl_name").empty());
    text(element, "incr_name");
    const auto port = description.ports.find(text(element, "port_tag"));
    require(port != description.ports.end() && port->second == inst.module);
}

void read_inst(Description& into, const Element& element) {
    allow_attributes(element, {"name", "function", "module", "attribute", "isAutorun", "sharedOn"});
    InstRecord inst;
    inst.name = text(element, "name");
    inst.function = text(element, "function");
    inst.module = text(element, "module");
    inst.attribute = text(element, "attribute");
    inst.autorun = text(element, "isAutorun") != "false";
    inst.shared = text(element, "sharedOn") != "false";
    require(into.function(inst.function) && into.modules.count(inst.module) == 1);
    require(!into.inst(inst.name, inst.function));
    for (const Element* child : children(element, {"DEBUG", "SIGNAL"})) {
        if (child->Name() == std::string("DEBUG"))
            inst.locations.push_back(read_location(*child));
        else
            check_signal(into, inst, *child);
    }
    into.insts.push_back(inst);
}

void read_connection(Description& into, const Element& element) {
    allow_attributes(element, {"moduleinst", "function", "compute_unit", "port_tag", "shared_with"});
    children(element, {});
    Connection connection;
    connection.function = text(element, "function");
    const InstRecord* inst = into.inst(text(element, "moduleinst"), connection.function);
    require(inst != nullptr);
    connection.inst = *inst;
    connection.compute_unit = number(element, "compute_unit");
    require(connection.compute_unit < into.function(connection.function)->num_compute_units);
    connection.tag = text(element, "port_tag");
    const auto port = into.ports.find(connection.tag);
    require(port != into.ports.end() && port->second == inst->module);
    if (element.Attribute("shared_with")) {
        connection.shared_with = text(element, "shared_with");
        require(into.ports.count(connection.shared_with) == 1);
    }
    into.connections.push_back(connection);
}

// Elements mean what has been read before them, so lists are read in the order of the document.
Description read_document(const tinyxml2::XMLDocument& document) {
    using Handler = void (*)(Description&, const Element&);
    const std::map<std::string, std::pair<std::string, Handler>> lists = {
        {"FUNCTION_LIST", {"FUNCTION", read_function}},
        {"MODULE_LIST", {"MODULE", read_module}},
        {"PORT_LIST", {"PORT", read_port}},
        {"MODULEINST_LIST", {"MODULEINST", read_inst}},
        {"CONNECTION_LIST", {"CONNECTION", read_connection}}};
    std::set<std::string> names;
    for (const auto& [name, list] : lists)
        names.insert(name);

    Description result;
    const std::vector<const Element*> roots = children(document, {"PROFILER"});
    require(roots.size() <= 1);
    for (const Element* root : roots) {
        std::set<std::string> seen;
        for (const Element* list : children(*root, names)) {
            require(seen.insert(list->Name()).second);
            const auto& [element_name, handler] = lists.at(list->Name());
            for (const Element* element : children(*list, {element_name}))
                handler(result, *element);
        }
    }
    return result;
}

// The fields of an attribute text. A text that ends in ";" has an empty field after it.
std::vector<std::string> split(const std::string& attribute) {
    std::vector<std::string> fields;
    if (attribute.empty())
        return fields;
    fields.emplace_back();
    for (const char c : attribute) {
        if (c == ';')
            fields.emplace_back();
        else
            fields.back() += c;
    }
    return fields;
}

float clock_in_mhz(const Run& run) {
    ptree node;
    node.put("fmax", run.clock);
    return node.get_optional<float>("fmax").value_or(0.0f);
}

Inst make_inst(const Run& run, const InstRecord& record) {
    Inst inst;
    inst.name = record.name;
    inst.module = record.module;
    inst.function = record.function;
    inst.autorun = record.autorun;
    inst.shared = record.shared;
    inst.locations = record.locations;
    inst.fmax = clock_in_mhz(run);
    const std::vector<std::string> fields = split(record.attribute);
    if (!fields.empty())
        inst.memory_type = fields[0];
    if (fields.size() >= 7) {
        inst.read_or_write = fields[1];
        inst.unit_type = fields[2];
        inst.memory_name = fields[3];
        inst.width_in_bits = fields[4];
        inst.optimisation = fields[6];
    }
    return inst;
}

Inst& find_or_make_inst(Run& run, const Connection& connection) {
    Kernel& kernel = run.kernels.at(connection.function);
    for (Inst& inst : kernel.insts) {
        if (inst.name == connection.inst.name)
            return inst;
    }
    kernel.insts.push_back(make_inst(run, connection.inst));
    kernel.autorun = kernel.autorun || connection.inst.autorun;
    return kernel.insts.back();
}

class Connector {
  public:
    explicit Connector(Run& run) : m_run(run) {}

    void connect(const Connection& connection);
    // The counters of all autorun kernels stand on one line, one kernel after the other.
    void move_autorun_counters();

  private:
    Run& m_run;
    std::map<std::string, int> m_fields; // of each function the last one given out
    std::set<std::string> m_autorun_kernels;
};

void Connector::connect(const Connection& connection) {
    if (m_fields.count(connection.function) == 0)
        m_fields[connection.function] = first_counter;
    else if (connection.shared_with.empty())
        ++m_fields[connection.function];
    const int field = m_fields[connection.function];

    Inst& inst = find_or_make_inst(m_run, connection);
    const std::string& tag = connection.tag;
    if (tag == "shared" || tag == "chread_shared" || tag == "chwrite_shared")
        inst.shared_fields.insert({tag, field});
    if (connection.shared_with.empty()) {
        inst.counters.push_back({tag, field, connection.compute_unit});
    } else if (inst.shared_fields.count(connection.shared_with) == 0) {
        m_run.say("ERROR: No shared offset was found for kernel " + inst.function + ". ABORT");
    } else {
        inst.counters.push_back({tag, inst.shared_fields[connection.shared_with], connection.compute_unit});
        ++inst.num_on_shared;
    }
    if (inst.autorun)
        m_autorun_kernels.insert(inst.function);
}

void Connector::move_autorun_counters() {
    if (m_fields.count(pseudo_kernel) == 0)
        return;
    int shift = 1;
    for (auto name = m_autorun_kernels.rbegin(); name != m_autorun_kernels.rend(); ++name) {
        if (*name == pseudo_kernel)
            continue;
        int num_fields = 0;
        for (Inst& inst : m_run.kernels.at(*name).insts) {
            if (inst.autorun) {
                for (Counter& counter : inst.counters)
                    counter.field += shift;
            }
            num_fields += static_cast<int>(inst.counters.size()) - (inst.shared ? inst.num_on_shared : 0);
        }
        shift += num_fields;
    }
}

void build(Run& run, const Description& description) {
    for (const Function& function : description.functions) {
        Kernel kernel;
        kernel.name = function.name;
        kernel.display_name = function.display_name;
        kernel.file = function.file;
        kernel.line = static_cast<int>(function.line);
        run.kernels[function.name] = kernel;
        if (!function.original_name.empty())
            run.original_names.insert({function.original_name, function.name});
    }
    Connector connector(run);
    for (const Connection& connection : description.connections)
        connector.connect(connection);
    connector.move_autorun_counters();
}

} // namespace

bool read_description(Run& run, const std::string& xml) {
    tinyxml2::XMLDocument document(true, tinyxml2::PRESERVE_WHITESPACE);
    if (document.Parse(xml.c_str()) != tinyxml2::XML_SUCCESS)
        return false;
    try {
        build(run, read_document(document));
        return true;
    } catch (const Refused&) {
        return false;
    }
}

} // namespace slow
