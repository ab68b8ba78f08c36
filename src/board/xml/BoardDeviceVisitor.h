// SPDX-License-Identifier: Apache-2.0
// The visitor of the device on a board and of the resources that the board's own logic takes.
#pragma once

#include "BoardSectionVisitor.h"

namespace zan::board::xml {

// For the arguments see BoardSectionVisitor.
class DeviceVisitor : public BoardSectionVisitor {
  public:
    DeviceVisitor(BaseVisitor* parent, BoardSpec* spec);

  private:
    static Rows elements();
    bool visit_device_elem(const XMLElement& elem);
    bool leave_device_elem(const XMLElement& elem);
    bool visit_used_resources_elem(const XMLElement& elem);
    bool leave_used_resources_elem(const XMLElement& elem);
    bool visit_used_resources_single_elem(const XMLElement& elem);
};

} // namespace zan::board::xml
