// SPDX-License-Identifier: Apache-2.0
// The visitor of how a board's host configures kernels.
#pragma once

#include "BoardSectionVisitor.h"

namespace zan::board::xml {

// For the arguments see BoardSectionVisitor.
class HostVisitor : public BoardSectionVisitor {
  public:
    HostVisitor(BaseVisitor* parent, BoardSpec* spec);

  private:
    static Rows elements();
    bool visit_host_elem(const XMLElement& elem);
    bool leave_host_elem(const XMLElement& elem);
    bool visit_kernel_config_elem(const XMLElement& elem);
};

} // namespace zan::board::xml
