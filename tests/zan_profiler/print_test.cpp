// The text of a description. What it prints is fixed, oddities included.
#include <gtest/gtest.h>

#include <memory>
#include <sstream>

#include "ProfilerConfig.h"

namespace zan::profiler {
namespace {

template <typename T>
std::string text_of(const T& value) {
    std::ostringstream text;
    text << value;
    return text.str();
}

class ProfilerPrint : public testing::Test {
  protected:
    ProfilerPrint() {
        config.addFunction("f", 2, "f.cl", 7, "o", "u");
        config.addModule("m", "f", true);
        config.addPort("c", "i", "t", "d", "m", 3);
        inst = config.addModuleInst("n", "f", "m", "a;b", true, false);
    }

    ProfilerConfig config;
    ProfilerConfigModuleInst* inst;
};

TEST_F(ProfilerPrint, Port) {
    EXPECT_EQ(text_of(*config.getPort(0)),
              "        <PORT cntl_name=\"c\" incr_name=\"i\" tag=\"t\" desc=\"d\" "
              "module=\"m\" flag=\"3\"/>");
    config.addPort("", "", "u", "", "unknown", 0);
    EXPECT_EQ(text_of(*config.getPort(1)),
              "        <PORT cntl_name=\"\" incr_name=\"\" tag=\"u\" desc=\"\" "
              "module=\"null\" flag=\"0\"/>");
}

TEST_F(ProfilerPrint, NothingIsEscaped) {
    config.addPort("<\"&", "", "u", "", "m", 0);
    EXPECT_EQ(text_of(*config.getPort(1)),
              "        <PORT cntl_name=\"<\"&\" incr_name=\"\" tag=\"u\" desc=\"\" "
              "module=\"m\" flag=\"0\"/>");
}

TEST_F(ProfilerPrint, Signal) {
    inst->addSignal("s", "r", config.getPort(0));
    inst->addSignal("s", "r", nullptr);
    EXPECT_EQ(text_of(*inst->getSignal(0)), "<SIGNAL cntl_name=\"s\" incr_name=\"r\" port_tag=\"t\"/>");
    EXPECT_EQ(text_of(*inst->getSignal(1)), "<SIGNAL cntl_name=\"s\" incr_name=\"r\" port_tag=\"null\"/>");
}

TEST_F(ProfilerPrint, Debug) {
    auto* debug = inst->addDebug("f", 1, 2);
    EXPECT_EQ(text_of(*debug), "          <DEBUG file=\"f\" line=\"1\" column=\"2\">\n          </DEBUG>");
    debug->addCallsite("g", 3, 4);
    EXPECT_EQ(text_of(*debug),
              "          <DEBUG file=\"f\" line=\"1\" column=\"2\">\n"
              "            <CALLSITE file=\"g\" line=\"3\" column=\"4\"/>\n"
              "          </DEBUG>");
}

TEST_F(ProfilerPrint, ModuleInst) {
    const std::string opening =
        "        <MODULEINST name=\"n\" function=\"f\" module=\"m\" attribute=\"a;b\" "
        "isAutorun=\"1\" sharedOn=\"0\">";
    EXPECT_EQ(text_of(*inst), opening + "\n        </MODULEINST>");
    inst->addDebug("g", 1, 2);
    inst->addSignal("s", "r", nullptr);
    EXPECT_EQ(text_of(*inst), opening +
                                  "\n          <DEBUG file=\"g\" line=\"1\" column=\"2\">\n          </DEBUG>"
                                  "\n<SIGNAL cntl_name=\"s\" incr_name=\"r\" port_tag=\"null\"/>"
                                  "\n        </MODULEINST>");
    EXPECT_EQ(
        text_of(*config.addModuleInst("x", "?", "?", "", false, true)),
        "        <MODULEINST name=\"x\" function=\"null\" module=\"null\" attribute=\"\" isAutorun=\"0\" "
        "sharedOn=\"1\">\n        </MODULEINST>");
}

TEST_F(ProfilerPrint, ConnectionOfTheModel) {
    config.addPort("", "", "s", "", "m", 0);
    // In place of the shared port's tag stands the port's own.
    EXPECT_EQ(text_of(*config.addConnection("n", "f", 1, "t", "s")),
              "        <CONNECTION moduleinst=\"n\" function=\"f\" compute_unit=\"1\" shared_with=\"t\" "
              "port_tag=\"t\"/>");
    EXPECT_EQ(text_of(*config.addConnection("?", "?", 0, "?", "")),
              "        <CONNECTION moduleinst=\"null\" compute_unit=\"0\" shared_with=\"\" port_tag=\"\"/>");
}

TEST_F(ProfilerPrint, ConnectionOfAFunction) {
    ProfilerConfigFunction& function = *config.getFunction(0);
    const std::unique_ptr<ProfilerConfigConnection> connection(
        function.addConnection(inst, 5, 1, "port", "shared"));
    EXPECT_EQ(text_of(*connection),
              "        <CONNECTION moduleinst=\"n\" id=\"5\" compute_unit=\"1\" "
              "shared_with=\"port\" port_tag=\"port\"/>");
    const std::unique_ptr<ProfilerConfigConnection> nameless(function.addConnection(nullptr, -1, 0, "p", ""));
    EXPECT_EQ(text_of(*nameless),
              "        <CONNECTION moduleinst=\"null\" compute_unit=\"0\" "
              "shared_with=\"p\" port_tag=\"p\"/>");
}

TEST_F(ProfilerPrint, ModuleWithThePortsItMade) {
    EXPECT_EQ(text_of(*config.getModule(0)),
              "    <MODULE name=\"m\" function=\"f\">\n      <PORT_LIST>\n"
              "      </PORT_LIST>\n    </MODULE>");
    config.addModule("bare", "", false);
    const std::unique_ptr<ProfilerConfigPort> port(config.getModule(1)->addPortToModule("", "", "t", "", 1));
    EXPECT_EQ(text_of(*config.getModule(1)),
              "    <MODULE name=\"bare\" function=\"\">\n      <PORT_LIST>\n"
              "        <PORT cntl_name=\"\" incr_name=\"\" tag=\"t\" desc=\"\" module=\"bare\" flag=\"1\"/>\n"
              "      </PORT_LIST>\n    </MODULE>");
}

TEST_F(ProfilerPrint, FunctionWithWhatItMade) {
    const std::string opening =
        "    <FUNCTION name=\"f\" num_compute_units=\"2\" filename=\"f.cl\" linenum=\"7\" "
        "original_name=\"o\" user_friendly_name=\"u\">\n";
    ProfilerConfigFunction& function = *config.getFunction(0);
    EXPECT_EQ(text_of(function), opening +
                                     "      <MODULEINST_LIST>\n      </MODULEINST_LIST>\n"
                                     "      <CONNECTION_LIST>\n      </CONNECTION_LIST>\n    </FUNCTION>");
    const std::unique_ptr<ProfilerConfigModuleInst> own(function.addModuleInst("i", "m", "", false, false));
    const std::unique_ptr<ProfilerConfigConnection> connection(
        function.addConnection(own.get(), 0, 0, "p", ""));
    EXPECT_EQ(text_of(function),
              opening +
                  "      <MODULEINST_LIST>\n"
                  "        <MODULEINST name=\"i\" function=\"f\" module=\"m\" attribute=\"\" "
                  "isAutorun=\"0\" sharedOn=\"0\">\n        </MODULEINST>\n"
                  "      </MODULEINST_LIST>\n      <CONNECTION_LIST>\n"
                  "        <CONNECTION moduleinst=\"i\" id=\"0\" compute_unit=\"0\" shared_with=\"p\" "
                  "port_tag=\"p\"/>\n      </CONNECTION_LIST>\n    </FUNCTION>");
}

TEST_F(ProfilerPrint, TheModelShowsModulesAndFunctionsAlone) {
    EXPECT_EQ(text_of(ProfilerConfig()),
              "<?xml version=\"1.0\"?>\n<PROFILER>\n  <MODULE_LIST>\n"
              "  </MODULE_LIST>\n  <FUNCTION_LIST>\n  </FUNCTION_LIST>\n</PROFILER>");
    config.addConnection("n", "f", 0, "t", "");
    EXPECT_EQ(text_of(config), "<?xml version=\"1.0\"?>\n<PROFILER>\n  <MODULE_LIST>\n" +
                                   text_of(*config.getModule(0)) + "\n  </MODULE_LIST>\n  <FUNCTION_LIST>\n" +
                                   text_of(*config.getFunction(0)) + "\n  </FUNCTION_LIST>\n</PROFILER>");
}

} // namespace
} // namespace zan::profiler
