// SPDX-License-Identifier: Apache-2.0
#include "BoardPortVisitor.h"

#include <memory>

#include "BaseAttributeTable.h"
#include "contract.h"

namespace zan::board::xml {

using zan::xml::anywhere;
using zan::xml::AttributeRow;
using zan::xml::booleans_or_digits;
using zan::xml::call;
using zan::xml::descend;
using zan::xml::outermost;
using zan::xml::read_attributes;
using zan::xml::read_to;
using zan::xml::read_word;
using zan::xml::skip;
using zan::xml::Word;
using enum zan::xml::AttributeNeed;
using enum zan::xml::Occurrence;

namespace {

constexpr Word<Port::Direction> directions[] = {
    {"rw", Port::ReadWrite},
    {"r", Port::Read},
    {"w", Port::Write},
};

} // namespace

PortVisitor::PortVisitor(BaseVisitor* parent, Interface* intf)
    : TableVisitor(elements(), parent), m_intf(intf) {
    ZAN_CONTRACT(intf != nullptr, "intf != __null");
}

PortVisitor::Rows PortVisitor::elements() {
    static constexpr ElementRow rows[] = {
        {"interface", anywhere, any, descend},
        {"port", "interface", any, call<&PortVisitor::visit_port_elem>},
        {"attribute", anywhere, any, skip},
    };
    return rows;
}

bool PortVisitor::check_attribute_width(const XMLElement& elem, const Port& port) {
    return !port.get_hazard_free_attributes() ||
           report_attr_error(
               elem, "attribute_width",
               "Cannot specify additional attributes without specifying hazard_free_attributes=false");
}

bool PortVisitor::visit_port_elem(const XMLElement& elem) {
    static constexpr AttributeRow<PortVisitor, Port> rows[] = {
        {"name", required, read_to<&Port::set_name>},
        {"direction", required, read_word<directions, &Port::set_direction>,
         "Unrecognized direction in interface port '{}'."},
        {"hazard_free_attributes", optional, read_word<booleans_or_digits, &Port::set_hazard_free_attributes>,
         "hazard_free_attributes should be a boolean (true or false)."},
        {"attribute_width", optional, read_to<&Port::set_attribute_width>, nullptr,
         &PortVisitor::check_attribute_width},
    };
    auto port = std::make_unique<Port>();
    if (!read_attributes(*this, elem, rows, *port))
        return false;
    // The port joins the interface last, so one with a fault is never counted among the interface's ports.
    AttributeVisitor child(this, port.get());
    hand_over(elem, &child);
    if (m_has_error)
        return false;
    m_intf->add_port(port.release());
    return true;
}

AttributeVisitor::AttributeVisitor(BaseVisitor* parent, Port* port)
    : TableVisitor(elements(), parent), m_port(port) {
    ZAN_CONTRACT(port != nullptr, "port != __null");
}

AttributeVisitor::Rows AttributeVisitor::elements() {
    static constexpr ElementRow rows[] = {
        {"port", outermost, any, descend},
        {"attribute", "port", any, call<&AttributeVisitor::visit_attribute_elem>},
    };
    return rows;
}

bool AttributeVisitor::visit_attribute_elem(const XMLElement& elem) {
    struct Attribute {
        std::string name;
        unsigned int encoding = 0;
    };
    static constexpr AttributeRow<AttributeVisitor, Attribute> rows[] = {
        {"name", required, read_to<&Attribute::name>},
        {"encoding", required, read_to<&Attribute::encoding>},
    };
    Attribute attribute;
    if (!read_attributes(*this, elem, rows, attribute))
        return false;
    // An encoding that is too large fails the load without a message, unlike any other fault.
    m_has_error |= !m_port->set_attribute(attribute.name, attribute.encoding);
    return !m_has_error;
}

} // namespace zan::board::xml
