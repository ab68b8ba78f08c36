// SPDX-License-Identifier: Apache-2.0
// The visitor of an interface, wherever in a board description it stands.
#pragma once

#include <memory>

#include "BoardInterface.h"
#include "TableVisitor.h"

namespace zan::board::xml {

using zan::xml::BaseVisitor;
using zan::xml::ElementRow;
using zan::xml::TableVisitor;
using zan::xml::XMLElement;

// Builds one interface. The visitor of the place where it stands takes it, and has demands of its own on it.
class InterfaceVisitor : public TableVisitor {
  public:
    // `parent` must not be null.
    explicit InterfaceVisitor(BaseVisitor* parent);

    using TableVisitor::VisitExit;
    // Checks what the attributes must hold together, for each <port> in the interface and once more for the
    // interface itself, even after an error.
    bool VisitExit(const XMLElement& elem) override;

    // The interface belongs to the caller from then on.
    Interface* release_intf() { return m_intf.release(); }

  private:
    static Rows elements();
    bool visit_lmn_interface_elem(const XMLElement& elem);
    bool read_ports(const XMLElement& elem);

    std::unique_ptr<Interface> m_intf; // until it is released
};

} // namespace zan::board::xml
