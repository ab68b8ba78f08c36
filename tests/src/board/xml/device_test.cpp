// SPDX-License-Identifier: Apache-2.0
// The device and the resources that the board's own logic takes.
#include "board_document.h"
#include "contract_death.h"

namespace zan::test {
namespace {

// Resources around one that is given.
std::string resources(const std::string& content) {
    return "<device device_model='d'><used_resources>\n" + content + "\n</used_resources>\n</device>";
}

INSTANTIATE_TEST_SUITE_P(
    Device, BoardFault,
    testing::Values(
        FaultCase{"NoModel",
                  [](D& d) { d.device = "<device/>"; },
                  {at_line(2, "Expected attribute 'device_model' on element 'device'.")}},
        FaultCase{"StrayAttribute",
                  [](D& d) { d.device = "<device device_model='' x=''/>"; },
                  {at_line(2, "Unexpected attribute 'x'.")}},
        FaultCase{"DeviceInDevice",
                  [](D& d) { d.device = "<device device_model=''><device/></device>"; },
                  {at_line(2, "Unexpected element 'device'.")}},
        FaultCase{"StrayElement",
                  [](D& d) { d.device = "<device device_model=''>\n<ffs num='1'/></device>"; },
                  {at_line(3, "Unexpected element 'ffs'.")}},
        FaultCase{"NoResources",
                  [](D& d) { d.device = "<device device_model=''></device>"; },
                  {at_line(2, "Used device resources (<used_resources>) must be defined.")}},
        FaultCase{"ResourcesTwice",
                  [](D& d) {
                      d.device = resources("<les num='1'/><ffs num='1'/><dsps num='1'/><rams num='1'/>");
                      d.device.replace(d.device.find("</device>"), 9, "<used_resources/></device>");
                  },
                  {at_line(5, "Expected element <used_resources> to appear exactly once.")}},
        FaultCase{"ResourcesWithAttribute",
                  [](D& d) { d.device = "<device device_model=''><used_resources x=''/></device>"; },
                  {at_line(2, "Unexpected attribute 'x'.")}},
        FaultCase{"NoFfs",
                  [](D& d) { d.device = resources("<les num='1'/><dsps num='1'/><rams num='1'/>"); },
                  {at_line(2, "Expected element <used_resources> to appear exactly once.")}},
        FaultCase{"NoDsps",
                  [](D& d) { d.device = resources("<les num='1'/><ffs num='1'/><rams num='1'/>"); },
                  {at_line(2, "Expected element <used_resources> to appear exactly once.")}},
        FaultCase{"NoRams",
                  [](D& d) { d.device = resources("<les num='1'/><ffs num='1'/><dsps num='1'/>"); },
                  {at_line(2, "Expected element <used_resources> to appear exactly once.")}},
        FaultCase{"NeitherLesNorLcells",
                  [](D& d) { d.device = resources("<ffs num='1'/><dsps num='1'/><rams num='1'/>"); },
                  {at_line(2, "Expected element <used_resources> to appear exactly once.")}},
        FaultCase{"FfsTwice",
                  [](D& d) { d.device = resources("<ffs num='1'/>\n<ffs num='1'/>"); },
                  {at_line(4, "Expected element <ffs> to appear exactly once.")}},
        FaultCase{"UnknownResource",
                  [](D& d) { d.device = resources("<lrams num='1'/>"); },
                  {at_line(3, "Unexpected element 'lrams'.")}},
        FaultCase{"NoNum",
                  [](D& d) { d.device = resources("<les/>"); },
                  {at_line(3, "Expected attribute 'num' on element 'les'.")}},
        FaultCase{"NumIsHex",
                  [](D& d) { d.device = resources("<les\nnum='0x1'/>"); },
                  {at_line(4, "Incorrect type for attribute 'num' on element 'les'.")}},
        FaultCase{"NumWithStrayAttribute",
                  [](D& d) { d.device = resources("<les num='1' x=''/>"); },
                  {at_line(3, "Unexpected attribute 'x'.")}},
        FaultCase{"ElementInAResource",
                  [](D& d) { d.device = resources("<les num='1'><ffs num='1'/></les>"); },
                  {at_line(3, "Unexpected element 'ffs'.")}}),
    name_of);

TEST(BoardDevice, ALogicCellCountsTwice) {
    BoardDocument document;
    document.device = resources("<lcells num='100'/><ffs num='1'/><dsps num='2'/><rams num='3'/>");
    EXPECT_EQ(load_good(document)->get_device_config().get_used_resources().les, 200u);
}

TEST(BoardDeviceDeathTest, BothLesAndLcellsStopTheProcess) {
    BoardDocument document;
    document.device =
        resources("<les num='1'/><lcells num='1'/><ffs num='1'/><dsps num='2'/><rams num='3'/>");
    EXPECT_CONTRACT(load(document), "m_elem_stack.back() == elem.Value()");
}

} // namespace
} // namespace zan::test
