// SPDX-License-Identifier: Apache-2.0
// The outermost visitor of a board description, which hands each section to a visitor of its own.
#pragma once

#include "BoardSpec.h"
#include "TableVisitor.h"

namespace zan::board::xml {

using zan::xml::ElementRow;
using zan::xml::TableVisitor;
using zan::xml::VisitorCallbacks;
using zan::xml::XMLDocument;
using zan::xml::XMLElement;

// Walks a document. The root is `board`; the order of what stands in it is free. `spec` isn't owned and must
// not be null.
class BoardVisitor : public TableVisitor {
  public:
    BoardVisitor(BoardSpec* spec, VisitorCallbacks* callbacks, bool debug, bool skip_global_mem_checks);

    using TableVisitor::VisitExit;
    // The checks that need the whole document. Their messages have no line.
    bool VisitExit(const XMLDocument& doc) override;

  private:
    struct Board;

    static Rows elements();
    bool visit_board_elem(const XMLElement& elem);
    bool check_version(const XMLElement& elem, const Board& board);
    template <typename SectionVisitor>
    bool visit_section(const XMLElement& elem);
    bool check_sections();
    bool check_global_mems();
    bool complete_compile_configs();

    BoardSpec* m_spec;
    bool m_skip_global_mem_checks;
};

} // namespace zan::board::xml
