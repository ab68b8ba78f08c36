// SPDX-License-Identifier: Apache-2.0
#include "ProfilerConnectionListVisitor.h"

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

struct ProfilerConnectionListVisitor::Connection {
    std::string moduleinst;
    std::string function;
    unsigned int compute_unit = 0;
    std::string shared_with;
    std::string port_tag;
};

ProfilerConnectionListVisitor::ProfilerConnectionListVisitor(ProfilerConfig* config, BaseVisitor* parent)
    : ProfilerListVisitor(elements(), config, parent) {
}

ProfilerConnectionListVisitor::Rows ProfilerConnectionListVisitor::elements() {
    using Self = ProfilerConnectionListVisitor;
    static constexpr ElementRow rows[] = {
        {"CONNECTION_LIST", outermost, once, descend},
        {"CONNECTION", "CONNECTION_LIST", any, call<&Self::visit_connection>},
    };
    return rows;
}

// The first fault ends the load, so the order of these checks decides which message a user sees.
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
    // Here an empty text is a tag like any other, though to the model it means that no port is shared.
    if (attribute_exists(elem, "shared_with") && !m_config->getPortWithTag(shared_with))
        return report_error(fmt::format("Shared Port tag \"{}\" does not exist in {}", shared_with, where()));
    if (port->getModule() != inst->getModule())
        return report_error(
            fmt::format("Port tag \"{}\" and ModuleInst \"{}\" do not match.", port_tag, moduleinst));
    return true;
}

bool ProfilerConnectionListVisitor::visit_connection(const XMLElement& elem) {
    static constexpr AttributeRow<ProfilerConnectionListVisitor, Connection> rows[] = {
        {"moduleinst", required, read_to<&Connection::moduleinst>, "Unsupported moduleinst string."},
        {"function", required, read_to<&Connection::function>, "Unsupported function string."},
        {"compute_unit", required, read_to<&Connection::compute_unit>, "Unsupported compute_unit value."},
        {"shared_with", optional, read_to<&Connection::shared_with>, "Unsupported shared_with string."},
        {"port_tag", required, read_to<&Connection::port_tag>, "Unsupported port_tag string."},
    };
    Connection connection;
    if (!read_attributes(*this, elem, rows, connection) || !check_references(elem, connection))
        return false;
    m_config->addConnection(connection.moduleinst, connection.function, connection.compute_unit,
                            connection.port_tag, connection.shared_with);
    return true;
}

} // namespace zan::profiler::xml
