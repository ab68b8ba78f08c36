// Ports that stand in an interface's element, and their attributes.
#include <fmt/format.h>

#include <algorithm>

#include "BaseAttributeTable.h"
#include "BoardInterfaceVisitor.h"
#include "contract.h"

namespace zan::board::xml {

using zan::xml::AttributeRow;
using zan::xml::check_attributes;
using zan::xml::read_attributes;
using enum zan::xml::AttributeNeed;

namespace {

struct DirectionWord {
    std::string_view text;
    Port::Direction direction;
};
constexpr DirectionWord directions[] = {{"rw", Port::ReadWrite}, {"r", Port::Read}, {"w", Port::Write}};

const DirectionWord* find_direction(std::string_view text) {
    const auto* found = std::find_if(std::begin(directions), std::end(directions),
                                     [&](const DirectionWord& word) { return word.text == text; });
    return found == std::end(directions) ? nullptr : found;
}

bool is_true(const std::string& text) {
    return text == "true" || text == "1";
}

bool is_false(const std::string& text) {
    return text == "false" || text == "0";
}

} // namespace

struct PortVisitor::PortValues {
    std::string name;
    std::string direction;
    std::string hazard_free = "true";
    unsigned int attribute_width = 0;
};

PortVisitor::PortVisitor(BaseVisitor* parent, Interface* intf) : BaseVisitor(parent), m_intf(intf) {
    ZAN_CONTRACT(intf != nullptr, "intf != __null");
}

bool PortVisitor::VisitEnter(const XMLElement& elem, const XMLAttribute* first_attribute) {
    static constexpr ElementHandler<PortVisitor> handlers[] = {
        {"interface", &PortVisitor::visit_interface},
        {"port", &PortVisitor::visit_port_elem},
        {"attribute", &PortVisitor::pass_over},
    };
    BaseVisitor::VisitEnter(elem, first_attribute);
    return visit_by_name(this, elem, handlers);
}

bool PortVisitor::visit_interface(const XMLElement&) {
    return true;
}

// What has been read already.
bool PortVisitor::pass_over(const XMLElement&) {
    return false;
}

bool PortVisitor::check_direction(const XMLElement& elem, const PortValues& values) {
    return find_direction(values.direction) ||
           report_attr_error(elem, "direction",
                             fmt::format("Unrecognized direction in interface port '{}'.", values.direction));
}

bool PortVisitor::check_hazard_free(const XMLElement& elem, const PortValues& values) {
    return is_true(values.hazard_free) || is_false(values.hazard_free) ||
           report_attr_error(elem, "hazard_free_attributes",
                             "hazard_free_attributes should be a boolean (true or false).");
}

bool PortVisitor::check_attribute_width(const XMLElement& elem, const PortValues& values) {
    return is_false(values.hazard_free) ||
           report_attr_error(
               elem, "attribute_width",
               "Cannot specify additional attributes without specifying hazard_free_attributes=false");
}

bool PortVisitor::visit_port_elem(const XMLElement& elem) {
    using Self = PortVisitor;
    static constexpr AttributeRow<Self, PortValues> rows[] = {
        {"name", &PortValues::name, required},
        {"direction", &PortValues::direction, required, nullptr, &Self::check_direction},
        {"hazard_free_attributes", &PortValues::hazard_free, optional, nullptr, &Self::check_hazard_free},
        {"attribute_width", &PortValues::attribute_width, optional, nullptr, &Self::check_attribute_width},
    };
    PortValues values;
    if (!report_unexpected_elem_stack(elem, 1, "interface") || !check_attributes(*this, elem, rows) ||
        !read_attributes(*this, elem, rows, values))
        return !m_has_error;
    auto port = std::make_unique<Port>();
    port->set_name(values.name);
    port->set_direction(find_direction(values.direction)->direction);
    port->set_hazard_free_attributes(is_true(values.hazard_free));
    port->set_attribute_width(values.attribute_width);
    AttributeVisitor child(this, port.get());
    hand_over(elem, &child);
    if (!m_has_error)
        m_intf->add_port(port.release());
    return !m_has_error;
}

AttributeVisitor::AttributeVisitor(BaseVisitor* parent, Port* port) : BaseVisitor(parent), m_port(port) {
    ZAN_CONTRACT(port != nullptr, "port != __null");
}

bool AttributeVisitor::VisitEnter(const XMLElement& elem, const XMLAttribute* first_attribute) {
    static constexpr ElementHandler<AttributeVisitor> handlers[] = {
        {"attribute", &AttributeVisitor::visit_attribute_elem},
    };
    BaseVisitor::VisitEnter(elem, first_attribute);
    const bool is_outermost = m_elem_stack.size() == 1;
    return (is_outermost && std::string_view(elem.Value()) == "port") || visit_by_name(this, elem, handlers);
}

bool AttributeVisitor::visit_attribute_elem(const XMLElement& elem) {
    struct Values {
        std::string name;
        unsigned int encoding = 0;
    };
    static constexpr AttributeRow<AttributeVisitor, Values> rows[] = {
        {"name", &Values::name, required},
        {"encoding", &Values::encoding, required},
    };
    Values values;
    if (!report_unexpected_elem_stack(elem, 1, "port") || !check_attributes(*this, elem, rows) ||
        !read_attributes(*this, elem, rows, values))
        return !m_has_error;
    // An encoding that is too large fails the load without a word.
    m_has_error |= !m_port->set_attribute(values.name, values.encoding);
    return !m_has_error;
}

} // namespace zan::board::xml
