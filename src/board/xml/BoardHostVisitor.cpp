// SPDX-License-Identifier: Apache-2.0
#include "BoardHostVisitor.h"

#include "BaseAttributeTable.h"
#include "contract.h"

namespace zan::board::xml {

using zan::xml::AttributeRow;
using zan::xml::call;
using zan::xml::is_positive;
using zan::xml::outermost;
using zan::xml::read_attributes;
using zan::xml::read_if;
using zan::xml::read_to;
using zan::xml::unsigned_hex;
using enum zan::xml::AttributeNeed;
using enum zan::xml::Occurrence;

HostVisitor::HostVisitor(BaseVisitor* parent, BoardSpec* spec)
    : BoardSectionVisitor(elements(), parent, spec) {
}

HostVisitor::Rows HostVisitor::elements() {
    using Self = HostVisitor;
    static constexpr ElementRow rows[] = {
        {"host", outermost, once, call<&Self::visit_host_elem>, call<&Self::leave_host_elem>},
        {"kernel_config", "host", once, call<&Self::visit_kernel_config_elem>},
    };
    return rows;
}

bool HostVisitor::visit_host_elem(const XMLElement& elem) {
    if (!expect_no_attributes(elem))
        return false;
    ZAN_CONTRACT(!m_spec->has_host_config(), "!m_spec->has_host_config()");
    m_spec->set_host_config(new HostConfig);
    return true;
}

bool HostVisitor::visit_kernel_config_elem(const XMLElement& elem) {
    static constexpr AttributeRow<HostVisitor, HostConfig> rows[] = {
        {"start", required, read_to<&HostConfig::set_start, unsigned_hex>},
        {"size", required, read_if<is_positive, &HostConfig::set_kernel_config_size, unsigned_hex>,
         "Kernel configuration size expected to be > 0."},
    };
    return read_attributes(*this, elem, rows, m_spec->get_host_config());
}

// The size is 0 until a configuration was read, and none may have that size.
bool HostVisitor::leave_host_elem(const XMLElement&) {
    return m_spec->get_host_config().get_kernel_config_size() != 0 ||
           report_error("Missing kernel configuration (<kernel_config>) in host specification (<host>).");
}

} // namespace zan::board::xml
