// SPDX-License-Identifier: Apache-2.0
#include "ProfilerModuleInstListVisitor.h"

#include <fmt/core.h>

#include "BaseAttributeTable.h"
#include "contract.h"

namespace zan::profiler::xml {

using zan::xml::AttributeRow;
using zan::xml::call;
using zan::xml::descend;
using zan::xml::read_attributes;
using zan::xml::read_to;
using enum zan::xml::AttributeNeed;
using enum zan::xml::Occurrence;

struct ProfilerModuleInstListVisitor::Inst {
    std::string_view name;
    std::string_view function;
    std::string_view module;
    std::string_view attribute;
    std::string_view is_autorun;
    std::string_view shared_on;
};

struct ProfilerModuleInstListVisitor::Location {
    std::string_view file;
    unsigned int line = 0;
    unsigned int column = 0;
};

struct ProfilerModuleInstListVisitor::Signal {
    std::string_view cntl_name;
    std::string_view incr_name;
    std::string_view port_tag;
};

ProfilerModuleInstListVisitor::ProfilerModuleInstListVisitor(ProfilerConfig* config, BaseVisitor* parent)
    : ProfilerListVisitor(elements(), config, parent) {
}

ProfilerModuleInstListVisitor::Rows ProfilerModuleInstListVisitor::elements() {
    using Self = ProfilerModuleInstListVisitor;
    static constexpr ElementRow rows[] = {
        {"MODULEINST_LIST", outermost, once, descend},
        {"MODULEINST", "MODULEINST_LIST", any, call<&Self::visit_moduleinst>},
        {"DEBUG", "MODULEINST_LIST/MODULEINST", any, call<&Self::visit_debug>, call<&Self::leave_debug>},
        {"CALLSITE", "MODULEINST_LIST/MODULEINST/DEBUG", any, call<&Self::visit_callsite>},
        {"SIGNAL", "MODULEINST_LIST/MODULEINST", any, call<&Self::visit_signal>},
    };
    return rows;
}

bool ProfilerModuleInstListVisitor::visit_moduleinst(const XMLElement& elem) {
    static constexpr AttributeRow<ProfilerModuleInstListVisitor, Inst> rows[] = {
        {"name", required, read_to<&Inst::name>, "Unsupported name string."},
        {"function", required, read_to<&Inst::function>, "Unsupported function string."},
        {"module", required, read_to<&Inst::module>, "Unsupported module string."},
        {"attribute", required, read_to<&Inst::attribute>, "Unsupported attribute string."},
        {"isAutorun", required, read_to<&Inst::is_autorun>, "Unsupported isAutorun string."},
        {"sharedOn", required, read_to<&Inst::shared_on>, "Unsupported sharedOn string."},
    };
    Inst inst;
    if (!read_attributes(*this, elem, rows, inst))
        return false;
    if (!m_config->getFunctionWithName(inst.function))
        return report_error(
            fmt::format("Function \"{}\" does not exist in ModuleInst \"{}\".", inst.function, inst.name));
    if (!m_config->getModuleWithName(inst.module))
        return report_error(
            fmt::format("Module \"{}\" does not exist in ModuleInst \"{}\".", inst.module, inst.name));
    // The message names the module, though it is the instance that isn't unique. Tools know this text.
    if (m_config->getModuleInstWithNameAndFunction(inst.name, inst.function))
        return report_error(fmt::format("Module \"{}\" is not unique.", inst.module));
    // Any text but "false" counts as true; no text is a fault here.
    m_moduleinst = m_config->addModuleInst(inst.name, inst.function, inst.module, inst.attribute,
                                           inst.is_autorun != "false", inst.shared_on != "false");
    return true;
}

bool ProfilerModuleInstListVisitor::check_file(const XMLElement&, const Location& location) {
    return !location.file.empty() || report_error("File name cannot be null.");
}

bool ProfilerModuleInstListVisitor::read_location(const XMLElement& elem, Location& location) {
    using Self = ProfilerModuleInstListVisitor;
    static constexpr AttributeRow<Self, Location> rows[] = {
        {"file", required, read_to<&Location::file>, "Unsupported file string.", &Self::check_file},
        {"line", required, read_to<&Location::line>, "Unsupported line value."},
        {"column", required, read_to<&Location::column>, "Unsupported column value."},
    };
    return read_attributes(*this, elem, rows, location);
}

bool ProfilerModuleInstListVisitor::visit_debug(const XMLElement& elem) {
    Location location;
    if (!read_location(elem, location))
        return false;
    m_debug = m_moduleinst->addDebug(location.file, location.line, location.column);
    return true;
}

// A call site must not be added to a location that is closed.
bool ProfilerModuleInstListVisitor::leave_debug(const XMLElement&) {
    m_debug = nullptr;
    return true;
}

bool ProfilerModuleInstListVisitor::visit_callsite(const XMLElement& elem) {
    Location location;
    if (!read_location(elem, location))
        return false;
    ZAN_CONTRACT(m_debug != nullptr, "m_debug");
    m_debug->add_callsite(location.file, location.line, location.column);
    return true;
}

bool ProfilerModuleInstListVisitor::check_cntl_name(const XMLElement&, const Signal& signal) {
    return !signal.cntl_name.empty() ||
           report_error(fmt::format("Control signal \"{}\" cannot be null.", signal.cntl_name));
}

bool ProfilerModuleInstListVisitor::visit_signal(const XMLElement& elem) {
    using Self = ProfilerModuleInstListVisitor;
    static constexpr AttributeRow<Self, Signal> rows[] = {
        {"cntl_name", required, read_to<&Signal::cntl_name>, "Unsupported cntl_name string.",
         &Self::check_cntl_name},
        {"incr_name", required, read_to<&Signal::incr_name>, "Unsupported incr_name string."},
        {"port_tag", required, read_to<&Signal::port_tag>, "Unsupported port_tag string."},
    };
    Signal signal;
    if (!read_attributes(*this, elem, rows, signal))
        return false;
    ProfilerConfigPort* port = m_config->getPortWithTag(signal.port_tag);
    // The messages name the signal where they say ModuleInst. Tools know these texts.
    if (!port)
        return report_error(fmt::format("Port tag \"{}\" does not exist in ModuleInst \"{}\".",
                                        signal.port_tag, signal.cntl_name));
    if (port->getModule() != m_moduleinst->getModule())
        return report_error(fmt::format("Port tag \"{}\" does not belong to module in ModuleInst \"{}\".",
                                        signal.port_tag, signal.cntl_name));
    m_moduleinst->addSignal(signal.cntl_name, signal.incr_name, port);
    return true;
}

} // namespace zan::profiler::xml
