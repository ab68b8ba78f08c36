// SPDX-License-Identifier: Apache-2.0
// The visitor of a board's interfaces that belong to no memory and no channel, and of the kernels' clocks.
#pragma once

#include "BoardSectionVisitor.h"

namespace zan::board::xml {

// For the arguments see BoardSectionVisitor.
class InterfacesVisitor : public BoardSectionVisitor {
  public:
    InterfacesVisitor(BaseVisitor* parent, BoardSpec* spec);

  private:
    static Rows elements();
    bool visit_interfaces_elem(const XMLElement& elem);
    bool leave_interfaces_elem(const XMLElement& elem);
    bool visit_interface_elem(const XMLElement& elem);
    bool visit_kernel_clk_reset_elem(const XMLElement& elem);
};

} // namespace zan::board::xml
