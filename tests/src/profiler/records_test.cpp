// SPDX-License-Identifier: Apache-2.0
// Additions on the records themselves. Instances, connections and ports that are added this way stand in
// their parent's own list and belong to the caller.
#include <memory>

#include "ProfilerConfig.h"
#include "contract_death.h"

namespace zan::test {
namespace {

using namespace profiler;

// A function "f" and a module "m".
class Records : public testing::Test {
  protected:
    Records() {
        config.addFunction("f", 1, "f.cl", 0, "", "");
        config.addModule("m", "f", false);
    }

    ProfilerConfigFunction& function() { return *config.getFunction(0); }
    ProfilerConfigModule& module() { return *config.getModule(0); }

    ProfilerConfig config;
};

TEST_F(Records, InstanceOfAFunction) {
    const std::unique_ptr<ProfilerConfigModuleInst> inst(
        function().addModuleInst("i", "m", "a", true, false));
    ASSERT_TRUE(inst);
    EXPECT_EQ(inst->getName(), "i");
    EXPECT_EQ(inst->getFunction(), &function());
    EXPECT_EQ(inst->getModule(), &module());
    EXPECT_EQ(inst->getAttribute(), "a");
    EXPECT_TRUE(inst->getIsAutorun());
    EXPECT_FALSE(inst->getSharedOn());
    ASSERT_EQ(function().getNumModuleInsts(), 1u);
    EXPECT_EQ(function().getModuleInst(0), inst.get());
}

TEST_F(Records, InstanceOfAFunctionIsUnknownToTheConfig) {
    const std::unique_ptr<ProfilerConfigModuleInst> inst(
        function().addModuleInst("i", "m", "a", false, true));
    EXPECT_FALSE(inst->getIsAutorun());
    EXPECT_TRUE(inst->getSharedOn());
    EXPECT_EQ(config.getNumModuleInsts(), 0u);
    EXPECT_EQ(config.getModuleInstWithNameAndFunction("i", "f"), nullptr);
}

TEST_F(Records, InstanceOfAFunctionFindsModulesAddedLater) {
    const std::unique_ptr<ProfilerConfigModuleInst> before(
        function().addModuleInst("i", "late", "", false, false));
    config.addModule("late", "", false);
    const std::unique_ptr<ProfilerConfigModuleInst> after(
        function().addModuleInst("j", "late", "", false, false));
    EXPECT_EQ(before->getModule(), nullptr);
    EXPECT_EQ(after->getModule(), config.getModule(1));
    EXPECT_EQ(function().getModuleInst(1), after.get());
}

TEST_F(Records, WithoutAMapOfModulesAnInstanceHasNoModule) {
    ProfilerConfigFunction alone("f", 1, "", 0, "", "", nullptr);
    const std::unique_ptr<ProfilerConfigModuleInst> inst(alone.addModuleInst("i", "m", "a", true, false));
    EXPECT_EQ(inst->getModule(), nullptr);
    EXPECT_EQ(inst->getFunction(), &alone);
    EXPECT_EQ(alone.getModuleInst(0), inst.get());
}

TEST_F(Records, ConnectionOfAFunctionKeepsTexts) {
    config.addPort("c", "n", "t", "d", "m", 0);
    const std::unique_ptr<ProfilerConfigModuleInst> inst(
        function().addModuleInst("i", "m", "", false, false));
    const std::unique_ptr<ProfilerConfigConnection> connection(
        function().addConnection(inst.get(), 12, 3, "t", "t2"));
    ASSERT_TRUE(connection);
    EXPECT_EQ(connection->getModuleInst(), inst.get());
    EXPECT_EQ(connection->getFunction(), nullptr);
    EXPECT_EQ(connection->getComputeUnit(), 3u);
    EXPECT_EQ(connection->getId(), 12);
    EXPECT_EQ(connection->getPort(), nullptr) << "even if there is a port of that tag";
    EXPECT_EQ(connection->getPortTag(), "t");
    EXPECT_EQ(connection->getSharedPort(), nullptr);
    EXPECT_EQ(connection->getSharedWith(), "t2");
    ASSERT_EQ(function().getNumConnections(), 1u);
    EXPECT_EQ(function().getConnection(0), connection.get());
    EXPECT_EQ(config.getNumConnections(), 0u);
}

TEST_F(Records, ConnectionOfNoInstance) {
    const std::unique_ptr<ProfilerConfigConnection> connection(
        function().addConnection(nullptr, -5, 0, "", ""));
    EXPECT_EQ(connection->getModuleInst(), nullptr);
    EXPECT_EQ(connection->getId(), -5);
}

TEST_F(Records, PortOfAModule) {
    const std::unique_ptr<ProfilerConfigPort> port(module().addPortToModule("c", "n", "t", "d", 4294967295u));
    ASSERT_TRUE(port);
    EXPECT_EQ(port->getCntlName(), "c");
    EXPECT_EQ(port->getIncrName(), "n");
    EXPECT_EQ(port->getTag(), "t");
    EXPECT_EQ(port->getDesc(), "d");
    EXPECT_EQ(port->getModule(), &module());
    EXPECT_EQ(port->getFlag(), 4294967295u);
    ASSERT_EQ(module().getNumPorts(), 1u);
    EXPECT_EQ(module().getPort(0), port.get());
    EXPECT_EQ(config.getNumPorts(), 0u);
    EXPECT_EQ(config.getPortWithTag("t"), nullptr);
}

TEST_F(Records, PortsOfTheConfigDontStandInTheirModule) {
    config.addPort("c", "n", "t", "d", "m", 0);
    EXPECT_EQ(config.getPort(0)->getModule(), &module());
    EXPECT_EQ(module().getNumPorts(), 0u);
}

// The config owns its instances and these own their debug and signal records: a leak or a double deletion
// here is seen by the sanitizers.
TEST_F(Records, DebugsOfAnInstance) {
    ProfilerConfigModuleInst* inst = config.addModuleInst("i", "f", "m", "", false, false);
    ProfilerConfigDebug* first = inst->addDebug("a.cl", 1, 2);
    ProfilerConfigDebug* second = inst->addDebug("", 0, 4294967295u);
    ASSERT_EQ(inst->getNumDebugs(), 2u);
    EXPECT_EQ(inst->getDebug(0), first);
    EXPECT_EQ(inst->getDebug(1), second);
    EXPECT_EQ(first->getFile(), "a.cl");
    EXPECT_EQ(first->getLine(), 1u);
    EXPECT_EQ(first->getColumn(), 2u);
    EXPECT_EQ(second->getFile(), "");
    EXPECT_EQ(second->getLine(), 0u);
    EXPECT_EQ(second->getColumn(), 4294967295u);
    EXPECT_EQ(first->getNumCallsiteFiles(), 0u);
    EXPECT_EQ(first->getNumCallsiteLines(), 0u);
    EXPECT_EQ(first->getNumCallsiteColumns(), 0u);
}

TEST_F(Records, SignalsOfAnInstance) {
    config.addPort("c", "n", "t", "d", "m", 0);
    ProfilerConfigModuleInst* inst = config.addModuleInst("i", "f", "m", "", false, false);
    inst->addSignal("sc", "sn", config.getPort(0));
    inst->addSignal("", "", nullptr);
    ASSERT_EQ(inst->getNumSignals(), 2u);
    EXPECT_EQ(inst->getSignal(0)->getCntlName(), "sc");
    EXPECT_EQ(inst->getSignal(0)->getIncrName(), "sn");
    EXPECT_EQ(inst->getSignal(0)->getPort(), config.getPort(0));
    EXPECT_EQ(inst->getSignal(1)->getPort(), nullptr);
}

TEST_F(Records, AnInstanceOfTheCallersDeletesItsRecords) {
    const std::unique_ptr<ProfilerConfigModuleInst> inst(
        function().addModuleInst("i", "m", "", false, false));
    inst->addDebug("a.cl", 1, 2);
    inst->addSignal("sc", "sn", nullptr);
    EXPECT_EQ(inst->getNumDebugs(), 1u);
    EXPECT_EQ(inst->getNumSignals(), 1u);
}

// The config doesn't delete what stands in the lists of its functions and modules.
TEST(RecordsOfTheCallers, OutliveTheConfig) {
    std::unique_ptr<ProfilerConfigModuleInst> inst;
    std::unique_ptr<ProfilerConfigConnection> connection;
    std::unique_ptr<ProfilerConfigPort> port;
    {
        ProfilerConfig config;
        config.addFunction("f", 1, "", 0, "", "");
        config.addModule("m", "f", false);
        inst.reset(config.getFunction(0)->addModuleInst("i", "m", "", false, false));
        connection.reset(config.getFunction(0)->addConnection(inst.get(), 1, 0, "t", ""));
        port.reset(config.getModule(0)->addPortToModule("c", "n", "t", "d", 0));
    }
    EXPECT_EQ(inst->getName(), "i");
    EXPECT_EQ(connection->getModuleInst(), inst.get());
    EXPECT_EQ(port->getTag(), "t");
}

TEST_F(Records, AnIndexHasToBeBelowTheNumber) {
    ProfilerConfigModuleInst* inst = config.addModuleInst("i", "f", "m", "", false, false);
    EXPECT_CONTRACT(inst->getDebug(0), "i < m_debugs.size()");
    EXPECT_CONTRACT(inst->getSignal(0), "i < m_signals.size()");
    EXPECT_CONTRACT(function().getModuleInst(0), "i < m_moduleInsts.size()");
    EXPECT_CONTRACT(function().getConnection(0), "i < m_connections.size()");
    EXPECT_CONTRACT(module().getPort(0), "i < m_ports.size()");
    ProfilerConfigDebug* debug = inst->addDebug("a.cl", 1, 2);
    EXPECT_CONTRACT(inst->getDebug(1), "i < m_debugs.size()");
    EXPECT_CONTRACT(debug->getCallsiteFile(0), "i < m_callsiteFiles.size()");
    EXPECT_CONTRACT(debug->getCallsiteLine(0), "i < m_callsiteLines.size()");
    EXPECT_CONTRACT(debug->getCallsiteColumn(0), "i < m_callsiteColumns.size()");
}

} // namespace
} // namespace zan::test
