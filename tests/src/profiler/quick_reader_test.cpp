// SPDX-License-Identifier: Apache-2.0
// What is read without a document is what the visitors read. Descriptions of other forms, and those with a
// fault, are left to them.
#include "ProfilerQuickReader.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "ProfilerConfigXml.h"

namespace zan::test {
namespace {

using profiler::ProfilerConfig;
using profiler::ProfilerConfigXmlLoader;
using profiler::xml::read_quickly;

const std::string usual_text = R"(<?xml version="1.0"?>
<PROFILER>
  <FUNCTION_LIST>
    <FUNCTION name="f" num_compute_units="2" filename="a.cl" line_number="7" original_name="o" user_friendly_name="u"/>
    <FUNCTION name="g" num_compute_units="1" filename=""/>
  </FUNCTION_LIST>
  <MODULE_LIST>
    <MODULE name="m" function="f" isKernelWrapper="true"></MODULE>
    <MODULE name="n" function="" isKernelWrapper="false"/>
  </MODULE_LIST>
  <PORT_LIST>
    <PORT cntl_name="c" incr_name="i" tag="t" desc="it's" module="m" flag="0"/>
    <PORT cntl_name="" incr_name="" tag="s" desc="" module="m" flag="12"/>
  </PORT_LIST>
  <MODULEINST_LIST>
    <MODULEINST name="x" function="f" module="m" attribute="a;b" isAutorun="false" sharedOn="maybe">
      <DEBUG file="b.cl" line="3" column="4"><CALLSITE file="c.cl" line="5" column="6"/></DEBUG>
      <DEBUG file="d.cl" line="8" column="9"/>
      <SIGNAL cntl_name="k" incr_name="" port_tag="s"/>
    </MODULEINST>
    <MODULEINST name="x" function="g" module="n" attribute="" isAutorun="true" sharedOn="false"/>
  </MODULEINST_LIST>
  <CONNECTION_LIST>
    <CONNECTION moduleinst="x" function="f" compute_unit="1" shared_with="s" port_tag="t"/>
    <CONNECTION moduleinst="x" function="f" compute_unit="0" port_tag="s"/>
  </CONNECTION_LIST>
</PROFILER>
)";

// The text with the first place of `what` replaced, which must be there.
std::string changed(const std::string& what, const std::string& replacement) {
    std::string text = usual_text;
    const std::size_t place = text.find(what);
    EXPECT_NE(place, std::string::npos) << what;
    return text.replace(place, what.size(), replacement);
}

template <class Record>
std::string name_or_none(const Record* record) {
    return record ? record->getName() : "none";
}

// Everything that the model knows, as text.
std::string all_of(const ProfilerConfig& config) {
    std::ostringstream out;
    for (unsigned i = 0; i < config.getNumFunctions(); ++i) {
        const auto& function = *config.getFunction(i);
        out << function.getName() << '|' << function.getNumComputeUnits() << '|' << function.getFilename()
            << '|' << function.getLinenum() << '|' << function.getOriginalName() << '|'
            << function.getUserFriendlyName() << '\n';
    }
    for (unsigned i = 0; i < config.getNumModules(); ++i) {
        const auto& module = *config.getModule(i);
        out << module.getName() << '|' << name_or_none(module.getFunction()) << '|'
            << module.getIsKernelWrapper() << '\n';
    }
    for (unsigned i = 0; i < config.getNumPorts(); ++i)
        out << *config.getPort(i) << config.getPort(i)->getDesc() << '\n';
    for (unsigned i = 0; i < config.getNumModuleInsts(); ++i)
        out << *config.getModuleInst(i) << config.getModuleInst(i)->getSharedOn() << '\n';
    for (unsigned i = 0; i < config.getNumConnections(); ++i) {
        const auto& connection = *config.getConnection(i);
        out << connection << name_or_none(connection.getFunction()) << '|'
            << name_or_none(connection.getModuleInst()) << '|'
            << (connection.getSharedPort() ? connection.getSharedPort()->getTag() : "none") << '\n';
    }
    return out.str();
}

// The model that the visitors make, or null.
std::unique_ptr<ProfilerConfig> read_by_visitors(const std::string& text) {
    ProfilerConfigXmlLoader loader(false);
    return std::unique_ptr<ProfilerConfig>(loader.load_profiler_config(loader.parse_xml(text.c_str())));
}

// The text is read quickly only if the visitors read it, and as they do. Returns whether it was.
bool is_read_alike(const std::string& text) {
    const auto quick = read_quickly(text.c_str());
    if (!quick)
        return false;
    const auto config = read_by_visitors(text);
    EXPECT_TRUE(config) << text;
    if (config) {
        EXPECT_EQ(all_of(*quick), all_of(*config)) << text;
    }
    return true;
}

TEST(ProfilerQuickReader, ReadsTheUsualForm) {
    EXPECT_TRUE(is_read_alike(usual_text));
    EXPECT_TRUE(is_read_alike("<PROFILER></PROFILER>"));
    EXPECT_TRUE(is_read_alike("<PROFILER><PORT_LIST/></PROFILER>\n"));
    EXPECT_TRUE(
        is_read_alike(changed("name=\"f\" num_compute_units=\"2\"", "\n num_compute_units='2'\tname='f'")));
    EXPECT_TRUE(is_read_alike(changed(" shared_with=\"s\"", "")));
    EXPECT_TRUE(is_read_alike(changed("desc=\"it's\"", "desc='say \"it\"'")));
}

TEST(ProfilerQuickReader, WhatItReadsIsThere) {
    const auto config = read_quickly(usual_text.c_str());
    ASSERT_TRUE(config);
    ASSERT_EQ(config->getNumFunctions(), 2u);
    EXPECT_EQ(config->getFunction(0)->getNumComputeUnits(), 2u);
    EXPECT_EQ(config->getFunction(0)->getUserFriendlyName(), "u");
    EXPECT_EQ(config->getFunction(1)->getLinenum(), 0u);
    EXPECT_EQ(config->getPort(0)->getDesc(), "it's");
    const auto* inst = config->getModuleInst(0);
    ASSERT_EQ(inst->getNumDebugs(), 2u);
    ASSERT_EQ(inst->getDebug(0)->getNumCallsiteFiles(), 1u);
    EXPECT_EQ(inst->getDebug(0)->getCallsiteLine(0), 5u);
    EXPECT_FALSE(inst->getIsAutorun());
    EXPECT_TRUE(inst->getSharedOn()); // any text but "false"
    EXPECT_EQ(inst->getSignal(0)->getPort(), config->getPort(1));
    EXPECT_EQ(config->getConnection(0)->getSharedPort(), config->getPort(1));
    EXPECT_EQ(config->getConnection(1)->getSharedPort(), nullptr);
    EXPECT_EQ(config->getConnection(1)->getModuleInst(), inst);
}

// The visitors have a message for each of these.
TEST(ProfilerQuickReader, GivesUpAtAFault) {
    const std::vector<std::pair<std::string, std::string>> faults = {
        {"<FUNCTION name=\"g\"", "<FUNCTION name=\"f\""},
        {"num_compute_units=\"2\"", "num_compute_units=\"0\""},
        {"num_compute_units=\"2\"", "num_compute_units=\"x\""},
        {"line_number=\"7\"", "line_number=\"\""},
        {" filename=\"a.cl\"", ""},
        {"name=\"n\" function=\"\"", "name=\"m\" function=\"\""},
        {"name=\"m\" function=\"f\"", "name=\"m\" function=\"h\""},
        {"isKernelWrapper=\"true\"", "isKernelWrapper=\"yes\""},
        {"tag=\"s\" desc", "tag=\"t\" desc"},
        {"module=\"m\" flag=\"0\"", "module=\"z\" flag=\"0\""},
        {"flag=\"0\"", "flag=\"-1\""},
        {"name=\"x\" function=\"g\"", "name=\"x\" function=\"f\""},
        {"function=\"g\" module=\"n\"", "function=\"h\" module=\"n\""},
        {"function=\"g\" module=\"n\"", "function=\"g\" module=\"z\""},
        {" sharedOn=\"false\"", ""},
        {"file=\"b.cl\"", "file=\"\""},
        {"file=\"c.cl\"", "file=\"\""},
        {"line=\"3\"", "line=\"x\""},
        {"column=\"6\"", "column=\"\""},
        {"cntl_name=\"k\"", "cntl_name=\"\""},
        {"port_tag=\"s\"/>\n    </MODULEINST>", "port_tag=\"z\"/>\n    </MODULEINST>"},
        {"moduleinst=\"x\"", "moduleinst=\"y\""},
        {"moduleinst=\"x\" function=\"f\"",
         "moduleinst=\"x\" function=\"g\""}, // another module than the port's
        {"compute_unit=\"1\"", "compute_unit=\"2\""},
        {"shared_with=\"s\"", "shared_with=\"\""},
        {"port_tag=\"t\"", "port_tag=\"z\""},
        {" port_tag=\"t\"", ""},
        {"attribute=\"a;b\"", "attribute=\"a;b\" other=\"\""},
        {"<PORT_LIST>", "<PORT_LIST/><PORT_LIST>"},
        {"</CONNECTION_LIST>", ""},
        {"<SIGNAL", "<CALLSITE"},
        {"<CALLSITE", "<DEBUG"},
        {"</PROFILER>", "</PROFILER><"},
    };
    for (const auto& [what, replacement] : faults) {
        const std::string text = changed(what, replacement);
        EXPECT_FALSE(read_quickly(text.c_str())) << replacement;
        EXPECT_FALSE(read_by_visitors(text)) << replacement;
    }
}

// The visitors read these, some with other values than their text.
TEST(ProfilerQuickReader, LeavesOtherFormsToTheVisitors) {
    const std::vector<std::pair<std::string, std::string>> forms = {
        {"<PORT_LIST>", "<!-- ports --><PORT_LIST>"},
        {"<PORT_LIST>", "text<PORT_LIST>"},
        {"desc=\"it's\"", "desc=\"&lt;\""},
        {"desc=\"it's\"", "desc=\"a\nb\""},
        {"desc=\"it's\"", "desc=\"<\""},
        {"desc=\"it's\"", "desc = \"it\""},
        {"line=\"3\"", "line=\"4294967299\""},
        {"<PROFILER>", "<PROFILER version=\"1\">"},
        {"<PORT_LIST>", "<PORT_LIST size=\"2\">"},
        {"</PORT_LIST>", "</PORT_LIST >"},
    };
    for (const auto& [what, replacement] : forms) {
        const std::string text = changed(what, replacement);
        EXPECT_FALSE(read_quickly(text.c_str())) << replacement;
        EXPECT_TRUE(read_by_visitors(text)) << replacement;
    }
}

// Each character in turn is left out, doubled, or replaced.
TEST(ProfilerQuickReader, NeverReadsWhatTheVisitorsReadOtherwise) {
    const std::string characters = "<>/=\"'&!?- \n\r\tx1_";
    int num_read = 0;
    for (std::size_t i = 0; i < usual_text.size(); ++i) {
        std::string text = usual_text;
        num_read += is_read_alike(text.erase(i, 1)) ? 1 : 0;
        text = usual_text;
        num_read += is_read_alike(text.insert(i, 1, usual_text[i])) ? 1 : 0;
        for (const char character : characters) {
            text = usual_text;
            text[i] = character;
            num_read += is_read_alike(text) ? 1 : 0;
        }
    }
    EXPECT_GT(num_read, 1000); // such as other names that nothing refers to
}

// Each line in turn is left out, doubled, or exchanged with the next one; and the text ends anywhere.
TEST(ProfilerQuickReader, NeverReadsOtherLinesThanTheVisitors) {
    std::vector<std::string> lines;
    std::istringstream in(usual_text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line + "\n");
    const auto joined = [](const std::vector<std::string>& parts) {
        std::string text;
        for (const std::string& part : parts)
            text += part;
        return text;
    };
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const auto at = static_cast<std::ptrdiff_t>(i);
        auto other = lines;
        other.erase(other.begin() + at);
        is_read_alike(joined(other));
        other = lines;
        other.insert(other.begin() + at, lines[i]);
        is_read_alike(joined(other));
        if (i + 1 < lines.size()) {
            other = lines;
            std::swap(other[i], other[i + 1]);
            is_read_alike(joined(other));
        }
    }
    for (std::size_t size = 0; size + 1 < usual_text.size(); ++size)
        EXPECT_FALSE(read_quickly(usual_text.substr(0, size).c_str())) << size;
}

} // namespace
} // namespace zan::test
