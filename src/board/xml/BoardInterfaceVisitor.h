// The visitors of an interface, wherever in a board description it stands.
#pragma once

#include <memory>

#include "BaseVisitor.h"
#include "BoardInterface.h"

namespace zan::board::xml {

using zan::xml::BaseVisitor;
using zan::xml::XMLAttribute;
using zan::xml::XMLElement;

// Builds one interface. The place where it stands takes it, and has demands of its own on it.
class InterfaceVisitor : public BaseVisitor {
  public:
    explicit InterfaceVisitor(BaseVisitor* parent) : BaseVisitor(parent) {}

    using BaseVisitor::VisitEnter;
    using BaseVisitor::VisitExit;
    bool VisitEnter(const XMLElement& elem, const XMLAttribute* first_attribute) override;
    // What the attributes must hold together. It runs for each port child and once more for the interface,
    // even behind an error.
    bool VisitExit(const XMLElement& elem) override;

    // The interface belongs to the caller from then on.
    Interface* release_intf() { return m_intf.release(); }

  private:
    struct Row;
    template <typename Value, auto setter>
    bool read_value(const XMLElement& elem, const Row& row);
    template <typename Value, auto setter>
    bool read_positive(const XMLElement& elem, const Row& row);
    template <const auto& words, auto setter>
    bool read_word(const XMLElement& elem, const Row& row);

    bool visit_lmn_interface_elem(const XMLElement& elem);
    bool read_ports(const XMLElement& elem, const Row& row);

    std::unique_ptr<Interface> m_intf; // until it is released
};

// Adds the ports that stand in an interface's element to `intf`, which isn't owned and must not be null.
class PortVisitor : public BaseVisitor {
  public:
    PortVisitor(BaseVisitor* parent, Interface* intf);

    using BaseVisitor::VisitEnter;
    bool VisitEnter(const XMLElement& elem, const XMLAttribute* first_attribute) override;

  private:
    struct PortValues;

    bool visit_interface(const XMLElement& elem);
    bool visit_port_elem(const XMLElement& elem);
    bool pass_over(const XMLElement& elem);
    bool check_direction(const XMLElement& elem, const PortValues& values);
    bool check_hazard_free(const XMLElement& elem, const PortValues& values);
    bool check_attribute_width(const XMLElement& elem, const PortValues& values);

    Interface* m_intf;
};

// Adds the attributes that stand in a port's element to `port`, which isn't owned and must not be null.
class AttributeVisitor : public BaseVisitor {
  public:
    AttributeVisitor(BaseVisitor* parent, Port* port);

    using BaseVisitor::VisitEnter;
    bool VisitEnter(const XMLElement& elem, const XMLAttribute* first_attribute) override;

  private:
    bool visit_attribute_elem(const XMLElement& elem);

    Port* m_port;
};

} // namespace zan::board::xml
