// The document, its simple sections, and the checks that take all of it.
#include <limits>

#include "board_document.h"
#include "contract_death.h"

namespace zan::test {
namespace {

using board::BoardSpec;
using board::CompileConfig;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

TEST_P(BoardFault, GivesExactlyTheseErrorsAndNoBoard) {
    BoardDocument document;
    GetParam().change(document);
    const LoadedBoard loaded = load(document);
    EXPECT_THAT(loaded.errors, ElementsAreArray(GetParam().errors));
    EXPECT_FALSE(loaded.model);
}

using D = BoardDocument;

INSTANTIATE_TEST_SUITE_P(
    Board, BoardFault,
    testing::Values(
        FaultCase{"NoVersion",
                  [](D& d) { d.board = "<board name='b'>"; },
                  {at_line(1, "Expected attribute 'version' on element 'board'.")}},
        FaultCase{"NoName",
                  [](D& d) { d.board = "<board version='14.1'>"; },
                  {at_line(1, "Expected attribute 'name' on element 'board'.")}},
        FaultCase{"StrayAttribute",
                  [](D& d) { d.board = "<board version='14.1' name='b' x='' y=''>"; },
                  {at_line(1, "Unexpected attribute 'x'."), at_line(1, "Unexpected attribute 'y'.")}},
        FaultCase{"StrayElement", [](D& d) { d.host += "\n<x/>"; }, {at_line(6, "Unexpected element 'x'.")}},
        FaultCase{"BoardInBoard",
                  [](D& d) { d.host += "<board version='14.1' name='b'/>"; },
                  {at_line(5, "Unexpected element 'board'.")}}),
    name_of);

INSTANTIATE_TEST_SUITE_P(
    MissingSection, BoardFault,
    testing::Values(
        FaultCase{"Device",
                  [](D& d) { d.device = ""; },
                  {without_line("Missing device configuration (<device>) in board specification.")}},
        FaultCase{"AllOfThem",
                  [](D& d) { d.device = d.memory = d.host = d.interfaces = d.compile = ""; },
                  {without_line("Missing device configuration (<device>) in board specification.")}},
        FaultCase{
            "GlobalMem",
            [](D& d) { d.memory = d.host = d.interfaces = d.compile = ""; },
            {without_line("Missing global memory configuration (<global_mem>) in board specification.")}},
        FaultCase{"Host",
                  [](D& d) { d.host = d.interfaces = d.compile = ""; },
                  {without_line("Missing host configuration (<host>) in board specification.")}},
        FaultCase{"Interfaces",
                  [](D& d) { d.interfaces = d.compile = ""; },
                  {without_line("Missing interface configuration (<interfaces>) in board specification.")}},
        FaultCase{"Compile",
                  [](D& d) { d.compile = ""; },
                  {without_line("Missing compile configuration (<compile>) in board specification.")}}),
    name_of);

INSTANTIATE_TEST_SUITE_P(
    SecondSection, BoardFault,
    testing::Values(FaultCase{"Device",
                              [](D& d) { d.device += d.device; },
                              {at_line(2, "Expected element <device> to appear exactly once.")}},
                    FaultCase{"Host",
                              [](D& d) { d.host += d.host; },
                              {at_line(5, "Expected element <host> to appear exactly once.")}},
                    FaultCase{"Channels",
                              [](D& d) { d.channels += d.channels; },
                              {at_line(6, "Expected element <channels> to appear exactly once.")}},
                    FaultCase{"Interfaces",
                              [](D& d) { d.interfaces += d.interfaces; },
                              {at_line(7, "Expected element <interfaces> to appear exactly once.")}}),
    name_of);

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

// A channel with these attributes in place of, or beside, the good ones.
std::string channel(const std::string& attributes) {
    return "<interface name='n' port='p' type='streamsource' width='8' " + attributes + "/>";
}

INSTANTIATE_TEST_SUITE_P(
    Channels, BoardFault,
    testing::Values(
        FaultCase{"StrayAttribute",
                  [](D& d) { d.channels = "<channels x=''/>"; },
                  {at_line(6, "Unexpected attribute 'x'.")}},
        FaultCase{"ChannelsInChannels",
                  [](D& d) { d.channels = "<channels><channels/></channels>"; },
                  {at_line(6, "Unexpected element 'channels'.")}},
        FaultCase{"StrayElement",
                  [](D& d) { d.channels = "<channels><x/></channels>"; },
                  {at_line(6, "Unexpected element 'x'.")}},
        FaultCase{"NoName",
                  [](D& d) {
                      d.channels = "<channels><interface port='' type='' width='' chan_id=''/></channels>";
                  },
                  {at_line(6, "Expected attribute 'name' on element 'interface'.")}},
        FaultCase{"NoPort",
                  [](D& d) {
                      d.channels = "<channels><interface name='' type='' width='' chan_id=''/></channels>";
                  },
                  {at_line(6, "Expected attribute 'port' on element 'interface'.")}},
        FaultCase{"NoType",
                  [](D& d) {
                      d.channels = "<channels><interface name='' port='' width='' chan_id=''/></channels>";
                  },
                  {at_line(6, "Expected attribute 'type' on element 'interface'.")}},
        FaultCase{
            "NoWidth",
            [](D& d) { d.channels = "<channels><interface name='' port='' type='' chan_id=''/></channels>"; },
            {at_line(6, "Expected attribute 'width' on element 'interface'.")}},
        FaultCase{"NoId",
                  [](D& d) { d.channels = "<channels>" + channel("") + "</channels>"; },
                  {at_line(6, "Expected attribute 'chan_id' on element 'interface'.")}},
        FaultCase{"NoneAtAll",
                  [](D& d) { d.channels = "<channels><interface/></channels>"; },
                  {at_line(6, "Expected attribute 'name' on element 'interface'.")}},
        FaultCase{"NoStream",
                  [](D& d) {
                      d.channels =
                          "<channels>\n<interface name='n' port='p' type='agent' width='8' "
                          "chan_id='c'/></channels>";
                  },
                  {at_line(7, "Channel interface must be a stream.")}},
        FaultCase{"EmptyId",
                  [](D& d) { d.channels = "<channels>\n" + channel("chan_id=''") + "</channels>"; },
                  {at_line(6, "Empty channel ID name.")}},
        FaultCase{"OneIdTwice",
                  [](D& d) {
                      d.channels = "<channels>" + channel("chan_id='a'") + channel("chan_id='b'") +
                                   channel("chan_id='a'") + "</channels>";
                  },
                  {at_line(6, "Two or more channels share the same channel ID.")}},
        // Channels name their port in the attribute.
        FaultCase{"PortElement",
                  [](D& d) {
                      d.channels =
                          "<channels><interface name='n' port='p' type='streamsource' width='8' "
                          "chan_id='c'>\n<port name='x' direction='r'/></interface></channels>";
                  },
                  {at_line(7, "Unexpected element 'port'.")}}),
    name_of);

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

TEST(BoardDocument, AGoodOneGivesAllOfItsSections) {
    const auto spec = load_good({});
    EXPECT_EQ(spec->get_version(), BoardSpec::Version(14.1f));
    EXPECT_EQ(spec->get_name(), "b");
    EXPECT_EQ(spec->get_device_config().get_device_model(), "d.xml");
    const auto& resources = spec->get_device_config().get_used_resources();
    EXPECT_EQ(resources.les, 10u);
    EXPECT_EQ(resources.ffs, 20u);
    EXPECT_EQ(resources.dsps, 30u);
    EXPECT_EQ(resources.rams, 40u);
    EXPECT_EQ(resources.lrams, 0u);
    EXPECT_EQ(spec->get_host_config().get_start(), 16u);
    EXPECT_EQ(spec->get_host_config().get_kernel_config_size(), 32u);
    EXPECT_EQ(spec->get_channel_config().get_num_intfs(), 0u);
    EXPECT_EQ(spec->get_interface_config().get_num_intfs(), 0u);
    const auto& clk_reset = spec->get_interface_config().get_kernel_clk_reset();
    EXPECT_EQ(clk_reset.get_clk(), "c");
    EXPECT_EQ(clk_reset.get_clk2x(), "");
    EXPECT_EQ(clk_reset.get_reset(), "r");
    EXPECT_EQ(spec->get_num_global_mem_definitions(), 1u);
    EXPECT_EQ(spec->num_compile_configs(), 1u);
}

TEST(BoardDocument, SectionsMayComeInAnyOrder) {
    const BoardDocument d;
    const std::string text = d.board + d.interfaces + d.memory + d.host + d.compile + d.device + "</board>";
    EXPECT_TRUE(load(text).model);
    EXPECT_FALSE(load(text).model->has_channel_config()); // the one section that may be absent
}

TEST(BoardDocument, Versions) {
    struct VersionCase {
        const char* text;
        float version; // 0 if it is unsupported
    };
    for (const VersionCase& expected : {VersionCase{"14.1", 14.1f},
                                        {"14.1000001", 14.1f},
                                        {"17.1.2", 17.1f},
                                        {"14.1beta", 14.1f},
                                        {"1e3", 1000.0f},
                                        {" 15", 15.0f},
                                        {"inf", std::numeric_limits<float>::infinity()},
                                        {"14.0", 0.0f},
                                        {"14.0999", 0.0f},
                                        {"1.0", 0.0f},
                                        {"0.90001", 0.0f},
                                        {"abc", 0.0f},
                                        {"", 0.0f},
                                        {"-20", 0.0f},
                                        {"nan", 0.0f}}) {
        BoardDocument document;
        document.board = "<board name='b'\nversion='" + std::string(expected.text) + "'>";
        document.compile = whole_compile;
        const LoadedBoard loaded = load(document);
        if (expected.version != 0.0f) {
            EXPECT_THAT(loaded.errors, IsEmpty()) << expected.text;
            ASSERT_TRUE(loaded.model) << expected.text;
            EXPECT_EQ(loaded.model->get_version().value(), expected.version) << expected.text;
        } else {
            EXPECT_THAT(loaded.errors, ElementsAre(at_line(2, "Unsupported version string.")))
                << expected.text;
        }
    }
}

TEST(BoardDocument, TheOldestVersionHasNoCompileConfigurations) {
    BoardDocument document;
    document.board = "<board version='0.9' name='b'>";
    document.compile = "";
    EXPECT_EQ(load_good(document)->get_version(), BoardSpec::Version_0_9);
}

TEST(BoardDocument, AnotherRootIsUnexpectedAndNothingElseIsChecked) {
    EXPECT_THAT(load("<x/>").errors, ElementsAre(at_line(1, "Unexpected element 'x'.")));
    EXPECT_THAT(load("<device device_model=''/>").errors,
                ElementsAre(at_line(1, "Unexpected element 'device'.")));
}

TEST(BoardDocument, ATextWithoutARootMissesItsDevice) {
    EXPECT_THAT(load("<!-- nothing -->").errors,
                ElementsAre(without_line("Missing device configuration (<device>) in board specification.")));
}

TEST(BoardDocument, WhatIsNoXmlIsTheParsersError) {
    const LoadedBoard loaded = load("<board");
    EXPECT_THAT(loaded.errors, ElementsAre(testing::StartsWith("XML error: ")));
    EXPECT_FALSE(loaded.model);
}

TEST(BoardDocument, ALogicCellCountsTwice) {
    BoardDocument document;
    document.device = resources("<lcells num='100'/><ffs num='1'/><dsps num='2'/><rams num='3'/>");
    EXPECT_EQ(load_good(document)->get_device_config().get_used_resources().les, 200u);
}

TEST(BoardDocumentDeathTest, BothLesAndLcellsStopTheProcess) {
    BoardDocument document;
    document.device =
        resources("<les num='1'/><lcells num='1'/><ffs num='1'/><dsps num='2'/><rams num='3'/>");
    EXPECT_CONTRACT(load(document), "m_elem_stack.back() == elem.Value()");
}

TEST(BoardDocument, AddressesMayBeHexadecimalOrDecimal) {
    BoardDocument document;
    document.host = "<host><kernel_config start='4096' size='010'/></host>";
    const auto spec = load_good(document);
    EXPECT_EQ(spec->get_host_config().get_start(), 0x1000u);
    EXPECT_EQ(spec->get_host_config().get_kernel_config_size(), 8u); // octal
}

TEST(BoardDocument, ChannelsStandInTheOrderOfTheFile) {
    BoardDocument document;
    document.channels = "<channels>" + channel("chan_id='b'") + channel("chan_id='a'") + "</channels>";
    const auto spec = load_good(document);
    const auto& channels = spec->get_channel_config();
    ASSERT_EQ(channels.get_num_intfs(), 2u);
    EXPECT_EQ(channels.get_intf(0).get_chan_id(), "b");
    EXPECT_EQ(channels.get_intf(1).get_chan_id(), "a");
    EXPECT_EQ(channels.get_intf(0).get_type(), board::Interface::StreamSource);
}

TEST(BoardDocument, InterfacesAndTheSecondClockAreKept) {
    BoardDocument document;
    document.interfaces =
        "<interfaces><interface name='n' port='p' type='irq'/>"
        "<kernel_clk_reset clk='c' clk2x='d' reset='r'/></interfaces>";
    const auto spec = load_good(document);
    ASSERT_EQ(spec->get_interface_config().get_num_intfs(), 1u);
    EXPECT_EQ(spec->get_interface_config().get_intf(0).get_type(), board::Interface::Irq);
    EXPECT_EQ(spec->get_interface_config().get_kernel_clk_reset().get_clk2x(), "d");
}

TEST(BoardDocument, OnlyACustomBoardMayDoWithoutMemory) {
    BoardDocument document;
    document.board = "<board version='14.1' name='custom_ipa'>";
    document.memory = "";
    EXPECT_FALSE(load_good(document)->has_global_mem_config());
}

TEST(BoardDocument, LoadsFromAFileAndTellsItsName) {
    board::BoardSpecXmlLoader loader(false, false);
    testing::internal::CaptureStdout();
    EXPECT_EQ(loader.load_file("/nonexistent/board.xml"), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "ERROR FOUND: XML_ERROR_FILE_NOT_FOUND\n");
    EXPECT_EQ(loader.get_num_errors(), 1u);
    EXPECT_EQ(loader.load_board_spec(nullptr), nullptr);
}

TEST(BoardDocument, DebugModeTellsTheDocumentAndTheWalk) {
    board::BoardSpecXmlLoader loader(true, false);
    testing::internal::CaptureStderr();
    const std::unique_ptr<BoardSpec> spec(loader.load_xml("<x/>"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "<x/>\n[xml] entering document\n[xml] entering x\n");
}

} // namespace
} // namespace zan::test
