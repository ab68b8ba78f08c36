// SPDX-License-Identifier: Apache-2.0
#include "xml_faults.h"

#include <gtest/gtest.h>

#include <vector>

#include "ProfilerConfigXml.h"
#include "fault_log.h"

namespace {

using namespace zan::profile;

struct XmlFaults final : FaultReceiver {
    void take(const Fault& fault) override { faults.push_back(logged(fault)); }
    std::vector<LoggedFault> faults;
};

std::vector<LoggedFault> faults_in(const std::string& text) {
    zan::profiler::ProfilerConfigXmlLoader loader(false);
    delete loader.load_xml(text.c_str());
    XmlFaults faults;
    take_xml_errors(loader, text, {.file = "d.zanx", .section = "s"}, faults);
    return faults.faults;
}

TEST(XmlFaults, AGoodTextHasNone) {
    EXPECT_TRUE(faults_in("<PROFILER/>").empty());
}

TEST(XmlFaults, ARuleIsAtTheNameOfItsAttribute) {
    const std::string line = "  <MODULE name='m' odd='1' function='' isKernelWrapper='false'/>";
    const auto faults =
        faults_in("<PROFILER>\r\n<MODULE_LIST>\r\n" + line + "\r\n</MODULE_LIST>\r\n</PROFILER>");
    ASSERT_EQ(faults.size(), 1u);
    EXPECT_EQ(faults[0].kind, FaultKind::xml_rule);
    EXPECT_EQ(faults[0].line, 3u);
    EXPECT_EQ(faults[0].column, line.find("odd") + 1);
    EXPECT_EQ(faults[0].line_text, line) << "without its carriage return";
    EXPECT_EQ(faults[0].message, "Unexpected attribute 'odd'.");
    EXPECT_EQ(place_of(faults[0]), "d.zanx: s:3:" + std::to_string(line.find("odd") + 1));
}

TEST(XmlFaults, EachOfSeveralErrorsIsOne) {
    const auto faults =
        faults_in("<PROFILER><MODULE_LIST>\n<MODULE a='1'\n b='2'/></MODULE_LIST></PROFILER>");
    ASSERT_EQ(faults.size(), 2u);
    EXPECT_EQ(faults[0].line, 2u);
    EXPECT_EQ(faults[0].column, 9u);
    EXPECT_EQ(faults[1].line, 3u);
    EXPECT_EQ(faults[1].column, 2u);
}

TEST(XmlFaults, WhatIsNoXmlHasALine) {
    const auto faults = faults_in("<PROFILER>\n    <A b=></A>\n</PROFILER>");
    ASSERT_EQ(faults.size(), 1u);
    EXPECT_EQ(faults[0].kind, FaultKind::not_xml);
    EXPECT_EQ(faults[0].line, 2u);
    EXPECT_EQ(faults[0].column, 5u) << "the first character that is no blank";
    EXPECT_EQ(faults[0].message, "it is no XML: XMLElement name=A (XML_ERROR_PARSING_ATTRIBUTE)");

    const auto empty = faults_in("");
    ASSERT_EQ(empty.size(), 1u);
    EXPECT_EQ(empty[0].kind, FaultKind::not_xml);
    EXPECT_EQ(empty[0].message, "it is no XML (XML_ERROR_EMPTY_DOCUMENT)");
}

TEST(XmlFaults, ABrokenContractThatIsNotKnownIsShownAsItIs) {
    XmlFaults faults;
    take_broken_contract({"width > 0", "file", 1}, "<a/>", {.file = "d.zanx"}, faults);
    ASSERT_EQ(faults.faults.size(), 1u);
    EXPECT_EQ(faults.faults[0].message, "it breaks a rule: width > 0");
    EXPECT_EQ(faults.faults[0].line, 0u);
    take_broken_contract({"allocation != UndefinedAllocation", "file", 1}, "<a>\n<b allocation_type=''/></a>",
                         {}, faults);
    EXPECT_EQ(faults.faults[1].line, 2u);
    EXPECT_EQ(faults.faults[1].column, 4u);
    EXPECT_EQ(faults.faults[1].message, "the attribute allocation_type is empty");
}

// A section that can't be read again leaves no text.
TEST(XmlFaults, WithoutTheTextTheLineIsAllThatIsKnown) {
    zan::profiler::ProfilerConfigXmlLoader loader(false);
    delete loader.load_xml("<PROFILER>\n<MODULE_LIST>\n<MODULE odd='1'/></MODULE_LIST></PROFILER>");
    for (const char* other_text : {"", "<PROFILER/>"}) {
        XmlFaults faults;
        take_xml_errors(loader, other_text, {}, faults);
        ASSERT_FALSE(faults.faults.empty());
        EXPECT_EQ(faults.faults[0].line, 3u);
        EXPECT_EQ(faults.faults[0].column, 1u);
        EXPECT_EQ(faults.faults[0].line_text, "");
        EXPECT_EQ(faults.faults[0].message, "Unexpected attribute 'odd'.");
    }
}

TEST(XmlFaults, ABrokenContractWithoutItsElementHasNoPlace) {
    XmlFaults faults;
    take_broken_contract({"m_config->has_generate()", "file", 1}, "<a/>", {.file = "d.zanx"}, faults);
    ASSERT_EQ(faults.faults.size(), 1u);
    EXPECT_EQ(faults.faults[0].message, "the element compile holds no generate");
    EXPECT_EQ(faults.faults[0].line, 0u);
    EXPECT_EQ(place_of(faults.faults[0]), "d.zanx");
}

} // namespace
