// SPDX-License-Identifier: Apache-2.0
// The object model of ProfilerConfig: what is found by which name, and the effect of each addition.
#include "ProfilerConfig.h"
#include "contract_death.h"

namespace zan::test {
namespace {

using namespace profiler;

// A function "f" of two compute units with a module "m", its port "t" and its instance "i".
class Config : public testing::Test {
  protected:
    Config() {
        config.addFunction("f", 2, "f.cl", 7, "of", "uf");
        config.addModule("m", "f", true);
        config.addPort("c", "n", "t", "d", "m", 3);
        config.addModuleInst("i", "f", "m", "a", true, false);
    }

    const ProfilerConfig& constant() const { return config; }

    ProfilerConfig config;
};

TEST(EmptyConfig, FindsNothing) {
    const ProfilerConfig config;
    EXPECT_EQ(config.getFunctionWithName("f"), nullptr);
    EXPECT_EQ(config.getFunctionWithName(""), nullptr);
    EXPECT_EQ(config.getModuleWithName("m"), nullptr);
    EXPECT_EQ(config.getModuleWithName(""), nullptr);
    EXPECT_EQ(config.getPortWithTag("t"), nullptr);
    EXPECT_EQ(config.getPortWithTag(""), nullptr);
    EXPECT_EQ(config.getModuleInstWithNameAndFunction("i", "f"), nullptr);
    EXPECT_EQ(config.getModuleInstWithNameAndFunction("", ""), nullptr);
}

TEST(EmptyConfig, HasNoRecords) {
    const ProfilerConfig config;
    EXPECT_EQ(config.getNumFunctions(), 0u);
    EXPECT_EQ(config.getNumModules(), 0u);
    EXPECT_EQ(config.getNumPorts(), 0u);
    EXPECT_EQ(config.getNumModuleInsts(), 0u);
    EXPECT_EQ(config.getNumConnections(), 0u);
}

TEST_F(Config, FunctionKeepsAllItIsGiven) {
    ProfilerConfigFunction* function = constant().getFunctionWithName("f");
    ASSERT_NE(function, nullptr);
    EXPECT_EQ(function, constant().getFunction(0));
    EXPECT_EQ(function->getName(), "f");
    EXPECT_EQ(function->getNumComputeUnits(), 2u);
    EXPECT_EQ(function->getFilename(), "f.cl");
    EXPECT_EQ(function->getLinenum(), 7u);
    EXPECT_EQ(function->getOriginalName(), "of");
    EXPECT_EQ(function->getUserFriendlyName(), "uf");
    EXPECT_NE(function->getModuleMapPtr(), nullptr);
    EXPECT_EQ(function->getNumModuleInsts(), 0u) << "only what is added through it";
    EXPECT_EQ(function->getNumConnections(), 0u);
}

TEST_F(Config, FunctionsShareTheMapOfModules) {
    config.addFunction("g", 1, "", 0, "", "");
    EXPECT_EQ(config.getFunction(0)->getModuleMapPtr(), config.getFunction(1)->getModuleMapPtr());
}

TEST_F(Config, ASecondFunctionOfOneNameReplacesTheFirstInTheLookupOnly) {
    ProfilerConfigFunction* first = config.getFunction(0);
    config.addFunction("f", 9, "other.cl", 0, "", "");
    ASSERT_EQ(config.getNumFunctions(), 2u);
    EXPECT_EQ(config.getFunction(0), first);
    EXPECT_EQ(config.getFunctionWithName("f"), config.getFunction(1));
    EXPECT_EQ(config.getFunctionWithName("f")->getNumComputeUnits(), 9u);
}

TEST_F(Config, ModuleKeepsAllItIsGiven) {
    ProfilerConfigModule* module = constant().getModuleWithName("m");
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(module, constant().getModule(0));
    EXPECT_EQ(module->getName(), "m");
    EXPECT_EQ(module->getFunction(), config.getFunction(0));
    EXPECT_TRUE(module->getIsKernelWrapper());
    EXPECT_EQ(module->getNumPorts(), 0u) << "only what is added through it";
}

TEST_F(Config, AModuleWithoutAKnownFunctionHasNone) {
    config.addModule("m2", "", false);
    config.addModule("m3", "nowhere", false);
    EXPECT_EQ(config.getModule(1)->getFunction(), nullptr);
    EXPECT_EQ(config.getModule(2)->getFunction(), nullptr);
    EXPECT_FALSE(config.getModule(1)->getIsKernelWrapper());
}

TEST_F(Config, AnEmptyFunctionOfAModuleIsNeverLookedUp) {
    config.addFunction("", 1, "", 0, "", "");
    ASSERT_NE(config.getFunctionWithName(""), nullptr);
    config.addModule("m2", "", false);
    EXPECT_EQ(config.getModule(1)->getFunction(), nullptr);
}

TEST_F(Config, ASecondModuleOfOneNameReplacesTheFirstInTheLookupOnly) {
    config.addModule("m", "", false);
    ASSERT_EQ(config.getNumModules(), 2u);
    EXPECT_EQ(config.getModuleWithName("m"), config.getModule(1));
    EXPECT_EQ(config.getPort(0)->getModule(), config.getModule(0)) << "what referred to the first stays so";
}

TEST_F(Config, PortKeepsAllItIsGiven) {
    ProfilerConfigPort* port = constant().getPortWithTag("t");
    ASSERT_NE(port, nullptr);
    EXPECT_EQ(port, constant().getPort(0));
    EXPECT_EQ(port->getCntlName(), "c");
    EXPECT_EQ(port->getIncrName(), "n");
    EXPECT_EQ(port->getTag(), "t");
    EXPECT_EQ(port->getDesc(), "d");
    EXPECT_EQ(port->getModule(), config.getModule(0));
    EXPECT_EQ(port->getFlag(), 3u);
}

TEST_F(Config, APortWithoutAKnownModuleHasNone) {
    config.addPort("", "", "t2", "", "nowhere", 4294967295u);
    EXPECT_EQ(config.getPort(1)->getModule(), nullptr);
    EXPECT_EQ(config.getPort(1)->getFlag(), 4294967295u);
}

TEST_F(Config, TheEmptyModuleOfAPortIsLookedUp) {
    config.addModule("", "", false);
    config.addPort("", "", "t2", "", "", 0);
    EXPECT_EQ(config.getPort(1)->getModule(), config.getModule(1));
}

TEST_F(Config, TheEmptyTagIsFoundOnceAPortHasIt) {
    EXPECT_EQ(config.getPortWithTag(""), nullptr);
    config.addPort("c", "n", "", "d", "m", 0);
    EXPECT_EQ(config.getPortWithTag(""), config.getPort(1));
}

TEST_F(Config, ASecondPortOfOneTagReplacesTheFirstInTheLookupOnly) {
    config.addPort("c2", "n2", "t", "d2", "m", 0);
    ASSERT_EQ(config.getNumPorts(), 2u);
    EXPECT_EQ(config.getPort(0)->getCntlName(), "c");
    EXPECT_EQ(config.getPortWithTag("t"), config.getPort(1));
}

TEST_F(Config, InstanceKeepsAllItIsGiven) {
    ProfilerConfigModuleInst* inst = config.addModuleInst("j", "f", "m", "x;y", false, true);
    ASSERT_NE(inst, nullptr);
    EXPECT_EQ(inst, constant().getModuleInst(1));
    EXPECT_EQ(inst->getName(), "j");
    EXPECT_EQ(inst->getFunction(), config.getFunction(0));
    EXPECT_EQ(inst->getModule(), config.getModule(0));
    EXPECT_EQ(inst->getAttribute(), "x;y");
    EXPECT_FALSE(inst->getIsAutorun());
    EXPECT_TRUE(inst->getSharedOn());
    EXPECT_EQ(inst->getNumDebugs(), 0u);
    EXPECT_EQ(inst->getNumSignals(), 0u);
    EXPECT_TRUE(config.getModuleInst(0)->getIsAutorun());
    EXPECT_FALSE(config.getModuleInst(0)->getSharedOn());
}

TEST_F(Config, AnInstanceWithoutKnownNamesRefersToNothing) {
    ProfilerConfigModuleInst* inst = config.addModuleInst("j", "g", "m9", "", false, false);
    EXPECT_EQ(inst->getFunction(), nullptr);
    EXPECT_EQ(inst->getModule(), nullptr);
}

TEST_F(Config, InstancesAreFoundByTheirNameAndTheirFunction) {
    config.addFunction("g", 1, "", 0, "", "");
    ProfilerConfigModuleInst* in_g = config.addModuleInst("i", "g", "m", "", false, false);
    ProfilerConfigModuleInst* only_in_g = config.addModuleInst("j", "g", "m", "", false, false);
    EXPECT_EQ(constant().getModuleInstWithNameAndFunction("i", "f"), config.getModuleInst(0));
    EXPECT_EQ(constant().getModuleInstWithNameAndFunction("i", "g"), in_g);
    EXPECT_EQ(constant().getModuleInstWithNameAndFunction("j", "g"), only_in_g);
    EXPECT_EQ(constant().getModuleInstWithNameAndFunction("j", "f"), nullptr);
    EXPECT_EQ(constant().getModuleInstWithNameAndFunction("k", "f"), nullptr);
    EXPECT_EQ(constant().getModuleInstWithNameAndFunction("f", "i"), nullptr);
}

TEST_F(Config, NameAndFunctionAreComparedApart) {
    config.addFunction("bc", 1, "", 0, "", "");
    config.addModuleInst("a", "bc", "m", "", false, false);
    config.addFunction("c", 1, "", 0, "", "");
    EXPECT_NE(config.getModuleInstWithNameAndFunction("a", "bc"), nullptr);
    EXPECT_EQ(config.getModuleInstWithNameAndFunction("ab", "c"), nullptr);
    EXPECT_EQ(config.getModuleInstWithNameAndFunction("", "abc"), nullptr);
}

TEST_F(Config, OfTwoInstancesOfOneNameTheFirstIsFound) {
    ProfilerConfigModuleInst* second = config.addModuleInst("i", "f", "m", "second", false, false);
    EXPECT_EQ(config.getModuleInst(1), second);
    EXPECT_EQ(config.getModuleInstWithNameAndFunction("i", "f"), config.getModuleInst(0));
}

TEST_F(Config, TheFunctionsNameCountsAndNotWhichFunctionItIs) {
    config.addFunction("f", 1, "", 0, "", "");
    ProfilerConfigModuleInst* of_second = config.addModuleInst("j", "f", "m", "", false, false);
    EXPECT_EQ(of_second->getFunction(), config.getFunction(1));
    config.addModuleInst("i", "f", "m", "", false, false);
    EXPECT_EQ(config.getModuleInstWithNameAndFunction("j", "f"), of_second);
    EXPECT_EQ(config.getModuleInstWithNameAndFunction("i", "f"), config.getModuleInst(0));
}

TEST_F(Config, AnInstanceWithoutAFunctionIsNeverFound) {
    config.addModuleInst("j", "g", "m", "", false, false);
    config.addModuleInst("k", "", "m", "", false, false);
    EXPECT_EQ(config.getModuleInstWithNameAndFunction("j", "g"), nullptr);
    EXPECT_EQ(config.getModuleInstWithNameAndFunction("j", ""), nullptr);
    EXPECT_EQ(config.getModuleInstWithNameAndFunction("k", ""), nullptr);
    // It doesn't hide one that comes later, either.
    config.addFunction("", 1, "", 0, "", "");
    ProfilerConfigModuleInst* with_function = config.addModuleInst("k", "", "m", "", false, false);
    EXPECT_EQ(config.getModuleInstWithNameAndFunction("k", ""), with_function);
}

TEST_F(Config, ConnectionRefersToAllItNames) {
    config.addPort("c2", "n2", "t2", "", "m", 0);
    ProfilerConfigConnection* connection = config.addConnection("i", "f", 1, "t", "t2");
    ASSERT_EQ(constant().getNumConnections(), 1u);
    EXPECT_EQ(connection, constant().getConnection(0));
    EXPECT_EQ(connection->getModuleInst(), config.getModuleInst(0));
    EXPECT_EQ(connection->getFunction(), config.getFunction(0));
    EXPECT_EQ(connection->getComputeUnit(), 1u);
    EXPECT_EQ(connection->getId(), -1);
    EXPECT_EQ(connection->getPort(), config.getPort(0));
    EXPECT_EQ(connection->getPortTag(), "");
    EXPECT_EQ(connection->getSharedPort(), config.getPort(1));
    EXPECT_EQ(connection->getSharedWith(), "");
}

TEST_F(Config, AConnectionWithoutKnownNamesRefersToNothing) {
    ProfilerConfigConnection* connection = config.addConnection("x", "x", 9, "x", "x");
    EXPECT_EQ(connection->getModuleInst(), nullptr);
    EXPECT_EQ(connection->getFunction(), nullptr);
    EXPECT_EQ(connection->getPort(), nullptr);
    EXPECT_EQ(connection->getPortTag(), "");
    EXPECT_EQ(connection->getSharedPort(), nullptr);
    EXPECT_EQ(connection->getSharedWith(), "");
    EXPECT_EQ(connection->getComputeUnit(), 9u) << "additions check nothing";
}

TEST_F(Config, AnEmptySharedTagIsNeverLookedUp) {
    config.addPort("c", "n", "", "d", "m", 0);
    EXPECT_EQ(config.addConnection("i", "f", 0, "t", "")->getSharedPort(), nullptr);
    EXPECT_EQ(config.addConnection("i", "f", 0, "", "t")->getPort(), config.getPort(1))
        << "other than an empty tag of the port itself";
}

TEST_F(Config, RecordsKeepTheirOrderAndTheirPlaces) {
    ProfilerConfigFunction* first = config.getFunction(0);
    for (int i = 0; i < 1000; ++i) {
        config.addFunction("f" + std::to_string(i), 1, "", 0, "", "");
        config.addConnection("i", "f", static_cast<unsigned int>(i), "t", "");
    }
    ASSERT_EQ(config.getNumFunctions(), 1001u);
    EXPECT_EQ(config.getFunction(0), first);
    EXPECT_EQ(config.getFunctionWithName("f"), first);
    EXPECT_EQ(config.getFunction(1000)->getName(), "f999");
    EXPECT_EQ(config.getFunctionWithName("f500"), config.getFunction(501));
    EXPECT_EQ(config.getConnection(999)->getComputeUnit(), 999u);
}

TEST_F(Config, TextsAreCopies) {
    std::string name = "changed";
    config.addModule(name, "", false);
    // cppcheck-suppress unreadVariable ; the copy must not follow
    name[0] = 'C';
    EXPECT_EQ(config.getModuleWithName("Changed"), nullptr);
    EXPECT_NE(config.getModuleWithName("changed"), nullptr);
}

TEST_F(Config, NamesAreWholeTextsNulsIncluded) {
    const std::string with_nul("f\0g", 3);
    config.addFunction(with_nul, 1, "", 0, "", "");
    EXPECT_EQ(config.getFunctionWithName(with_nul), config.getFunction(1));
    EXPECT_EQ(config.getFunctionWithName("f"), config.getFunction(0));
}

TEST(ConfigContracts, AnIndexHasToBeBelowTheNumber) {
    const ProfilerConfig config;
    EXPECT_CONTRACT(config.getFunction(0), "i < m_functionList.size()");
    EXPECT_CONTRACT(config.getModule(0), "i < m_moduleList.size()");
    EXPECT_CONTRACT(config.getPort(0), "i < m_portList.size()");
    EXPECT_CONTRACT(config.getModuleInst(0), "i < m_moduleInstList.size()");
    EXPECT_CONTRACT(config.getConnection(0), "i < m_connectionList.size()");
}

TEST_F(Config, AnIndexEqualToTheNumberStopsTheProcess) {
    config.addConnection("i", "f", 0, "t", "");
    EXPECT_CONTRACT(config.getFunction(1), "i < m_functionList.size()");
    EXPECT_CONTRACT(config.getModule(1), "i < m_moduleList.size()");
    EXPECT_CONTRACT(config.getPort(1), "i < m_portList.size()");
    EXPECT_CONTRACT(config.getModuleInst(1), "i < m_moduleInstList.size()");
    EXPECT_CONTRACT(config.getConnection(1), "i < m_connectionList.size()");
    EXPECT_CONTRACT(config.getConnection(4294967295u), "i < m_connectionList.size()");
}

} // namespace
} // namespace zan::test
