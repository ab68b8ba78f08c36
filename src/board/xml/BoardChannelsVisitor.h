// SPDX-License-Identifier: Apache-2.0
// The visitor of a board's channels.
#pragma once

#include "BoardSectionVisitor.h"

namespace zan::board::xml {

// For the arguments see BoardSectionVisitor.
class ChannelsVisitor : public BoardSectionVisitor {
  public:
    ChannelsVisitor(BaseVisitor* parent, BoardSpec* spec);

  private:
    static Rows elements();
    bool visit_channels_elem(const XMLElement& elem);
    bool leave_channels_elem(const XMLElement& elem);
    bool visit_interface_elem(const XMLElement& elem);
};

} // namespace zan::board::xml
