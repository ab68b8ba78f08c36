// SPDX-License-Identifier: Apache-2.0
// The text of each record, byte for byte.
#include <gtest/gtest.h>

#include <ios>
#include <memory>
#include <sstream>

#include "whole_document.h"

namespace zan::test {
namespace {

using namespace profiler;

template <class Record>
std::string printed(const Record& record) {
    std::ostringstream by_operator;
    EXPECT_EQ(&(by_operator << record), &by_operator) << "the stream is given back";
    std::ostringstream by_function;
    record.print(by_function);
    EXPECT_EQ(by_function.str(), by_operator.str());
    return by_operator.str();
}

// A function "f", a module "m" of it, its port "t" and its instance "i".
class Print : public testing::Test {
  protected:
    Print() {
        config.addFunction("f", 2, "f.cl", 7, "of", "uf");
        config.addModule("m", "f", true);
        config.addPort("c", "n", "t", "d", "m", 3);
        config.addModuleInst("i", "f", "m", "a;b", true, false);
    }

    ProfilerConfigFunction& function() { return *config.getFunction(0); }
    ProfilerConfigModule& module() { return *config.getModule(0); }
    ProfilerConfigPort& port() { return *config.getPort(0); }
    ProfilerConfigModuleInst& inst() { return *config.getModuleInst(0); }

