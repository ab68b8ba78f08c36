// SPDX-License-Identifier: Apache-2.0
// The visitors of an interface's ports and of their attributes.
#pragma once

#include "BoardInterface.h"
#include "TableVisitor.h"

namespace zan::board::xml {

using zan::xml::BaseVisitor;
using zan::xml::ElementRow;
using zan::xml::TableVisitor;
using zan::xml::XMLElement;

// Adds the ports that stand in an interface's element to `intf`, which isn't owned and must not be null.
class PortVisitor : public TableVisitor {
  public:
    PortVisitor(BaseVisitor* parent, Interface* intf);

  private:
    static Rows elements();
    bool visit_port_elem(const XMLElement& elem);
    bool check_attribute_width(const XMLElement& elem, const Port& port);

    Interface* m_intf;
};

// Adds the attributes that stand in a port's element to `port`, which isn't owned and must not be null.
class AttributeVisitor : public TableVisitor {
  public:
    AttributeVisitor(BaseVisitor* parent, Port* port);

  private:
    static Rows elements();
    bool visit_attribute_elem(const XMLElement& elem);

    Port* m_port;
};

} // namespace zan::board::xml
