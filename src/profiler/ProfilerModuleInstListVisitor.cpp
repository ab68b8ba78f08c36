#include "ProfilerModuleInstListVisitor.h"

#include <fmt/core.h>

#include "BaseAttributeTable.h"
#include "contract.h"

namespace zan::profiler::xml {

using zan::xml::AttributeNeed;
using zan::xml::AttributeRow;
using zan::xml::check_attributes;
using zan::xml::read_attributes;
using enum AttributeNeed;

// ---- The document

ProfilerVisitor::ProfilerVisitor(ProfilerConfig* config, VisitorCallbacks* callbacks, bool debug)
    : BaseVisitor(callbacks, debug), m_config(config) {
    ZAN_CONTRACT(config != nullptr, "config != __null");
}

bool ProfilerVisitor::VisitEnter(const XMLElement& elem, const XMLAttribute* first_attribute) {
    static constexpr ElementHandler<ProfilerVisitor> handlers[] = {
        {"PROFILER", &ProfilerVisitor::visit_profiler},
        {"FUNCTION_LIST", &ProfilerVisitor::visit_list<ProfilerFunctionListVisitor>},
        {"MODULE_LIST", &ProfilerVisitor::visit_list<ProfilerModuleListVisitor>},
        {"PORT_LIST", &ProfilerVisitor::visit_list<ProfilerPortListVisitor>},
        {"MODULEINST_LIST", &ProfilerVisitor::visit_list<ProfilerModuleInstListVisitor>},
        {"CONNECTION_LIST", &ProfilerVisitor::visit_list<ProfilerConnectionListVisitor>},
    };
    BaseVisitor::VisitEnter(elem, first_attribute);
    return visit_by_name(this, elem, handlers);
}

bool ProfilerVisitor::VisitExit(const XMLDocument&) {
    return !m_has_error;
}

bool ProfilerVisitor::visit_profiler(const XMLElement& elem) {
    return report_unexpected_elem_stack(elem, 0) && report_unexpected_elem_stack_count(elem, 1) &&
           !m_has_error;
}

template <typename ListVisitor>
bool ProfilerVisitor::visit_list(const XMLElement& elem) {
    if (!report_unexpected_elem_stack(elem, 1, "PROFILER") || !report_unexpected_elem_stack_count(elem, 1))
        return !m_has_error;
    ListVisitor child(m_config, this);
    return hand_over(elem, &child);
}

// ---- What the lists share

ProfilerListVisitor::ProfilerListVisitor(ProfilerConfig* config, BaseVisitor* parent)
    : BaseVisitor(parent), m_config(config) {
    ZAN_CONTRACT(config != nullptr, "config != __null");
}

bool ProfilerListVisitor::visit_list(const XMLElement& elem) {
    return report_unexpected_elem_stack(elem, 0) && report_unexpected_elem_stack_count(elem, 1) &&
           !m_has_error;
}

// ---- Functions

struct ProfilerFunctionListVisitor::Function {
    std::string name;
    unsigned int num_compute_units = 0;
    std::string filename;
    unsigned int line_number = 0;
    std::string original_name;
    std::string user_friendly_name;
};

ProfilerFunctionListVisitor::ProfilerFunctionListVisitor(ProfilerConfig* config, BaseVisitor* parent)
    : ProfilerListVisitor(config, parent) {
}

bool ProfilerFunctionListVisitor::VisitEnter(const XMLElement& elem, const XMLAttribute* first_attribute) {
    static constexpr ElementHandler<ProfilerFunctionListVisitor> handlers[] = {
        {"FUNCTION_LIST", &ProfilerFunctionListVisitor::visit_list},
        {"FUNCTION", &ProfilerFunctionListVisitor::visit_function},
    };
    BaseVisitor::VisitEnter(elem, first_attribute);
    return visit_by_name(this, elem, handlers);
}

bool ProfilerFunctionListVisitor::check_num_compute_units(const XMLElement& elem, const Function& function) {
    return function.num_compute_units != 0 ||
           report_attr_error(elem, "num_compute_units", "Non-zero num_compute_units value expected.");
}

bool ProfilerFunctionListVisitor::visit_function(const XMLElement& elem) {
    using Self = ProfilerFunctionListVisitor;
    static constexpr AttributeRow<Self, Function> rows[] = {
        {"name", &Function::name, required, "Unsupported name string."},
        {"num_compute_units", &Function::num_compute_units, required, "Unsupported num_compute_units value.",
         &Self::check_num_compute_units},
        {"filename", &Function::filename, required, "Unsupported filename string."},
        {"line_number", &Function::line_number, optional, "Unsupported line_number value."},
        {"original_name", &Function::original_name, optional, "Unsupported original_name string."},
        {"user_friendly_name", &Function::user_friendly_name, optional,
         "Unsupported user_friendly_name string."},
    };
    Function function;
    if (!report_unexpected_elem_stack(elem, 1, "FUNCTION_LIST") || !check_attributes(*this, elem, rows) ||
        !read_attributes(*this, elem, rows, function))
        return false;
    if (m_config->getFunctionWithName(function.name))
        return report_error(fmt::format("Function name \"{}\" is not unique.", function.name));
    m_config->addFunction(function.name, function.num_compute_units, function.filename, function.line_number,
                          function.original_name, function.user_friendly_name);
    return !m_has_error;
}

// ---- Modules

struct ProfilerModuleListVisitor::Module {
    std::string name;
    std::string function;
    std::string is_kernel_wrapper;
};

ProfilerModuleListVisitor::ProfilerModuleListVisitor(ProfilerConfig* config, BaseVisitor* parent)
    : ProfilerListVisitor(config, parent) {
}

bool ProfilerModuleListVisitor::VisitEnter(const XMLElement& elem, const XMLAttribute* first_attribute) {
    static constexpr ElementHandler<ProfilerModuleListVisitor> handlers[] = {
        {"MODULE_LIST", &ProfilerModuleListVisitor::visit_list},
        {"MODULE", &ProfilerModuleListVisitor::visit_module},
    };
    BaseVisitor::VisitEnter(elem, first_attribute);
    return visit_by_name(this, elem, handlers);
}

bool ProfilerModuleListVisitor::check_names(const XMLElement&, const Module& module) {
    if (!module.function.empty() && !m_config->getFunctionWithName(module.function))
        return report_error(
            fmt::format("Function \"{}\" does not exist in Module \"{}\".", module.function, module.name));
    if (m_config->getModuleWithName(module.name))
        return report_error(fmt::format("Module name \"{}\" is not unique.", module.name));
    return true;
}

bool ProfilerModuleListVisitor::check_is_kernel_wrapper(const XMLElement&, const Module& module) {
    return module.is_kernel_wrapper == "true" || module.is_kernel_wrapper == "false" ||
           report_error("isKernelWrapper attribute is expected to be true/false.");
}

bool ProfilerModuleListVisitor::visit_module(const XMLElement& elem) {
    using Self = ProfilerModuleListVisitor;
    static constexpr AttributeRow<Self, Module> rows[] = {
        {"name", &Module::name, required, "Unsupported name string."},
        {"function", &Module::function, required, "Unsupported function string.", &Self::check_names},
        {"isKernelWrapper", &Module::is_kernel_wrapper, required, "Unsupported isKernelWrapper string.",
         &Self::check_is_kernel_wrapper},
    };
    Module module;
    if (!report_unexpected_elem_stack(elem, 1, "MODULE_LIST") || !check_attributes(*this, elem, rows) ||
        !read_attributes(*this, elem, rows, module))
        return false;
    m_config->addModule(module.name, module.function, module.is_kernel_wrapper == "true");
    return !m_has_error;
}

// ---- Ports

ProfilerPortListVisitor::ProfilerPortListVisitor(ProfilerConfig* config, BaseVisitor* parent)
    : ProfilerListVisitor(config, parent) {
}

bool ProfilerPortListVisitor::VisitEnter(const XMLElement& elem, const XMLAttribute* first_attribute) {
    static constexpr ElementHandler<ProfilerPortListVisitor> handlers[] = {
        {"PORT_LIST", &ProfilerPortListVisitor::visit_list},
        {"PORT", &ProfilerPortListVisitor::visit_port},
    };
    BaseVisitor::VisitEnter(elem, first_attribute);
    return visit_by_name(this, elem, handlers);
}

bool ProfilerPortListVisitor::visit_port(const XMLElement& elem) {
    struct Port {
        std::string cntl_name;
        std::string incr_name;
        std::string tag;
        std::string desc;
        std::string module;
        unsigned int flag = 0;
    };
    static constexpr AttributeRow<ProfilerPortListVisitor, Port> rows[] = {
        // Told as "cntl", which no element has, so that the message goes to the element's line.
        {"cntl_name", &Port::cntl_name, required, "Unsupported cntl_name string.", nullptr, "cntl"},
        {"incr_name", &Port::incr_name, required, "Unsupported incr_name string."},
        {"tag", &Port::tag, required, "Unsupported tag string."},
        {"desc", &Port::desc, required, "Unsupported desc string."},
        {"module", &Port::module, required, "Unsupported module string."},
        {"flag", &Port::flag, required, "Unsupported flag string."},
    };
    Port port;
    if (!report_unexpected_elem_stack(elem, 1, "PORT_LIST") || !check_attributes(*this, elem, rows) ||
        !read_attributes(*this, elem, rows, port))
        return false;
    if (m_config->getPortWithTag(port.tag))
        return report_error(fmt::format("Port tag \"{}\" is not unique.", port.tag));
    if (!m_config->getModuleWithName(port.module))
        return report_error(fmt::format("Module \"{}\" does not exist in Port \"({},{})\".", port.module,
                                        port.cntl_name, port.incr_name));
    m_config->addPort(port.cntl_name, port.incr_name, port.tag, port.desc, port.module, port.flag);
    return !m_has_error;
}

// ---- Module instances

struct ProfilerModuleInstListVisitor::Inst {
    std::string name;
    std::string function;
    std::string module;
    std::string attribute;
    std::string is_autorun;
    std::string shared_on;
};

struct ProfilerModuleInstListVisitor::Location {
    std::string file;
    unsigned int line = 0;
    unsigned int column = 0;
};

struct ProfilerModuleInstListVisitor::Signal {
    std::string cntl_name;
    std::string incr_name;
    std::string port_tag;
};

ProfilerModuleInstListVisitor::ProfilerModuleInstListVisitor(ProfilerConfig* config, BaseVisitor* parent)
    : ProfilerListVisitor(config, parent) {
}

bool ProfilerModuleInstListVisitor::VisitEnter(const XMLElement& elem, const XMLAttribute* first_attribute) {
    static constexpr ElementHandler<ProfilerModuleInstListVisitor> handlers[] = {
        {"MODULEINST_LIST", &ProfilerModuleInstListVisitor::visit_list},
        {"MODULEINST", &ProfilerModuleInstListVisitor::visit_moduleinst},
        {"DEBUG", &ProfilerModuleInstListVisitor::visit_debug},
        {"CALLSITE", &ProfilerModuleInstListVisitor::visit_callsite},
        {"SIGNAL", &ProfilerModuleInstListVisitor::visit_signal},
    };
    BaseVisitor::VisitEnter(elem, first_attribute);
    return visit_by_name(this, elem, handlers);
}

bool ProfilerModuleInstListVisitor::VisitExit(const XMLElement& elem) {
    if (std::string_view(elem.Value()) == "DEBUG")
        m_debug = nullptr;
    return BaseVisitor::VisitExit(elem);
}

bool ProfilerModuleInstListVisitor::visit_moduleinst(const XMLElement& elem) {
    static constexpr AttributeRow<ProfilerModuleInstListVisitor, Inst> rows[] = {
        {"name", &Inst::name, required, "Unsupported name string."},
        {"function", &Inst::function, required, "Unsupported function string."},
        {"module", &Inst::module, required, "Unsupported module string."},
        {"attribute", &Inst::attribute, required, "Unsupported attribute string."},
        {"isAutorun", &Inst::is_autorun, required, "Unsupported isAutorun string."},
        {"sharedOn", &Inst::shared_on, required, "Unsupported sharedOn string."},
    };
    Inst inst;
    if (!report_unexpected_elem_stack(elem, 1, "MODULEINST_LIST") || !check_attributes(*this, elem, rows) ||
        !read_attributes(*this, elem, rows, inst))
        return false;
    if (!m_config->getFunctionWithName(inst.function))
        return report_error(
            fmt::format("Function \"{}\" does not exist in ModuleInst \"{}\".", inst.function, inst.name));
    if (!m_config->getModuleWithName(inst.module))
        return report_error(
            fmt::format("Module \"{}\" does not exist in ModuleInst \"{}\".", inst.module, inst.name));
    // It is the instance that isn't unique; the words tell its module.
    if (m_config->getModuleInstWithNameAndFunction(inst.name, inst.function))
        return report_error(fmt::format("Module \"{}\" is not unique.", inst.module));
    // Whatever isn't "false" counts as true.
    m_moduleinst = m_config->addModuleInst(inst.name, inst.function, inst.module, inst.attribute,
                                           inst.is_autorun != "false", inst.shared_on != "false");
    return !m_has_error;
}

bool ProfilerModuleInstListVisitor::check_file(const XMLElement&, const Location& location) {
    return !location.file.empty() || report_error("File name cannot be null.");
}

bool ProfilerModuleInstListVisitor::read_location(const XMLElement& elem, Location& location) {
    using Self = ProfilerModuleInstListVisitor;
    static constexpr AttributeRow<Self, Location> rows[] = {
        {"file", &Location::file, required, "Unsupported file string.", &Self::check_file},
        {"line", &Location::line, required, "Unsupported line value."},
        {"column", &Location::column, required, "Unsupported column value."},
    };
    return check_attributes(*this, elem, rows) && read_attributes(*this, elem, rows, location);
}

bool ProfilerModuleInstListVisitor::visit_debug(const XMLElement& elem) {
    Location location;
    if (!report_unexpected_elem_stack(elem, 2, "MODULEINST_LIST", "MODULEINST") ||
        !read_location(elem, location))
        return false;
    m_debug = m_moduleinst->addDebug(location.file, location.line, location.column);
    return !m_has_error;
}

bool ProfilerModuleInstListVisitor::visit_callsite(const XMLElement& elem) {
    Location location;
    if (!report_unexpected_elem_stack(elem, 3, "MODULEINST_LIST", "MODULEINST", "DEBUG") ||
        !read_location(elem, location))
        return false;
    ZAN_CONTRACT(m_debug != nullptr, "m_debug");
    m_debug->add_callsite(location.file, location.line, location.column);
    return !m_has_error;
}

bool ProfilerModuleInstListVisitor::check_cntl_name(const XMLElement&, const Signal& signal) {
    return !signal.cntl_name.empty() ||
           report_error(fmt::format("Control signal \"{}\" cannot be null.", signal.cntl_name));
}

bool ProfilerModuleInstListVisitor::visit_signal(const XMLElement& elem) {
    using Self = ProfilerModuleInstListVisitor;
    static constexpr AttributeRow<Self, Signal> rows[] = {
        {"cntl_name", &Signal::cntl_name, required, "Unsupported cntl_name string.", &Self::check_cntl_name},
        {"incr_name", &Signal::incr_name, required, "Unsupported incr_name string."},
        {"port_tag", &Signal::port_tag, required, "Unsupported port_tag string."},
    };
    Signal signal;
    if (!report_unexpected_elem_stack(elem, 2, "MODULEINST_LIST", "MODULEINST") ||
        !check_attributes(*this, elem, rows) || !read_attributes(*this, elem, rows, signal))
        return false;
    ProfilerConfigPort* port = m_config->getPortWithTag(signal.port_tag);
    // Where the words say ModuleInst they tell the signal.
    if (!port)
        return report_error(fmt::format("Port tag \"{}\" does not exist in ModuleInst \"{}\".",
                                        signal.port_tag, signal.cntl_name));
    if (port->getModule() != m_moduleinst->getModule())
        return report_error(fmt::format("Port tag \"{}\" does not belong to module in ModuleInst \"{}\".",
                                        signal.port_tag, signal.cntl_name));
    m_moduleinst->addSignal(signal.cntl_name, signal.incr_name, port);
    return !m_has_error;
}

// ---- Connections

struct ProfilerConnectionListVisitor::Connection {
    std::string moduleinst;
    std::string function;
    unsigned int compute_unit = 0;
    std::string shared_with;
    std::string port_tag;
};

ProfilerConnectionListVisitor::ProfilerConnectionListVisitor(ProfilerConfig* config, BaseVisitor* parent)
    : ProfilerListVisitor(config, parent) {
}

bool ProfilerConnectionListVisitor::VisitEnter(const XMLElement& elem, const XMLAttribute* first_attribute) {
    static constexpr ElementHandler<ProfilerConnectionListVisitor> handlers[] = {
        {"CONNECTION_LIST", &ProfilerConnectionListVisitor::visit_list},
        {"CONNECTION", &ProfilerConnectionListVisitor::visit_connection},
    };
    BaseVisitor::VisitEnter(elem, first_attribute);
    return visit_by_name(this, elem, handlers);
}

bool ProfilerConnectionListVisitor::check_references(const XMLElement& elem, const Connection& connection) {
    const auto& [moduleinst, function, compute_unit, shared_with, port_tag] = connection;
    const auto where = [&] {
        return fmt::format("ModuleInst \"{}\" and function \"{}\".", connection.moduleinst,
                           connection.function);
    };
    const ProfilerConfigModuleInst* inst = m_config->getModuleInstWithNameAndFunction(moduleinst, function);
    if (!inst)
        return report_error(fmt::format(
            "ModuleInst \"{}\" does not exist in Function \"{}\" in connection of Port tag \"{}\".",
            moduleinst, function, port_tag));
    const ProfilerConfigFunction* f = m_config->getFunctionWithName(function);
    ZAN_CONTRACT(f != nullptr, "f");
    if (compute_unit >= f->getNumComputeUnits())
        return report_error("Compute unit is incorrect in " + where());
    const ProfilerConfigPort* port = m_config->getPortWithTag(port_tag);
    if (!port)
        return report_error(fmt::format("Port tag \"{}\" does not exist in {}", port_tag, where()));
    // An empty text is a tag like any other here, though the model takes it for none.
    if (attribute_exists(elem, "shared_with") && !m_config->getPortWithTag(shared_with))
        return report_error(fmt::format("Shared Port tag \"{}\" does not exist in {}", shared_with, where()));
    if (port->getModule() != inst->getModule())
        return report_error(
            fmt::format("Port tag \"{}\" and ModuleInst \"{}\" do not match.", port_tag, moduleinst));
    return true;
}

bool ProfilerConnectionListVisitor::visit_connection(const XMLElement& elem) {
    static constexpr AttributeRow<ProfilerConnectionListVisitor, Connection> rows[] = {
        {"moduleinst", &Connection::moduleinst, required, "Unsupported moduleinst string."},
        {"function", &Connection::function, required, "Unsupported function string."},
        {"compute_unit", &Connection::compute_unit, required, "Unsupported compute_unit value."},
        {"shared_with", &Connection::shared_with, optional, "Unsupported shared_with string."},
        {"port_tag", &Connection::port_tag, required, "Unsupported port_tag string."},
    };
    Connection connection;
    if (!report_unexpected_elem_stack(elem, 1, "CONNECTION_LIST") || !check_attributes(*this, elem, rows) ||
        !read_attributes(*this, elem, rows, connection) || !check_references(elem, connection))
        return false;
    m_config->addConnection(connection.moduleinst, connection.function, connection.compute_unit,
                            connection.port_tag, connection.shared_with);
    return !m_has_error;
}

} // namespace zan::profiler::xml
