// SPDX-License-Identifier: Apache-2.0
// Interfaces of no memory and no channel, and the kernels' clocks.
#include "board_document.h"

namespace zan::test {
namespace {

INSTANTIATE_TEST_SUITE_P(
    Interfaces, BoardFault,
    testing::Values(
        FaultCase{"StrayAttribute",
                  [](D& d) { d.interfaces = "<interfaces x=''/>"; },
                  {at_line(7, "Unexpected attribute 'x'.")}},
        FaultCase{"InterfacesInInterfaces",
                  [](D& d) { d.interfaces = "<interfaces><interfaces/></interfaces>"; },
                  {at_line(7, "Unexpected element 'interfaces'.")}},
        FaultCase{"StrayElement",
                  [](D& d) { d.interfaces = "<interfaces><x/></interfaces>"; },
                  {at_line(7, "Unexpected element 'x'.")}},
        FaultCase{"PortElement",
                  [](D& d) {
                      d.interfaces =
                          "<interfaces><interface name='n' type='irq'>\n<port name='x' "
                          "direction='r'/></interface></interfaces>";
                  },
                  {at_line(8, "Unexpected element 'port'.")}},
        FaultCase{"NoClockReset",
                  [](D& d) { d.interfaces = "<interfaces>" + interface_with("") + "</interfaces>"; },
                  {without_line("Missing kernel clock-reset interface (<kernel_clk_reset>).")}},
        FaultCase{"ClockResetTwice",
                  [](D& d) {
                      d.interfaces =
                          "<interfaces><kernel_clk_reset clk='' reset=''/>\n<kernel_clk_reset "
                          "clk='' reset=''/></interfaces>";
                  },
                  {at_line(8, "Expected element <kernel_clk_reset> to appear exactly once.")}},
        FaultCase{"NoClk",
                  [](D& d) { d.interfaces = "<interfaces><kernel_clk_reset reset=''/></interfaces>"; },
                  {at_line(7, "Expected attribute 'clk' on element 'kernel_clk_reset'.")}},
        FaultCase{"NoReset",
                  [](D& d) { d.interfaces = "<interfaces><kernel_clk_reset clk=''/></interfaces>"; },
                  {at_line(7, "Expected attribute 'reset' on element 'kernel_clk_reset'.")}},
        FaultCase{
            "ClockResetWithStrayAttribute",
            [](D& d) { d.interfaces = "<interfaces><kernel_clk_reset clk='' reset='' x=''/></interfaces>"; },
            {at_line(7, "Unexpected attribute 'x'.")}}),
    name_of);

TEST(BoardInterfaces, InterfacesAndTheSecondClockAreKept) {
    BoardDocument document;
    document.interfaces =
        "<interfaces><interface name='n' port='p' type='irq'/>"
        "<kernel_clk_reset clk='c' clk2x='d' reset='r'/></interfaces>";
    const auto spec = load_good(document);
    ASSERT_EQ(spec->get_interface_config().get_num_intfs(), 1u);
    EXPECT_EQ(spec->get_interface_config().get_intf(0).get_type(), board::Interface::Irq);
    EXPECT_EQ(spec->get_interface_config().get_kernel_clk_reset().get_clk2x(), "d");
}

} // namespace
} // namespace zan::test
