// SPDX-License-Identifier: Apache-2.0
// The base of the visitors of a board's sections.
#pragma once

#include <initializer_list>
#include <memory>

#include "BoardSpec.h"
#include "TableVisitor.h"

namespace zan::board::xml {

using zan::xml::BaseVisitor;
using zan::xml::ElementRow;
using zan::xml::TableVisitor;
using zan::xml::XMLAttribute;
using zan::xml::XMLElement;

// Walks one section, which is the outermost element of its walk, and adds what it holds to the board.
class BoardSectionVisitor : public TableVisitor {
  protected:
    // Neither `parent` nor `spec` may be null; `spec` isn't owned.
    BoardSectionVisitor(Rows rows, BaseVisitor* parent, BoardSpec* spec);

    // Reports the first of the attributes that the element lacks.
    bool require_attributes(const XMLElement& elem, std::initializer_list<const char*> names);
    // Reads an interface, which belongs to the caller; null after an error.
    std::unique_ptr<Interface> read_interface(const XMLElement& elem);

    BoardSpec* m_spec;
};

} // namespace zan::board::xml