    ProfilerConfig config;
};

TEST_F(Print, Port) {
    EXPECT_EQ(printed(port()),
              R"(        <PORT cntl_name="c" incr_name="n" tag="t" desc="d" module="m" flag="3"/>)");
}

TEST_F(Print, PortWithoutAModule) {
    config.addPort("", "", "", "", "nowhere", 4294967295u);
    EXPECT_EQ(printed(*config.getPort(1)),
              R"(        <PORT cntl_name="" incr_name="" tag="" desc="" module="null" flag="4294967295"/>)");
}

TEST_F(Print, Signal) {
    inst().addSignal("sc", "sn", &port());
    EXPECT_EQ(printed(*inst().getSignal(0)), R"(<SIGNAL cntl_name="sc" incr_name="sn" port_tag="t"/>)");
}

TEST_F(Print, SignalWithoutAPort) {
    inst().addSignal("sc", "", nullptr);
    EXPECT_EQ(printed(*inst().getSignal(0)), R"(<SIGNAL cntl_name="sc" incr_name="" port_tag="null"/>)");
}

TEST_F(Print, Debug) {
    EXPECT_EQ(printed(*inst().addDebug("d.cl", 5, 6)),
              "          <DEBUG file=\"d.cl\" line=\"5\" column=\"6\">\n"
              "          </DEBUG>");
}

TEST_F(Print, DebugWithCallSites) {
    const auto loaded_config =
        config_of(WholeDocument().adding("DEBUG", "<CALLSITE file='e.cl' line='0' column='4294967295'/>"));
    EXPECT_EQ(printed(*loaded_config->getModuleInst(0)->getDebug(0)),
              "          <DEBUG file=\"d.cl\" line=\"51\" column=\"52\">\n"
              "            <CALLSITE file=\"c.cl\" line=\"61\" column=\"62\"/>\n"
              "            <CALLSITE file=\"e.cl\" line=\"0\" column=\"4294967295\"/>\n"
              "          </DEBUG>");
}

TEST_F(Print, InstanceWithoutRecords) {
    EXPECT_EQ(printed(inst()),
              "        <MODULEINST name=\"i\" function=\"f\" module=\"m\" attribute=\"a;b\" isAutorun=\"1\" "
              "sharedOn=\"0\">\n"
              "        </MODULEINST>");
}

TEST_F(Print, InstanceWithoutReferences) {
    EXPECT_EQ(printed(*config.addModuleInst("j", "", "", "", false, true)),
              "        <MODULEINST name=\"j\" function=\"null\" module=\"null\" attribute=\"\" "
              "isAutorun=\"0\" sharedOn=\"1\">\n"
              "        </MODULEINST>");
}

TEST_F(Print, InstanceHasDebugsBeforeSignalsAndTheseAreNotIndented) {
    inst().addSignal("s1", "", &port());
    inst().addDebug("a.cl", 1, 2);
    inst().addSignal("s2", "", nullptr);
    inst().addDebug("b.cl", 3, 4);
    EXPECT_EQ(printed(inst()),
              "        <MODULEINST name=\"i\" function=\"f\" module=\"m\" attribute=\"a;b\" isAutorun=\"1\" "
              "sharedOn=\"0\">\n"
              "          <DEBUG file=\"a.cl\" line=\"1\" column=\"2\">\n"
              "          </DEBUG>\n"
              "          <DEBUG file=\"b.cl\" line=\"3\" column=\"4\">\n"
              "          </DEBUG>\n"
              "<SIGNAL cntl_name=\"s1\" incr_name=\"\" port_tag=\"t\"/>\n"
              "<SIGNAL cntl_name=\"s2\" incr_name=\"\" port_tag=\"null\"/>\n"
              "        </MODULEINST>");
}

// Both tags are the port's: what it shares doesn't show.
TEST_F(Print, ConnectionOfTheConfig) {
    config.addPort("c2", "n2", "t2", "", "m", 0);
    EXPECT_EQ(
        printed(*config.addConnection("i", "f", 1, "t", "t2")),
        R"(        <CONNECTION moduleinst="i" function="f" compute_unit="1" shared_with="t" port_tag="t"/>)");
    EXPECT_EQ(
        printed(*config.addConnection("i", "f", 0, "t", "")),
        R"(        <CONNECTION moduleinst="i" function="f" compute_unit="0" shared_with="t" port_tag="t"/>)");
}

TEST_F(Print, ConnectionOfKnownRecords) {
    EXPECT_EQ(
        printed(
            *config.addConnection(&inst(), config.getFunction(0), 1, config.getPort(0), config.getPort(0))),
        R"(        <CONNECTION moduleinst="i" function="f" compute_unit="1" shared_with="t" port_tag="t"/>)");
    EXPECT_EQ(config.getNumConnections(), 1u);
    EXPECT_EQ(config.getConnection(0)->getSharedPort(), config.getPort(0));
}

TEST_F(Print, ConnectionWithoutReferences) {
    EXPECT_EQ(
        printed(*config.addConnection("x", "x", 4294967295u, "x", "t")),
        R"(        <CONNECTION moduleinst="null" compute_unit="4294967295" shared_with="" port_tag=""/>)");
}

TEST_F(Print, ConnectionOfAFunctionHasItsIdAndTheTextOfItsTagTwice) {
    const std::unique_ptr<ProfilerConfigConnection> connection(
        function().addConnection(&inst(), 7, 1, "tag", "shared"));
    EXPECT_EQ(
        printed(*connection),
        R"(        <CONNECTION moduleinst="i" id="7" compute_unit="1" shared_with="tag" port_tag="tag"/>)");
}

TEST_F(Print, ConnectionsIdIsLeftOutOnlyIfItIsMinusOne) {
    const std::pair<int, std::string> rows[] = {
        {-1, ""}, {0, R"( id="0")"}, {-2, R"( id="-2")"}, {2147483647, R"( id="2147483647")"}};
    for (const auto& [id, text] : rows) {
        const std::unique_ptr<ProfilerConfigConnection> connection(
            function().addConnection(nullptr, id, 0, "p", ""));
        EXPECT_EQ(printed(*connection), R"(        <CONNECTION moduleinst="null")" + text +
                                            R"( compute_unit="0" shared_with="p" port_tag="p"/>)");
    }
}

TEST_F(Print, ModuleWithoutPortsOfItsOwn) {
    EXPECT_EQ(printed(module()),
              "    <MODULE name=\"m\" function=\"f\">\n"
              "      <PORT_LIST>\n"
              "      </PORT_LIST>\n"
              "    </MODULE>");
}

TEST_F(Print, ModuleWithoutAFunctionShowsAnEmptyText) {
    config.addModule("m2", "", false);
    EXPECT_EQ(printed(*config.getModule(1)),
              "    <MODULE name=\"m2\" function=\"\">\n"
              "      <PORT_LIST>\n"
              "      </PORT_LIST>\n"
              "    </MODULE>");
}

TEST_F(Print, ModuleWithPorts) {
    const std::unique_ptr<ProfilerConfigPort> first(module().addPortToModule("c1", "n1", "t1", "d1", 1));
    const std::unique_ptr<ProfilerConfigPort> second(module().addPortToModule("c2", "n2", "t2", "d2", 2));
    EXPECT_EQ(
        printed(module()),
        "    <MODULE name=\"m\" function=\"f\">\n"
        "      <PORT_LIST>\n"
        "        <PORT cntl_name=\"c1\" incr_name=\"n1\" tag=\"t1\" desc=\"d1\" module=\"m\" flag=\"1\"/>\n"
        "        <PORT cntl_name=\"c2\" incr_name=\"n2\" tag=\"t2\" desc=\"d2\" module=\"m\" flag=\"2\"/>\n"
        "      </PORT_LIST>\n"
        "    </MODULE>");
}

TEST_F(Print, FunctionWithoutRecordsOfItsOwn) {
    EXPECT_EQ(printed(function()),
              "    <FUNCTION name=\"f\" num_compute_units=\"2\" filename=\"f.cl\" linenum=\"7\" "
              "original_name=\"of\" user_friendly_name=\"uf\">\n"
              "      <MODULEINST_LIST>\n"
              "      </MODULEINST_LIST>\n"
              "      <CONNECTION_LIST>\n"
              "      </CONNECTION_LIST>\n"
              "    </FUNCTION>");
}

TEST_F(Print, FunctionWithRecords) {
    const std::unique_ptr<ProfilerConfigModuleInst> own(function().addModuleInst("o", "m", "", false, false));
    const std::unique_ptr<ProfilerConfigModuleInst> other(
        function().addModuleInst("p", "x", "", false, false));
    const std::unique_ptr<ProfilerConfigConnection> connection(
        function().addConnection(own.get(), 4, 1, "t", ""));
    EXPECT_EQ(printed(function()),
              "    <FUNCTION name=\"f\" num_compute_units=\"2\" filename=\"f.cl\" linenum=\"7\" "
              "original_name=\"of\" user_friendly_name=\"uf\">\n"
              "      <MODULEINST_LIST>\n"
              "        <MODULEINST name=\"o\" function=\"f\" module=\"m\" attribute=\"\" isAutorun=\"0\" "
              "sharedOn=\"0\">\n"
              "        </MODULEINST>\n"
              "        <MODULEINST name=\"p\" function=\"f\" module=\"null\" attribute=\"\" isAutorun=\"0\" "
              "sharedOn=\"0\">\n"
              "        </MODULEINST>\n"
              "      </MODULEINST_LIST>\n"
              "      <CONNECTION_LIST>\n"
              "        <CONNECTION moduleinst=\"o\" id=\"4\" compute_unit=\"1\" shared_with=\"t\" "
              "port_tag=\"t\"/>\n"
              "      </CONNECTION_LIST>\n"
              "    </FUNCTION>");
}

TEST_F(Print, EmptyConfig) {
    EXPECT_EQ(printed(ProfilerConfig()),
              "<?xml version=\"1.0\"?>\n"
              "<PROFILER>\n"
              "  <MODULE_LIST>\n"
              "  </MODULE_LIST>\n"
              "  <FUNCTION_LIST>\n"
              "  </FUNCTION_LIST>\n"
              "</PROFILER>");
}

// Ports, instances and connections of the config itself are not shown; modules come before functions.
TEST_F(Print, LoadedConfigShowsModulesAndFunctionsOnly) {
    EXPECT_EQ(printed(*config_of(WholeDocument())),
              "<?xml version=\"1.0\"?>\n"
              "<PROFILER>\n"
              "  <MODULE_LIST>\n"
              "    <MODULE name=\"m\" function=\"f\">\n"
              "      <PORT_LIST>\n"
              "      </PORT_LIST>\n"
              "    </MODULE>\n"
              "  </MODULE_LIST>\n"
              "  <FUNCTION_LIST>\n"
              "    <FUNCTION name=\"f\" num_compute_units=\"2\" filename=\"f.cl\" linenum=\"7\" "
              "original_name=\"of\" user_friendly_name=\"uf\">\n"
              "      <MODULEINST_LIST>\n"
              "      </MODULEINST_LIST>\n"
              "      <CONNECTION_LIST>\n"
              "      </CONNECTION_LIST>\n"
              "    </FUNCTION>\n"
              "  </FUNCTION_LIST>\n"
              "</PROFILER>");
}

TEST_F(Print, ConfigShowsEveryFunctionOfOneName) {
    ProfilerConfig twice;
    twice.addFunction("g", 1, "a", 0, "", "");
    twice.addFunction("g", 2, "b", 0, "", "");
    const std::string text = printed(twice);
    const size_t first = text.find("num_compute_units=\"1\" filename=\"a\"");
    const size_t second = text.find("num_compute_units=\"2\" filename=\"b\"");
    ASSERT_NE(first, std::string::npos);
    ASSERT_NE(second, std::string::npos);
    EXPECT_LT(first, second);
}

TEST_F(Print, NothingIsEscaped) {
    config.addModule("<\"&'>\n", "", false);
    EXPECT_EQ(printed(*config.getModule(1)),
              "    <MODULE name=\"<\"&'>\n\" function=\"\">\n"
              "      <PORT_LIST>\n"
              "      </PORT_LIST>\n"
              "    </MODULE>");
}

TEST_F(Print, TruthsAreDigitsWhateverTheStreamMakesOfThem) {
    std::ostringstream os;
    os << std::boolalpha << inst();
    EXPECT_EQ(os.str(),
              "        <MODULEINST name=\"i\" function=\"f\" module=\"m\" attribute=\"a;b\" isAutorun=\"1\" "
              "sharedOn=\"0\">\n"
              "        </MODULEINST>");
}

TEST_F(Print, NumbersAreDecimalWhateverTheStreamMakesOfThem) {
    ProfilerConfig other;
    other.addPort("", "", "t", "", "", 255);
    std::ostringstream os;
    os << std::hex << std::showbase << *other.getPort(0);
    EXPECT_EQ(os.str(),
              "        <PORT cntl_name=\"\" incr_name=\"\" tag=\"t\" desc=\"\" module=\"null\" "
              "flag=\"255\"/>");
}

} // namespace
} // namespace zan::test
