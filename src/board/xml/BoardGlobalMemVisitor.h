// SPDX-License-Identifier: Apache-2.0
// The visitor of a board's global memory.
#pragma once

#include "BoardSectionVisitor.h"

namespace zan::board::xml {

// For the arguments see BoardSectionVisitor.
class GlobalMemVisitor : public BoardSectionVisitor {
  public:
    GlobalMemVisitor(BaseVisitor* parent, BoardSpec* spec);

  private:
    static Rows elements();
    bool visit_global_mem_elem(const XMLElement& elem);
    bool leave_global_mem_elem(const XMLElement& elem);
    bool visit_interface_elem(const XMLElement& elem);
    bool add_memory(const XMLElement& elem);
    bool check_names(const XMLElement& elem);

    GlobalMemConfig* m_gmem = nullptr; // the one that is being read; the board owns it
};

} // namespace zan::board::xml
