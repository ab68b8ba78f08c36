// SPDX-License-Identifier: Apache-2.0
#include "BoardSectionVisitor.h"

#include "BoardInterfaceVisitor.h"
#include "contract.h"

namespace zan::board::xml {

BoardSectionVisitor::BoardSectionVisitor(Rows rows, BaseVisitor* parent, BoardSpec* spec)
    : TableVisitor(rows, parent), m_spec(spec) {
    ZAN_CONTRACT(spec != nullptr, "spec != __null");
}

bool BoardSectionVisitor::require_attributes(const XMLElement& elem,
                                             std::initializer_list<const char*> names) {
    for (const char* name : names) {
        if (!attribute_exists(elem, name))
            return report_missing_attr(elem, name, "");
    }
    return true;
}

// After an error the child keeps its interface and deletes it.
std::unique_ptr<Interface> BoardSectionVisitor::read_interface(const XMLElement& elem) {
    InterfaceVisitor child(this);
    hand_over(elem, &child);
    return std::unique_ptr<Interface>(m_has_error ? nullptr : child.release_intf());
}

} // namespace zan::board::xml
