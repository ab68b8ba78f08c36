// SPDX-License-Identifier: Apache-2.0
#include "BoardInterfacesVisitor.h"

#include "BaseAttributeTable.h"
#include "contract.h"

namespace zan::board::xml {

using zan::xml::AttributeRow;
using zan::xml::AttributeState;
using zan::xml::call;
using zan::xml::check_attributes;
using zan::xml::outermost;
using zan::xml::read_rows;
using zan::xml::read_to;
using enum zan::xml::AttributeNeed;
using enum zan::xml::Occurrence;

InterfacesVisitor::InterfacesVisitor(BaseVisitor* parent, BoardSpec* spec)
    : BoardSectionVisitor(elements(), parent, spec) {
}

InterfacesVisitor::Rows InterfacesVisitor::elements() {
    using Self = InterfacesVisitor;
    static constexpr ElementRow rows[] = {
        {"interfaces", outermost, any, call<&Self::visit_interfaces_elem>,
         call<&Self::leave_interfaces_elem>},
        {"interface", "interfaces", any, call<&Self::visit_interface_elem>},
        {"kernel_clk_reset", "interfaces", once, call<&Self::visit_kernel_clk_reset_elem>},
    };
    return rows;
}

bool InterfacesVisitor::visit_interfaces_elem(const XMLElement& elem) {
    if (!expect_no_attributes(elem))
        return false;
    ZAN_CONTRACT(!m_spec->has_interface_config(), "!m_spec->has_interface_config()");
    m_spec->set_interface_config(new InterfaceConfig);
    return true;
}

bool InterfacesVisitor::visit_interface_elem(const XMLElement& elem) {
    auto intf = read_interface(elem);
    if (!intf)
        return false;
    m_spec->get_interface_config().add_interface(intf.release());
    return true;
}

bool InterfacesVisitor::visit_kernel_clk_reset_elem(const XMLElement& elem) {
    static constexpr AttributeRow<InterfacesVisitor, KernelClkReset> rows[] = {
        {"clk", required, read_to<&KernelClkReset::set_clk>},
        {"clk2x", optional, read_to<&KernelClkReset::set_clk2x>},
        {"reset", required, read_to<&KernelClkReset::set_reset>},
    };
    if (!check_attributes(*this, elem, rows))
        return false;
    InterfaceConfig& interfaces = m_spec->get_interface_config();
    ZAN_CONTRACT(!interfaces.has_kernel_clk_reset(), "!interfaces.has_kernel_clk_reset()");
    interfaces.set_kernel_clk_reset(new KernelClkReset);
    return read_rows(*this, elem, rows, interfaces.get_kernel_clk_reset()) == AttributeState::good;
}

// Kernels can't run without a clock, so the signals are required once.
bool InterfacesVisitor::leave_interfaces_elem(const XMLElement&) {
    return m_spec->get_interface_config().has_kernel_clk_reset() ||
           report_error("Missing kernel clock-reset interface (<kernel_clk_reset>).");
}

} // namespace zan::board::xml
