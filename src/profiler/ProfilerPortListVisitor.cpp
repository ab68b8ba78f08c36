// SPDX-License-Identifier: Apache-2.0
#include "ProfilerPortListVisitor.h"

#include <fmt/core.h>

#include "BaseAttributeTable.h"

namespace zan::profiler::xml {

using zan::xml::AttributeRow;
using zan::xml::call;
using zan::xml::descend;
using zan::xml::read_attributes;
using zan::xml::read_to;
using enum zan::xml::AttributeNeed;
using enum zan::xml::Occurrence;

ProfilerPortListVisitor::ProfilerPortListVisitor(ProfilerConfig* config, BaseVisitor* parent)
    : ProfilerListVisitor(elements(), config, parent) {
}

ProfilerPortListVisitor::Rows ProfilerPortListVisitor::elements() {
    using Self = ProfilerPortListVisitor;
    static constexpr ElementRow rows[] = {
        {"PORT_LIST", outermost, once, descend},
        {"PORT", "PORT_LIST", any, call<&Self::visit_port>},
    };
    return rows;
}

bool ProfilerPortListVisitor::visit_port(const XMLElement& elem) {
    struct Port {
        std::string_view cntl_name;
        std::string_view incr_name;
        std::string_view tag;
        std::string_view desc;
        std::string_view module;
        unsigned int flag = 0;
    };
    static constexpr AttributeRow<ProfilerPortListVisitor, Port> rows[] = {
        // No element has an attribute "cntl", so the message has the element's line.
        {"cntl_name", required, read_to<&Port::cntl_name>, "Unsupported cntl_name string.", nullptr, "cntl"},
        {"incr_name", required, read_to<&Port::incr_name>, "Unsupported incr_name string."},
        {"tag", required, read_to<&Port::tag>, "Unsupported tag string."},
        {"desc", required, read_to<&Port::desc>, "Unsupported desc string."},
        {"module", required, read_to<&Port::module>, "Unsupported module string."},
        {"flag", required, read_to<&Port::flag>, "Unsupported flag string."},
    };
    Port port;
    if (!read_attributes(*this, elem, rows, port))
        return false;
    if (m_config->getPortWithTag(port.tag))
        return report_error(fmt::format("Port tag \"{}\" is not unique.", port.tag));
    if (!m_config->getModuleWithName(port.module))
        return report_error(fmt::format("Module \"{}\" does not exist in Port \"({},{})\".", port.module,
                                        port.cntl_name, port.incr_name));
    m_config->addPort(port.cntl_name, port.incr_name, port.tag, port.desc, port.module, port.flag);
    return true;
}

} // namespace zan::profiler::xml
