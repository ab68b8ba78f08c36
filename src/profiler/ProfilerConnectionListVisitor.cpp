// SPDX-License-Identifier: Apache-2.0
#include "ProfilerConnectionListVisitor.h"

#include <fmt/core.h>

#include <optional>

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
    std::string_view moduleinst;
    std::string_view function;
    unsigned int compute_unit = 0;
    std::optional<std::string_view> shared_with;
    std::string_view port_tag;
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
bool ProfilerConnectionListVisitor::add_connection(const Connection& connection) {
    const auto& [moduleinst, function, compute_unit, shared_with, port_tag] = connection;
    const auto where = [&] {
        return fmt::format("ModuleInst \"{}\" and function \"{}\".", connection.moduleinst,
                           connection.function);
    };
    ProfilerConfigModuleInst* inst = m_config->getModuleInstWithNameAndFunction(moduleinst, function);
    if (!inst)
        return report_error(fmt::format(
            "ModuleInst \"{}\" does not exist in Function \"{}\" in connection of Port tag \"{}\".",
            moduleinst, function, port_tag));
    ProfilerConfigFunction* f = m_config->getFunctionWithName(function);
    ZAN_CONTRACT(f != nullptr, "f");
    if (compute_unit >= f->getNumComputeUnits())
        return report_error("Compute unit is incorrect in " + where());
    ProfilerConfigPort* port = m_config->getPortWithTag(port_tag);
    if (!port)
        return report_error(fmt::format("Port tag \"{}\" does not exist in {}", port_tag, where()));
    // Here an empty text is a tag like any other, though to the model it means that no port is shared.
    ProfilerConfigPort* shared_port = shared_with ? m_config->getPortWithTag(*shared_with) : nullptr;
    if (shared_with && !shared_port)
        return report_error(
            fmt::format("Shared Port tag \"{}\" does not exist in {}", *shared_with, where()));
    if (port->getModule() != inst->getModule())
        return report_error(
            fmt::format("Port tag \"{}\" and ModuleInst \"{}\" do not match.", port_tag, moduleinst));
    m_config->addConnection(inst, f, compute_unit, port,
                            shared_with && !shared_with->empty() ? shared_port : nullptr);
    return true;
}

bool ProfilerConnectionListVisitor::visit_connection(const XMLElement& elem) {
    static constexpr AttributeRow<ProfilerConnectionListVisitor, Connection> rows[] = {
        {"moduleinst", required, read_to<&Connection::moduleinst>, "Unsupported moduleinst string."},
        {"function", required, read_to<&Connection::function>, "Unsupported function string."},
        {"compute_unit", required, read_to<&Connection::compute_unit>, "Unsupported compute_unit value."},
        {"shared_with", optional, read_to<&Connection::shared_with, std::string_view>,
         "Unsupported shared_with string."},
        {"port_tag", required, read_to<&Connection::port_tag>, "Unsupported port_tag string."},
    };
    Connection connection;
    return read_attributes(*this, elem, rows, connection) && add_connection(connection);
}

} // namespace zan::profiler::xml
