// SPDX-License-Identifier: Apache-2.0
// The document, and the checks that take all of it.
#include <limits>

#include "BoardVisitor.h"
#include "board_document.h"
#include "contract.h"
#include "xml_probe.h"

namespace zan::test {
namespace {

using board::BoardSpec;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

TEST_P(BoardFault, HasExactlyTheseErrorsAndNoBoard) {
    BoardDocument document;
    GetParam().change(document);
    const LoadedBoard loaded = load(document);
    EXPECT_THAT(loaded.errors, ElementsAreArray(GetParam().errors));
    EXPECT_FALSE(loaded.model);
}

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

TEST(BoardDocument, AGoodOneHasAllOfItsSections) {
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

// Reads a document into this board. Returns the contract that breaks, or else the errors.
std::string fault_of_reading_into(board::BoardSpec& spec, const BoardDocument& document) {
    RecordingCallbacks callbacks;
    board::xml::BoardVisitor visitor(&spec, &callbacks, false, false);
    const ThrowBrokenContracts thrown;
    try {
        parsed(document.text())->Accept(&visitor);
    } catch (const BrokenContract& contract) {
        return std::string("contract: ") + contract.text;
    }
    return testing::PrintToString(callbacks.errors);
}

// Only a new board can be read into.
TEST(BoardDocument, ABoardThatHasAPartAlreadyTakesNoOther) {
    struct Row {
        void (*prepare)(board::BoardSpec& spec);
        const char* fault;
    };
    const Row rows[] = {
        {[](board::BoardSpec& spec) { spec.set_device_config(new board::DeviceConfig); },
         "contract: !m_spec->has_device_config()"},
        {[](board::BoardSpec& spec) { spec.set_host_config(new board::HostConfig); },
         "contract: !m_spec->has_host_config()"},
        {[](board::BoardSpec& spec) { spec.set_channel_config(new board::ChannelConfig); },
         "contract: !m_spec->has_channel_config()"},
        {[](board::BoardSpec& spec) { spec.set_interface_config(new board::InterfaceConfig); },
         "contract: !m_spec->has_interface_config()"},
    };
    for (const auto& [prepare, fault] : rows) {
        board::BoardSpec spec;
        prepare(spec);
        EXPECT_EQ(fault_of_reading_into(spec, {}), fault);
    }
}

TEST(BoardDocument, TheOldestVersionTakesNoBoardWithACompileConfiguration) {
    BoardDocument document;
    document.board = "<board version='0.9' name='b'>";
    document.compile = "";
    board::BoardSpec spec;
    spec.add_compile_config(std::make_unique<board::CompileConfig>(), "c");
    const std::vector<std::string> errors = {
        "Error in 'a.xml':\n"
        "Unexpected compile configuration (<compile>) found in 0.9 board specification.\n"};
    EXPECT_EQ(fault_of_reading_into(spec, document), testing::PrintToString(errors));
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

TEST(BoardDocument, OnlyACustomBoardMayDoWithoutMemory) {
    BoardDocument document;
    document.board = "<board version='14.1' name='custom_ipa'>";
    document.memory = "";
    EXPECT_FALSE(load_good(document)->has_global_mem_config());
}

TEST(BoardDocument, LoadsFromAFileAndReportsItsName) {
    board::BoardSpecXmlLoader loader(false, false);
    testing::internal::CaptureStdout();
    EXPECT_EQ(loader.load_file("/nonexistent/board.xml"), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "ERROR FOUND: XML_ERROR_FILE_NOT_FOUND\n");
    EXPECT_EQ(loader.get_num_errors(), 1u);
    EXPECT_EQ(loader.load_board_spec(nullptr), nullptr);
}

TEST(BoardDocument, DebugModePrintsTheDocumentAndTheWalk) {
    board::BoardSpecXmlLoader loader(true, false);
    testing::internal::CaptureStderr();
    const std::unique_ptr<BoardSpec> spec(loader.load_xml("<x/>"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "<x/>\n[xml] entering document\n[xml] entering x\n");
}

} // namespace
} // namespace zan::test
