// SPDX-License-Identifier: Apache-2.0
// The host and where it configures kernels.
#include "board_document.h"

namespace zan::test {
namespace {

INSTANTIATE_TEST_SUITE_P(
    Host, BoardFault,
    testing::Values(
        FaultCase{"StrayAttribute",
                  [](D& d) { d.host = "<host x=''/>"; },
                  {at_line(5, "Unexpected attribute 'x'.")}},
        FaultCase{"HostInHost",
                  [](D& d) { d.host = "<host><host/></host>"; },
                  {at_line(5, "Unexpected element 'host'.")}},
        FaultCase{"StrayElement",
                  [](D& d) { d.host = "<host><x/></host>"; },
                  {at_line(5, "Unexpected element 'x'.")}},
        FaultCase{"NoConfig",
                  [](D& d) { d.host = "<host/>"; },
                  {without_line("Missing kernel configuration (<kernel_config>) in host specification "
                                "(<host>).")}},
        FaultCase{"ConfigTwice",
                  [](D& d) {
                      d.host =
                          "<host><kernel_config start='0' size='1'/>\n<kernel_config start='0' "
                          "size='1'/></host>";
                  },
                  {at_line(6, "Expected element <kernel_config> to appear exactly once.")}},
        FaultCase{"NoStart",
                  [](D& d) { d.host = "<host><kernel_config size='1'/></host>"; },
                  {at_line(5, "Expected attribute 'start' on element 'kernel_config'.")}},
        FaultCase{"StartIsNoNumber",
                  [](D& d) { d.host = "<host><kernel_config\nstart='x' size='1'/></host>"; },
                  {at_line(6, "Incorrect type for attribute 'start' on element 'kernel_config'.")}},
        FaultCase{"NoSize",
                  [](D& d) { d.host = "<host><kernel_config start='1'/></host>"; },
                  {at_line(5, "Expected attribute 'size' on element 'kernel_config'.")}},
        FaultCase{"SizeIsNoNumber",
                  [](D& d) { d.host = "<host><kernel_config start='1' size=''/></host>"; },
                  {at_line(5, "Incorrect type for attribute 'size' on element 'kernel_config'.")}},
        FaultCase{"SizeIsZero",
                  [](D& d) { d.host = "<host><kernel_config start='1'\nsize='0'/></host>"; },
                  {at_line(6, "Kernel configuration size expected to be > 0.")}},
        FaultCase{"ConfigWithStrayAttribute",
                  [](D& d) { d.host = "<host><kernel_config start='1' size='1' x=''/></host>"; },
                  {at_line(5, "Unexpected attribute 'x'.")}}),
    name_of);

TEST(BoardHost, AddressesMayBeHexadecimalOrDecimal) {
    BoardDocument document;
    document.host = "<host><kernel_config start='4096' size='010'/></host>";
    const auto spec = load_good(document);
    EXPECT_EQ(spec->get_host_config().get_start(), 0x1000u);
    EXPECT_EQ(spec->get_host_config().get_kernel_config_size(), 8u); // octal
}

} // namespace
} // namespace zan::test
