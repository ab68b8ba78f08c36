// SPDX-License-Identifier: Apache-2.0
// What valid documents give: every field of the model.
#include "whole_document.h"

namespace zan::test {
namespace {

using namespace profiler;

// The model of the whole document, field by field.
class WholeModel : public testing::Test {
  protected:
    const ProfilerConfigModuleInst& inst() const { return *config->getModuleInst(0); }

    std::unique_ptr<ProfilerConfig> config = config_of(WholeDocument());
};

TEST_F(WholeModel, HasOneRecordOfEachKind) {
    EXPECT_EQ(config->getNumFunctions(), 1u);
    EXPECT_EQ(config->getNumModules(), 1u);
    EXPECT_EQ(config->getNumPorts(), 1u);
    EXPECT_EQ(config->getNumModuleInsts(), 1u);
    EXPECT_EQ(config->getNumConnections(), 1u);
    EXPECT_EQ(inst().getNumDebugs(), 1u);
    EXPECT_EQ(inst().getNumSignals(), 1u);
    EXPECT_EQ(inst().getDebug(0)->getNumCallsiteFiles(), 1u);
    EXPECT_EQ(inst().getDebug(0)->getNumCallsiteLines(), 1u);
    EXPECT_EQ(inst().getDebug(0)->getNumCallsiteColumns(), 1u);
}

TEST_F(WholeModel, Function) {
    const ProfilerConfigFunction& function = *config->getFunction(0);
    EXPECT_EQ(config->getFunctionWithName("f"), &function);
    EXPECT_EQ(function.getName(), "f");
    EXPECT_EQ(function.getNumComputeUnits(), 2u);
    EXPECT_EQ(function.getFilename(), "f.cl");
    EXPECT_EQ(function.getLinenum(), 7u);
    EXPECT_EQ(function.getOriginalName(), "of");
    EXPECT_EQ(function.getUserFriendlyName(), "uf");
    EXPECT_EQ(function.getNumModuleInsts(), 0u);
    EXPECT_EQ(function.getNumConnections(), 0u);
}

TEST_F(WholeModel, Module) {
    const ProfilerConfigModule& module = *config->getModule(0);
    EXPECT_EQ(config->getModuleWithName("m"), &module);
    EXPECT_EQ(module.getName(), "m");
    EXPECT_EQ(module.getFunction(), config->getFunction(0));
    EXPECT_TRUE(module.getIsKernelWrapper());
    EXPECT_EQ(module.getNumPorts(), 0u);
}

TEST_F(WholeModel, Port) {
    const ProfilerConfigPort& port = *config->getPort(0);
    EXPECT_EQ(config->getPortWithTag("t"), &port);
    EXPECT_EQ(port.getCntlName(), "c");
    EXPECT_EQ(port.getIncrName(), "n");
    EXPECT_EQ(port.getTag(), "t");
    EXPECT_EQ(port.getDesc(), "d");
    EXPECT_EQ(port.getModule(), config->getModule(0));
    EXPECT_EQ(port.getFlag(), 3u);
}

TEST_F(WholeModel, ModuleInst) {
    EXPECT_EQ(config->getModuleInstWithNameAndFunction("i", "f"), &inst());
    EXPECT_EQ(inst().getName(), "i");
    EXPECT_EQ(inst().getFunction(), config->getFunction(0));
    EXPECT_EQ(inst().getModule(), config->getModule(0));
    EXPECT_EQ(inst().getAttribute(), "a");
    EXPECT_TRUE(inst().getIsAutorun());
    EXPECT_FALSE(inst().getSharedOn());
}

TEST_F(WholeModel, DebugWithItsCallSite) {
    const ProfilerConfigDebug& debug = *inst().getDebug(0);
    EXPECT_EQ(debug.getFile(), "d.cl");
    EXPECT_EQ(debug.getLine(), 51u);
    EXPECT_EQ(debug.getColumn(), 52u);
    EXPECT_EQ(debug.getCallsiteFile(0), "c.cl");
    EXPECT_EQ(debug.getCallsiteLine(0), 61u);
    EXPECT_EQ(debug.getCallsiteColumn(0), 62u);
}

TEST_F(WholeModel, Signal) {
    EXPECT_EQ(inst().getSignal(0)->getCntlName(), "sc");
    EXPECT_EQ(inst().getSignal(0)->getIncrName(), "sn");
    EXPECT_EQ(inst().getSignal(0)->getPort(), config->getPort(0));
}

TEST_F(WholeModel, Connection) {
    const ProfilerConfigConnection& connection = *config->getConnection(0);
    EXPECT_EQ(connection.getModuleInst(), &inst());
    EXPECT_EQ(connection.getFunction(), config->getFunction(0));
    EXPECT_EQ(connection.getComputeUnit(), 1u);
    EXPECT_EQ(connection.getId(), -1);
    EXPECT_EQ(connection.getPort(), config->getPort(0));
    EXPECT_EQ(connection.getPortTag(), "");
    EXPECT_EQ(connection.getSharedPort(), config->getPort(0));
    EXPECT_EQ(connection.getSharedWith(), "");
}

TEST(Load, AProfilerWithoutListsIsAnEmptyModel) {
    for (const char* xml :
         {"<PROFILER/>", "<PROFILER></PROFILER>", "<?xml version='1.0'?>\n<PROFILER>\n</PROFILER>\n",
          "<PROFILER><FUNCTION_LIST/><MODULE_LIST/><PORT_LIST/><MODULEINST_LIST/>"
          "<CONNECTION_LIST/></PROFILER>"}) {
        const auto config = config_of(xml);
        EXPECT_EQ(config->getNumFunctions() + config->getNumModules() + config->getNumPorts() +
                      config->getNumModuleInsts() + config->getNumConnections(),
                  0u);
    }
}

// A root is not required: a text that the parser takes without one is an empty description.
TEST(Load, ADocumentWithoutARootIsAnEmptyModel) {
    for (const char* xml :
         {"<?xml version='1.0'?>", "<!-- nothing -->", "<!DOCTYPE PROFILER>", "</PROFILER>"})
        EXPECT_EQ(config_of(xml)->getNumFunctions(), 0u) << xml;
}

TEST(Load, OptionalAttributesOfAFunctionHaveDefaults) {
    const auto config = config_of(WholeDocument()
                                      .without("FUNCTION", "line_number")
                                      .without("FUNCTION", "original_name")
                                      .without("FUNCTION", "user_friendly_name"));
    EXPECT_EQ(config->getFunction(0)->getLinenum(), 0u);
    EXPECT_EQ(config->getFunction(0)->getOriginalName(), "");
    EXPECT_EQ(config->getFunction(0)->getUserFriendlyName(), "");
}

TEST(Load, DefaultsHoldForEachFunctionAnew) {
    const auto config = config_of(
        WholeDocument().adding("FUNCTION_LIST", "<FUNCTION name='g' num_compute_units='1' filename=''/>"));
    EXPECT_EQ(config->getFunction(1)->getLinenum(), 0u);
    EXPECT_EQ(config->getFunction(1)->getOriginalName(), "");
    EXPECT_EQ(config->getFunction(1)->getUserFriendlyName(), "");
}

TEST(Load, OptionalTextsMayBeEmpty) {
    const auto config = config_of(
        WholeDocument().with("FUNCTION", "original_name", "").with("FUNCTION", "user_friendly_name", ""));
    EXPECT_EQ(config->getFunction(0)->getOriginalName(), "");
    EXPECT_EQ(config->getFunction(0)->getUserFriendlyName(), "");
}

TEST(Load, AConnectionWithoutSharedWithSharesNothing) {
    const auto config = config_of(WholeDocument().without("CONNECTION", "shared_with"));
    EXPECT_EQ(config->getConnection(0)->getSharedPort(), nullptr);
}

// The tag is looked up and found, and then an addition takes an empty tag for none.
TEST(Load, AnEmptySharedTagOfAPortThatExistsSharesNothing) {
    const auto config = config_of(WholeDocument()
                                      .with("PORT", "tag", "")
                                      .with("SIGNAL", "port_tag", "")
                                      .with("CONNECTION", "port_tag", "")
                                      .with("CONNECTION", "shared_with", ""));
    EXPECT_EQ(config->getConnection(0)->getPort(), config->getPort(0));
    EXPECT_EQ(config->getConnection(0)->getSharedPort(), nullptr);
}

TEST(Load, AModuleMayBelongToNoFunction) {
    const auto config =
        config_of(WholeDocument().with("MODULE", "function", "").with("MODULE", "isKernelWrapper", "false"));
    EXPECT_EQ(config->getModule(0)->getFunction(), nullptr);
    EXPECT_FALSE(config->getModule(0)->getIsKernelWrapper());
}

TEST(Load, TruthsOfAnInstanceAreAllButFalse) {
    const std::pair<const char*, bool> rows[] = {{"false", false}, {"true", true},  {"TRUE", true},
                                                 {"FALSE", true},  {"False", true}, {"yes", true},
                                                 {"0", true},      {"", true},      {" false", true}};
    for (const auto& [value, truth] : rows) {
        const auto autorun = config_of(WholeDocument().with("MODULEINST", "isAutorun", value));
        EXPECT_EQ(autorun->getModuleInst(0)->getIsAutorun(), truth) << value;
        EXPECT_FALSE(autorun->getModuleInst(0)->getSharedOn());
        const auto shared = config_of(WholeDocument().with("MODULEINST", "sharedOn", value));
        EXPECT_EQ(shared->getModuleInst(0)->getSharedOn(), truth) << value;
        EXPECT_TRUE(shared->getModuleInst(0)->getIsAutorun());
    }
}

TEST(Load, RequiredTextsMayBeEmptyWhereNothingElseIsSaid) {
    const auto config = config_of(
        "<PROFILER>"
        "<FUNCTION_LIST><FUNCTION name='' num_compute_units='1' filename=''/>"
        "</FUNCTION_LIST>"
        "<MODULE_LIST><MODULE name='' function='' isKernelWrapper='false'/>"
        "</MODULE_LIST>"
        "<PORT_LIST><PORT cntl_name='' incr_name='' tag='' desc='' module='' "
        "flag='0'/></PORT_LIST>"
        "<MODULEINST_LIST><MODULEINST name='' function='' module='' attribute='' "
        "isAutorun='false' sharedOn='false'/></MODULEINST_LIST>"
        "<CONNECTION_LIST><CONNECTION moduleinst='' function='' compute_unit='0' "
        "port_tag=''/></CONNECTION_LIST></PROFILER>");
    EXPECT_EQ(config->getPort(0)->getModule(), config->getModule(0));
    EXPECT_EQ(config->getModule(0)->getFunction(), nullptr);
    EXPECT_EQ(config->getModuleInst(0)->getFunction(), config->getFunction(0));
    EXPECT_EQ(config->getConnection(0)->getModuleInst(), config->getModuleInst(0));
    EXPECT_EQ(config->getConnection(0)->getPort(), config->getPort(0));
}

TEST(Load, NumbersAreCutTo32Bits) {
    const auto config = config_of(WholeDocument()
                                      .with("PORT", "flag", "4294967295")
                                      .with("DEBUG", "line", "4294967296")
                                      .with("DEBUG", "column", "4294967299")
                                      .with("CALLSITE", "line", "010"));
    EXPECT_EQ(config->getPort(0)->getFlag(), 4294967295u);
    const ProfilerConfigDebug& debug = *config->getModuleInst(0)->getDebug(0);
    EXPECT_EQ(debug.getLine(), 0u);
    EXPECT_EQ(debug.getColumn(), 3u);
    EXPECT_EQ(debug.getCallsiteLine(0), 10u) << "decimal, whatever it begins with";
}

TEST(Load, CallSitesBelongToTheDebugAroundThem) {
    const auto config = config_of(WholeDocument().adding(
        "MODULEINST",
        "<DEBUG file='e.cl' line='1' column='2'/>"
        "<DEBUG file='g.cl' line='3' column='4'><CALLSITE file='h.cl' line='5' column='6'/>"
        "<CALLSITE file='k.cl' line='7' column='8'/></DEBUG>"));
    const ProfilerConfigModuleInst& inst = *config->getModuleInst(0);
    ASSERT_EQ(inst.getNumDebugs(), 3u);
    EXPECT_EQ(inst.getDebug(0)->getNumCallsiteFiles(), 1u);
    EXPECT_EQ(inst.getDebug(1)->getFile(), "e.cl");
    EXPECT_EQ(inst.getDebug(1)->getNumCallsiteFiles(), 0u);
    const ProfilerConfigDebug& last = *inst.getDebug(2);
    ASSERT_EQ(last.getNumCallsiteFiles(), 2u);
    EXPECT_EQ(last.getCallsiteFile(0), "h.cl");
    EXPECT_EQ(last.getCallsiteLine(0), 5u);
    EXPECT_EQ(last.getCallsiteColumn(0), 6u);
    EXPECT_EQ(last.getCallsiteFile(1), "k.cl");
    EXPECT_EQ(last.getCallsiteLine(1), 7u);
    EXPECT_EQ(last.getCallsiteColumn(1), 8u);
}

TEST(Load, DebugsAndSignalsBelongToTheInstanceAroundThem) {
    const auto config = config_of(
        WholeDocument().adding("MODULEINST_LIST",
                               "<MODULEINST name='j' function='f' module='m' attribute='' isAutorun='false' "
                               "sharedOn='true'><SIGNAL cntl_name='s2' incr_name='' port_tag='t'/>"
                               "<DEBUG file='j.cl' line='1' column='2'/>"
                               "<SIGNAL cntl_name='s3' incr_name='' port_tag='t'/></MODULEINST>"));
    EXPECT_EQ(config->getModuleInst(0)->getNumDebugs(), 1u);
    EXPECT_EQ(config->getModuleInst(0)->getNumSignals(), 1u);
    const ProfilerConfigModuleInst& second = *config->getModuleInst(1);
    ASSERT_EQ(second.getNumDebugs(), 1u);
    EXPECT_EQ(second.getDebug(0)->getFile(), "j.cl");
    ASSERT_EQ(second.getNumSignals(), 2u);
    EXPECT_EQ(second.getSignal(0)->getCntlName(), "s2");
    EXPECT_EQ(second.getSignal(1)->getCntlName(), "s3");
}

TEST(Load, RecordsComeInTheOrderOfTheDocument) {
    const auto config = config_of(
        WholeDocument()
            .adding("PORT_LIST",
                    "<PORT cntl_name='' incr_name='' tag='a' desc='' module='m' flag='0'/>"
                    "<PORT cntl_name='' incr_name='' tag='z' desc='' module='m' flag='0'/>")
            .adding(
                "CONNECTION_LIST",
                "<CONNECTION moduleinst='i' function='f' compute_unit='0' port_tag='z'/>"
                "<CONNECTION moduleinst='i' function='f' compute_unit='0' port_tag='a' shared_with='z'/>"));
    ASSERT_EQ(config->getNumConnections(), 3u);
    EXPECT_EQ(config->getPort(1)->getTag(), "a");
    EXPECT_EQ(config->getPort(2)->getTag(), "z");
    EXPECT_EQ(config->getConnection(1)->getPort(), config->getPort(2));
    EXPECT_EQ(config->getConnection(2)->getPort(), config->getPort(1));
    EXPECT_EQ(config->getConnection(2)->getSharedPort(), config->getPort(2));
}

TEST(Load, OneConnectionMayComeTwice) {
    const auto config = config_of(WholeDocument().adding(
        "CONNECTION_LIST", "<CONNECTION moduleinst='i' function='f' compute_unit='1' port_tag='t'/>"));
    EXPECT_EQ(config->getNumConnections(), 2u);
}

TEST(Load, ValuesAreDecoded) {
    const auto config =
        config_of(WholeDocument().with("FUNCTION", "filename", "&lt;a&gt; &amp; &quot;b&quot;&#65;"));
    EXPECT_EQ(config->getFunction(0)->getFilename(), "<a> & \"b\"A");
}

TEST(Load, TextAndCommentsBetweenElementsDontMatter) {
    const auto config = config_of(WholeDocument()
                                      .adding("PROFILER", "text<!-- <FUNCTION_LIST/> -->")
                                      .adding("DEBUG", "<![CDATA[<DEBUG/>]]>")
                                      .adding("MODULE_LIST", "<!ODD> more text <!-- comment -->"));
    EXPECT_EQ(config->getNumModules(), 1u);
    EXPECT_EQ(config->getModuleInst(0)->getNumDebugs(), 1u);
}

} // namespace
} // namespace zan::test
