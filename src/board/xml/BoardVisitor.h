// The outermost visitor of a board description, which hands each section to a visitor of its own.
#pragma once

#include "BaseVisitor.h"
#include "BoardSpec.h"

namespace zan::board::xml {

using zan::xml::BaseVisitor;
using zan::xml::VisitorCallbacks;
using zan::xml::XMLAttribute;
using zan::xml::XMLDocument;
using zan::xml::XMLElement;

// Walks a document. The root is `board`; the order of what stands in it is free. `spec` isn't owned and must
// not be null.
class BoardVisitor : public BaseVisitor {
  public:
    BoardVisitor(BoardSpec* spec, VisitorCallbacks* callbacks, bool debug, bool skip_global_mem_checks);

    using BaseVisitor::VisitEnter;
    using BaseVisitor::VisitExit;
    bool VisitEnter(const XMLElement& elem, const XMLAttribute* first_attribute) override;
    // The checks that take the whole document. Their messages have no line.
    bool VisitExit(const XMLDocument& doc) override;

  private:
    struct Board;
    enum class Occurrence { once, any };

    bool visit_board_elem(const XMLElement& elem);
    bool check_version(const XMLElement& elem, const Board& board);
    template <typename SectionVisitor, Occurrence occurrence>
    bool visit_section(const XMLElement& elem);
    bool check_sections();
    bool check_global_mems();
    bool complete_compile_configs();

    BoardSpec* m_spec;
    bool m_skip_global_mem_checks;
};

// What the visitors of the sections share. Each walks one section, which is the outermost element of its
// walk.
class BoardSectionVisitor : public BaseVisitor {
  protected:
    // Neither may be null; `spec` isn't owned.
    BoardSectionVisitor(BaseVisitor* parent, BoardSpec* spec);

    // Reports the first of the attributes that the element lacks.
    bool require_attributes(const XMLElement& elem, std::initializer_list<const char*> names);
    // Reads an interface, which belongs to the caller; null after an error.
    std::unique_ptr<Interface> read_interface(const XMLElement& elem);

    BoardSpec* m_spec;
};

} // namespace zan::board::xml
