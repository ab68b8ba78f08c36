// The records of a description: looking up, adding, owning.
#include "ProfilerConfig.h"
#include "contract_death.h"

namespace zan::profiler {
namespace {

TEST(ProfilerConfig, StartsEmpty) {
    const ProfilerConfig config;
    EXPECT_EQ(config.getNumFunctions(), 0u);
    EXPECT_EQ(config.getNumConnections(), 0u);
    EXPECT_EQ(config.getFunctionWithName(""), nullptr);
    EXPECT_EQ(config.getModuleWithName(""), nullptr);
    EXPECT_EQ(config.getPortWithTag(""), nullptr);
    EXPECT_EQ(config.getModuleInstWithNameAndFunction("", ""), nullptr);
}

TEST(ProfilerConfig, OfTwoFunctionsOfOneNameTheLaterIsFoundAndBothAreListed) {
    ProfilerConfig config;
    config.addFunction("f", 1, "first", 1, "", "");
    config.addFunction("f", 2, "second", 2, "", "");
    EXPECT_EQ(config.getNumFunctions(), 2u);
    EXPECT_EQ(config.getFunction(0)->getFilename(), "first");
    EXPECT_EQ(config.getFunctionWithName("f"), config.getFunction(1));
}

TEST(ProfilerConfig, OfTwoModulesOrPortsOfOneNameTheLaterIsFound) {
    ProfilerConfig config;
    config.addModule("m", "", false);
    config.addModule("m", "", true);
    EXPECT_EQ(config.getModuleWithName("m"), config.getModule(1));
    EXPECT_EQ(config.getNumModules(), 2u);
    config.addPort("a", "", "t", "", "m", 0);
    config.addPort("b", "", "t", "", "m", 0);
    EXPECT_EQ(config.getPortWithTag("t"), config.getPort(1));
    EXPECT_EQ(config.getNumPorts(), 2u);
}

TEST(ProfilerConfig, OfTwoInstancesOfOneNameTheEarlierIsFound) {
    ProfilerConfig config;
    config.addFunction("f", 1, "", 0, "", "");
    config.addModule("m", "", false);
    const auto* first = config.addModuleInst("i", "f", "m", "1", false, false);
    config.addModuleInst("i", "f", "m", "2", false, false);
    EXPECT_EQ(config.getModuleInstWithNameAndFunction("i", "f"), first);
    EXPECT_EQ(config.getNumModuleInsts(), 2u);
}

TEST(ProfilerConfig, AnInstanceOfAnotherFunctionIsNotFound) {
    ProfilerConfig config;
    config.addFunction("f", 1, "", 0, "", "");
    config.addFunction("g", 1, "", 0, "", "");
    config.addModuleInst("i", "f", "", "", false, false);
    config.addModuleInst("f", "g", "", "", false, false);
    EXPECT_EQ(config.getModuleInstWithNameAndFunction("i", "g"), nullptr);
    EXPECT_EQ(config.getModuleInstWithNameAndFunction("f", "i"), nullptr);
    EXPECT_NE(config.getModuleInstWithNameAndFunction("f", "g"), nullptr);
}

TEST(ProfilerConfig, AnInstanceWithoutAFunctionIsNeverFound) {
    ProfilerConfig config;
    const auto* inst = config.addModuleInst("i", "unknown", "unknown", "", false, false);
    EXPECT_EQ(inst->getFunction(), nullptr);
    EXPECT_EQ(inst->getModule(), nullptr);
    EXPECT_EQ(config.getModuleInstWithNameAndFunction("i", "unknown"), nullptr);
    EXPECT_EQ(config.getModuleInstWithNameAndFunction("i", ""), nullptr);
}

// Two functions of one name are one name: the instance belongs to either.
TEST(ProfilerConfig, InstancesAreFoundByTheNameOfTheirFunction) {
    ProfilerConfig config;
    config.addFunction("f", 1, "", 0, "", "");
    const auto* inst = config.addModuleInst("i", "f", "", "", false, false);
    config.addFunction("f", 1, "", 0, "", "");
    EXPECT_EQ(config.getModuleInstWithNameAndFunction("i", "f"), inst);
}

TEST(ProfilerConfig, NamesThatAreNotKnownLeaveNull) {
    ProfilerConfig config;
    config.addModule("m", "unknown", false);
    config.addPort("", "", "t", "", "unknown", 0);
    const auto* connection = config.addConnection("unknown", "unknown", 3, "unknown", "unknown");
    EXPECT_EQ(config.getModule(0)->getFunction(), nullptr);
    EXPECT_EQ(config.getPort(0)->getModule(), nullptr);
    EXPECT_EQ(connection->getModuleInst(), nullptr);
    EXPECT_EQ(connection->getFunction(), nullptr);
    EXPECT_EQ(connection->getPort(), nullptr);
    EXPECT_EQ(connection->getSharedPort(), nullptr);
    EXPECT_EQ(connection->getComputeUnit(), 3u);
}

TEST(ProfilerConfig, AnEmptyFunctionOfAModuleIsNoneEvenIfThereIsOne) {
    ProfilerConfig config;
    config.addFunction("", 1, "", 0, "", "");
    config.addModule("m", "", false);
    EXPECT_EQ(config.getModule(0)->getFunction(), nullptr);
}

TEST(ProfilerConfig, AConnectionOfTheModelKnowsItsRecords) {
    ProfilerConfig config;
    config.addFunction("f", 1, "", 0, "", "");
    config.addModule("m", "f", false);
    config.addPort("", "", "t", "", "m", 0);
    config.addPort("", "", "", "", "m", 0); // the empty tag
    auto* inst = config.addModuleInst("i", "f", "m", "", false, false);
    const auto* connection = config.addConnection("i", "f", 0, "t", "t");
    EXPECT_EQ(connection->getModuleInst(), inst);
    EXPECT_EQ(connection->getFunction(), config.getFunction(0));
    EXPECT_EQ(connection->getPort(), config.getPort(0));
    EXPECT_EQ(connection->getSharedPort(), config.getPort(0));
    EXPECT_EQ(connection->getId(), -1);
    EXPECT_EQ(connection->getPortTag(), "");
    EXPECT_EQ(connection->getSharedWith(), "");
    EXPECT_EQ(config.addConnection("i", "f", 0, "t", "")->getSharedPort(), nullptr); // empty is none
    EXPECT_EQ(config.getConnection(0), connection);
}

TEST(ProfilerConfig, TheModelsRecordsAreNotListedByTheirParents) {
    ProfilerConfig config;
    config.addFunction("f", 1, "", 0, "", "");
    config.addModule("m", "f", false);
    config.addPort("", "", "t", "", "m", 0);
    config.addModuleInst("i", "f", "m", "", false, false);
    config.addConnection("i", "f", 0, "t", "");
    EXPECT_EQ(config.getModule(0)->getNumPorts(), 0u);
    EXPECT_EQ(config.getFunction(0)->getNumModuleInsts(), 0u);
    EXPECT_EQ(config.getFunction(0)->getNumConnections(), 0u);
}

TEST(ProfilerConfig, RecordsListWhatTheyMakeThemselves) {
    ProfilerConfig config;
    config.addFunction("f", 1, "", 0, "", "");
    config.addModule("m", "f", false);
    ProfilerConfigFunction& function = *config.getFunction(0);
    ProfilerConfigModule& module = *config.getModule(0);

    const std::unique_ptr<ProfilerConfigPort> port(module.addPortToModule("c", "i", "t", "d", 5));
    EXPECT_EQ(module.getPort(0), port.get());
    EXPECT_EQ(port->getModule(), &module);
    EXPECT_EQ(port->getFlag(), 5u);
    EXPECT_EQ(config.getPortWithTag("t"), nullptr);

    const std::unique_ptr<ProfilerConfigModuleInst> inst(function.addModuleInst("i", "m", "a", true, false));
    EXPECT_EQ(function.getModuleInst(0), inst.get());
    EXPECT_EQ(inst->getFunction(), &function);
    EXPECT_EQ(inst->getModule(), &module);
    EXPECT_TRUE(inst->getIsAutorun());
    EXPECT_EQ(config.getNumModuleInsts(), 0u);
    const std::unique_ptr<ProfilerConfigModuleInst> other(function.addModuleInst("j", "x", "", false, true));
    EXPECT_EQ(other->getModule(), nullptr);
    EXPECT_TRUE(other->getSharedOn());

    const std::unique_ptr<ProfilerConfigConnection> connection(
        function.addConnection(inst.get(), 4, 2, "t", "s"));
    EXPECT_EQ(function.getConnection(0), connection.get());
    EXPECT_EQ(connection->getModuleInst(), inst.get());
    EXPECT_EQ(connection->getFunction(), nullptr);
    EXPECT_EQ(connection->getPort(), nullptr);
    EXPECT_EQ(connection->getSharedPort(), nullptr);
    EXPECT_EQ(connection->getId(), 4);
    EXPECT_EQ(connection->getComputeUnit(), 2u);
    EXPECT_EQ(connection->getPortTag(), "t");
    EXPECT_EQ(connection->getSharedWith(), "s");
}

TEST(ProfilerConfigDeathTest, IndicesAreBelowTheCounts) {
    ProfilerConfig config;
    EXPECT_CONTRACT(config.getFunction(0), "i < m_functionList.size()");
    EXPECT_CONTRACT(config.getConnection(0), "i < m_connectionList.size()");
    EXPECT_CONTRACT(config.getModule(0), "i < m_moduleList.size()");
    EXPECT_CONTRACT(config.getPort(0), "i < m_portList.size()");
    EXPECT_CONTRACT(config.getModuleInst(0), "i < m_moduleInstList.size()");
    config.addFunction("f", 1, "", 0, "", "");
    config.addModule("m", "", false);
    auto* inst = config.addModuleInst("i", "f", "m", "", false, false);
    EXPECT_CONTRACT(config.getFunction(1), "i < m_functionList.size()");
    EXPECT_CONTRACT(config.getFunction(0)->getModuleInst(0), "i < m_moduleInsts.size()");
    EXPECT_CONTRACT(config.getFunction(0)->getConnection(0), "i < m_connections.size()");
    EXPECT_CONTRACT(config.getModule(0)->getPort(0), "i < m_ports.size()");
    EXPECT_CONTRACT(inst->getDebug(0), "i < m_debugs.size()");
    EXPECT_CONTRACT(inst->getSignal(0), "i < m_signals.size()");
    const auto* debug = inst->addDebug("f", 1, 1);
    EXPECT_CONTRACT(debug->getCallsiteFile(0), "i < m_callsiteFiles.size()");
    EXPECT_CONTRACT(debug->getCallsiteLine(0), "i < m_callsiteLines.size()");
    EXPECT_CONTRACT(debug->getCallsiteColumn(0), "i < m_callsiteColumns.size()");
}

TEST(ProfilerConfig, TenThousandRecordsAreFound) {
    ProfilerConfig config;
    config.addFunction("f", 1, "", 0, "", "");
    for (int i = 0; i < 10000; ++i) {
        const std::string name = std::to_string(i);
        config.addModule(name, "f", false);
        config.addPort("", "", name, "", name, 0);
        config.addModuleInst(name, "f", name, "", false, false);
    }
    EXPECT_EQ(config.getModuleInstWithNameAndFunction("9999", "f"), config.getModuleInst(9999));
    EXPECT_EQ(config.getPortWithTag("5000"), config.getPort(5000));
    EXPECT_EQ(config.getModuleWithName("10000"), nullptr);
}

} // namespace
} // namespace zan::profiler
