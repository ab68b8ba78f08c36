// What a description's elements must say, where they may stand, and the model that comes of them.
#include "ProfilerConfigVisitors.h"
#include "contract_death.h"
#include "profiler_document.h"
#include "xml_probe.h"

namespace zan::test {
namespace {

using namespace zan::profiler;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

using D = ProfilerDocument;

// One fault: what it changes, and the whole error list that it gives.
struct FaultCase {
    std::string name;
    void (*change)(ProfilerDocument& document);
    std::vector<std::string> errors;

    friend void PrintTo(const FaultCase& fault, std::ostream* os) { *os << fault.name; }
};

class ProfilerFault : public testing::TestWithParam<FaultCase> {};

TEST_P(ProfilerFault, GivesExactlyTheseErrorsAndNoModel) {
    ProfilerDocument document;
    GetParam().change(document);
    const LoadedProfiler loaded = load(document);
    EXPECT_THAT(loaded.errors, ElementsAreArray(GetParam().errors));
    EXPECT_FALSE(loaded.config);
}

const auto name_of = [](const testing::TestParamInfo<FaultCase>& info) { return info.param.name; };

INSTANTIATE_TEST_SUITE_P(
    Function, ProfilerFault,
    testing::Values(
        FaultCase{"NoComputeUnit",
                  [](D& d) { d.functions = "<FUNCTION name='k'\nnum_compute_units='0' filename=''/>"; },
                  {at_line(3, "Non-zero num_compute_units value expected.")}},
        // The check comes behind its attribute, ahead of those that follow.
        FaultCase{"NoComputeUnitAndNoFilename",
                  [](D& d) { d.functions = "<FUNCTION name='k' num_compute_units='0'/>"; },
                  {at_line(2, "Non-zero num_compute_units value expected.")}},
        FaultCase{"NameTwice",
                  [](D& d) { d.functions += "<FUNCTION name='k' num_compute_units='1' filename='other'/>"; },
                  {of_document("Function name \"k\" is not unique.")}}),
    name_of);

INSTANTIATE_TEST_SUITE_P(
    Module, ProfilerFault,
    testing::Values(
        FaultCase{"UnknownFunction",
                  [](D& d) { d.modules = "<MODULE name='m' function='x' isKernelWrapper='false'/>"; },
                  {of_document("Function \"x\" does not exist in Module \"m\".")}},
        FaultCase{"NameTwice",
                  [](D& d) { d.modules += "<MODULE name='lsu' function='' isKernelWrapper='false'/>"; },
                  {of_document("Module name \"lsu\" is not unique.")}},
        // Both checks come ahead of the third attribute.
        FaultCase{"NameTwiceAndNoWrapper",
                  [](D& d) { d.modules += "<MODULE name='lsu' function=''/>"; },
                  {of_document("Module name \"lsu\" is not unique.")}},
        FaultCase{"WrapperInCapitals",
                  [](D& d) { d.modules = "<MODULE name='m' function='' isKernelWrapper='TRUE'/>"; },
                  {of_document("isKernelWrapper attribute is expected to be true/false.")}},
        FaultCase{"WrapperIsEmpty",
                  [](D& d) { d.modules = "<MODULE name='m' function='' isKernelWrapper=''/>"; },
                  {of_document("isKernelWrapper attribute is expected to be true/false.")}}),
    name_of);

INSTANTIATE_TEST_SUITE_P(
    Port, ProfilerFault,
    testing::Values(FaultCase{"TagTwice",
                              [](D& d) { d.ports += d.ports; },
                              {of_document("Port tag \"t\" is not unique.")}},
                    FaultCase{"UnknownModule",
                              [](D& d) {
                                  d.ports =
                                      "<PORT cntl_name='c' incr_name='i' tag='t' desc='' module='x' "
                                      "flag='0'/>";
                              },
                              {of_document("Module \"x\" does not exist in Port \"(c,i)\".")}}),
    name_of);

// An instance of that function and module.
std::string inst_of(const std::string& function, const std::string& module, const std::string& content = "") {
    return "<MODULEINST name='m' function='" + function + "' module='" + module +
           "' attribute='' isAutorun='true' sharedOn='true'>" + content + "</MODULEINST>";
}

INSTANTIATE_TEST_SUITE_P(
    ModuleInst, ProfilerFault,
    testing::Values(
        FaultCase{"UnknownFunction",
                  [](D& d) { d.insts = inst_of("x", "lsu"); },
                  {of_document("Function \"x\" does not exist in ModuleInst \"m\".")}},
        FaultCase{"EmptyFunction",
                  [](D& d) { d.insts = inst_of("", "lsu"); },
                  {of_document("Function \"\" does not exist in ModuleInst \"m\".")}},
        FaultCase{"UnknownModule",
                  [](D& d) { d.insts = inst_of("k", "x"); },
                  {of_document("Module \"x\" does not exist in ModuleInst \"m\".")}},
        // The instance is there twice; the words tell its module.
        FaultCase{"NameTwiceInAFunction",
                  [](D& d) { d.insts += inst_of("k", "lsu"); },
                  {of_document("Module \"lsu\" is not unique.")}},
        FaultCase{"DebugWithoutFile",
                  [](D& d) { d.insts = inst_of("k", "lsu", "<DEBUG file='' line='x' column='1'/>"); },
                  {of_document("File name cannot be null.")}},
        FaultCase{"CallsiteWithoutFile",
                  [](D& d) {
                      d.insts = inst_of("k", "lsu",
                                        "<DEBUG file='f' line='1' column='1'><CALLSITE file='' line='1' "
                                        "column='1'/></DEBUG>");
                  },
                  {of_document("File name cannot be null.")}},
        FaultCase{"SignalWithoutControl",
                  [](D& d) { d.insts = inst_of("k", "lsu", "<SIGNAL cntl_name='' incr_name='i'/>"); },
                  {of_document("Control signal \"\" cannot be null.")}},
        FaultCase{
            "SignalOfAnUnknownPort",
            [](D& d) { d.insts = inst_of("k", "lsu", "<SIGNAL cntl_name='c' incr_name='i' port_tag='x'/>"); },
            {of_document("Port tag \"x\" does not exist in ModuleInst \"c\".")}},
        FaultCase{"SignalOfAnotherModulesPort",
                  [](D& d) {
                      d.modules += "<MODULE name='other' function='' isKernelWrapper='false'/>";
                      d.insts = inst_of("k", "other", "<SIGNAL cntl_name='c' incr_name='i' port_tag='t'/>");
                  },
                  {of_document("Port tag \"t\" does not belong to module in ModuleInst \"c\".")}}),
    name_of);

// A connection of the good document with other values.
std::string connection(const std::string& inst, const std::string& function, const std::string& unit,
                       const std::string& tag, const std::string& more = "") {
    return "<CONNECTION moduleinst='" + inst + "' function='" + function + "' compute_unit='" + unit +
           "' port_tag='" + tag + "' " + more + "/>";
}

INSTANTIATE_TEST_SUITE_P(
    Connection, ProfilerFault,
    testing::Values(
        FaultCase{"UnknownInst",
                  [](D& d) { d.connections = connection("x", "k", "0", "t"); },
                  {of_document("ModuleInst \"x\" does not exist in Function \"k\" in connection of Port tag "
                               "\"t\".")}},
        FaultCase{"InstOfAnotherFunction",
                  [](D& d) {
                      d.functions += "<FUNCTION name='other' num_compute_units='1' filename=''/>";
                      d.connections = connection("m", "other", "0", "t");
                  },
                  {of_document("ModuleInst \"m\" does not exist in Function \"other\" in connection of Port "
                               "tag \"t\".")}},
        FaultCase{"ComputeUnitOutOfRange",
                  [](D& d) { d.connections = connection("m", "k", "2", "t"); },
                  {of_document("Compute unit is incorrect in ModuleInst \"m\" and function \"k\".")}},
        FaultCase{"UnknownPort",
                  [](D& d) { d.connections = connection("m", "k", "0", "x"); },
                  {of_document("Port tag \"x\" does not exist in ModuleInst \"m\" and function \"k\".")}},
        FaultCase{
            "UnknownSharedPort",
            [](D& d) { d.connections = connection("m", "k", "0", "t", "shared_with='x'"); },
            {of_document("Shared Port tag \"x\" does not exist in ModuleInst \"m\" and function \"k\".")}},
        // The attribute is there, so the empty tag is looked up.
        FaultCase{
            "EmptySharedPort",
            [](D& d) { d.connections = connection("m", "k", "0", "t", "shared_with=''"); },
            {of_document("Shared Port tag \"\" does not exist in ModuleInst \"m\" and function \"k\".")}},
        FaultCase{"PortOfAnotherModule",
                  [](D& d) {
                      d.modules += "<MODULE name='other' function='' isKernelWrapper='false'/>";
                      d.ports += "<PORT cntl_name='' incr_name='' tag='u' desc='' module='other' flag='0'/>";
                      d.connections = connection("m", "k", "0", "u");
                  },
                  {of_document("Port tag \"u\" and ModuleInst \"m\" do not match.")}}),
    name_of);

INSTANTIATE_TEST_SUITE_P(
    Place, ProfilerFault,
    testing::Values(FaultCase{"FunctionInFunction",
                              [](D& d) {
                                  d.functions =
                                      "<FUNCTION name='k' num_compute_units='1' filename=''>\n<FUNCTION/>"
                                      "</FUNCTION>";
                              },
                              {at_line(3, "Unexpected element 'FUNCTION'.")}},
                    FaultCase{"PortAmongModules",
                              [](D& d) { d.modules += "\n<PORT/>"; },
                              {at_line(4, "Unexpected element 'PORT'.")}},
                    FaultCase{"ModuleAmongFunctions",
                              [](D& d) { d.functions += "<MODULE/>"; },
                              {at_line(2, "Unexpected element 'MODULE'.")}},
                    FaultCase{"FunctionAmongPorts",
                              [](D& d) { d.ports += "<FUNCTION/>"; },
                              {at_line(4, "Unexpected element 'FUNCTION'.")}},
                    FaultCase{"PortAmongInsts",
                              [](D& d) { d.insts += "<PORT/>"; },
                              {at_line(5, "Unexpected element 'PORT'.")}},
                    FaultCase{"DebugAmongConnections",
                              [](D& d) { d.connections += "<DEBUG/>"; },
                              {at_line(6, "Unexpected element 'DEBUG'.")}},
                    FaultCase{"DebugOutsideAnInst",
                              [](D& d) { d.insts += "\n<DEBUG file='f' line='1' column='1'/>"; },
                              {at_line(6, "Unexpected element 'DEBUG'.")}},
                    FaultCase{"SignalOutsideAnInst",
                              [](D& d) { d.insts += "<SIGNAL/>"; },
                              {at_line(5, "Unexpected element 'SIGNAL'.")}},
                    FaultCase{"CallsiteOutsideADebug",
                              [](D& d) { d.insts = inst_of("k", "lsu", "<CALLSITE/>"); },
                              {at_line(5, "Unexpected element 'CALLSITE'.")}},
                    FaultCase{"InstInInst",
                              [](D& d) { d.insts = inst_of("k", "lsu", "<MODULEINST/>"); },
                              {at_line(5, "Unexpected element 'MODULEINST'.")}},
                    FaultCase{"ListInItself",
                              [](D& d) { d.ports += "<PORT_LIST/>"; },
                              {at_line(4, "Unexpected element 'PORT_LIST'.")}},
                    FaultCase{"ProfilerInAList",
                              [](D& d) { d.functions += "<PROFILER/>"; },
                              {at_line(2, "Unexpected element 'PROFILER'.")}}),
    name_of);

TEST(ProfilerDocument, EachListComesAtMostOnce) {
    for (const std::string list :
         {"FUNCTION_LIST", "MODULE_LIST", "PORT_LIST", "MODULEINST_LIST", "CONNECTION_LIST"})
        EXPECT_THAT(load("<PROFILER><" + list + "/>\n<" + list + "/></PROFILER>").errors,
                    ElementsAre(at_line(2, "Expected element <" + list + "> to appear exactly once.")));
}

TEST(ProfilerDocument, ListsStandInTheRootAlone) {
    for (const std::string list :
         {"FUNCTION_LIST", "MODULE_LIST", "PORT_LIST", "MODULEINST_LIST", "CONNECTION_LIST"}) {
        const auto unexpected = ElementsAre(at_line(1, "Unexpected element '" + list + "'."));
        EXPECT_THAT(load("<" + list + "/>").errors, unexpected);
        EXPECT_THAT(load("<PROFILER><PROFILER/></PROFILER>").errors,
                    ElementsAre(at_line(1, "Unexpected element 'PROFILER'.")));
    }
}

TEST(ProfilerDocument, AnotherRootIsUnexpected) {
    const LoadedProfiler loaded = load("<board/>");
    EXPECT_THAT(loaded.errors, ElementsAre(at_line(1, "Unexpected element 'board'.")));
    EXPECT_FALSE(loaded.config);
}

TEST(ProfilerDocument, WhatIsNoXmlIsTheParsersError) {
    EXPECT_THAT(load("<PROFILER>").errors,
                ElementsAre(testing::StartsWith("XML error: XML_ERROR_MISMATCHED_ELEMENT, ")));
}

TEST(ProfilerDocument, ATextWithoutARootIsAnEmptyModel) {
    EXPECT_TRUE(load("<!-- nothing -->").config);
}

TEST(ProfilerDocument, NoListIsRequired) {
    const LoadedProfiler loaded = load("<PROFILER/>");
    ASSERT_TRUE(loaded.config);
    EXPECT_EQ(loaded.config->getNumFunctions(), 0u);
    EXPECT_EQ(loaded.config->getNumConnections(), 0u);
}

TEST(ProfilerDocument, WhatIsNotReadYetIsNotThere) {
    const D d;
    EXPECT_THAT(load("<PROFILER><MODULE_LIST>" + d.modules + "</MODULE_LIST><FUNCTION_LIST>" + d.functions +
                     "</FUNCTION_LIST></PROFILER>")
                    .errors,
                ElementsAre(of_document("Function \"k\" does not exist in Module \"lsu\".")));
}

TEST(ProfilerDocument, GivesAllRecords) {
    ProfilerDocument document;
    document.functions =
        "<FUNCTION name='k' num_compute_units='2' filename='k.cl' line_number='7' original_name='o' "
        "user_friendly_name='u'/><FUNCTION name='l' num_compute_units='1' filename=''/>";
    document.modules += "<MODULE name='w' function='' isKernelWrapper='true'/>";
    document.insts =
        "<MODULEINST name='m' function='k' module='lsu' attribute='a;b' isAutorun='true' sharedOn='false'>"
        "<DEBUG file='f' line='1' column='2'><CALLSITE file='g' line='3' column='4'/>"
        "<CALLSITE file='h' line='5' column='6'/></DEBUG><DEBUG file='i' line='7' column='8'/>"
        "<SIGNAL cntl_name='s' incr_name='r' port_tag='t'/></MODULEINST>";
    document.connections = connection("m", "k", "1", "t") + connection("m", "k", "0", "t", "shared_with='t'");
    const auto config = load_good(document);

    ASSERT_EQ(config->getNumFunctions(), 2u);
    const ProfilerConfigFunction& function = *config->getFunction(0);
    EXPECT_EQ(function.getName(), "k");
    EXPECT_EQ(function.getNumComputeUnits(), 2u);
    EXPECT_EQ(function.getFilename(), "k.cl");
    EXPECT_EQ(function.getLinenum(), 7u);
    EXPECT_EQ(function.getOriginalName(), "o");
    EXPECT_EQ(function.getUserFriendlyName(), "u");
    EXPECT_EQ(config->getFunction(1)->getLinenum(), 0u);
    EXPECT_EQ(config->getFunction(1)->getOriginalName(), "");

    const ProfilerConfigModule& lsu = *config->getModuleWithName("lsu");
    EXPECT_EQ(lsu.getFunction(), &function);
    EXPECT_FALSE(lsu.getIsKernelWrapper());
    EXPECT_EQ(config->getModuleWithName("w")->getFunction(), nullptr);
    EXPECT_TRUE(config->getModuleWithName("w")->getIsKernelWrapper());

    const ProfilerConfigPort& port = *config->getPortWithTag("t");
    EXPECT_EQ(port.getCntlName(), "c");
    EXPECT_EQ(port.getIncrName(), "i");
    EXPECT_EQ(port.getDesc(), "d");
    EXPECT_EQ(port.getModule(), &lsu);
    EXPECT_EQ(port.getFlag(), 3u);

    const ProfilerConfigModuleInst& inst = *config->getModuleInstWithNameAndFunction("m", "k");
    EXPECT_EQ(inst.getModule(), &lsu);
    EXPECT_EQ(inst.getAttribute(), "a;b");
    EXPECT_TRUE(inst.getIsAutorun());
    EXPECT_FALSE(inst.getSharedOn());
    ASSERT_EQ(inst.getNumDebugs(), 2u);
    ASSERT_EQ(inst.getDebug(0)->getNumCallsiteLines(), 2u);
    EXPECT_EQ(inst.getDebug(0)->getCallsiteFile(1), "h");
    EXPECT_EQ(inst.getDebug(0)->getCallsiteLine(1), 5u);
    EXPECT_EQ(inst.getDebug(0)->getCallsiteColumn(1), 6u);
    EXPECT_EQ(inst.getDebug(1)->getFile(), "i");
    EXPECT_EQ(inst.getDebug(1)->getNumCallsiteFiles(), 0u);
    ASSERT_EQ(inst.getNumSignals(), 1u);
    EXPECT_EQ(inst.getSignal(0)->getCntlName(), "s");
    EXPECT_EQ(inst.getSignal(0)->getIncrName(), "r");
    EXPECT_EQ(inst.getSignal(0)->getPort(), &port);

    ASSERT_EQ(config->getNumConnections(), 2u);
    EXPECT_EQ(config->getConnection(0)->getModuleInst(), &inst);
    EXPECT_EQ(config->getConnection(0)->getFunction(), &function);
    EXPECT_EQ(config->getConnection(0)->getComputeUnit(), 1u); // one below the number of units
    EXPECT_EQ(config->getConnection(0)->getPort(), &port);
    EXPECT_EQ(config->getConnection(0)->getSharedPort(), nullptr);
    EXPECT_EQ(config->getConnection(1)->getSharedPort(), &port);
}

TEST(ProfilerDocument, WhateverIsNotFalseIsTrueOfAnInstance) {
    for (const auto& [text, value] : {std::pair{"false", false},
                                      {"true", true},
                                      {"TRUE", true},
                                      {"0", true},
                                      {"", true},
                                      {"False", true}}) {
        ProfilerDocument document;
        document.insts = "<MODULEINST name='m' function='k' module='lsu' attribute='' isAutorun='" +
                         std::string(text) + "' sharedOn='" + text + "'/>";
        const auto config = load_good(document);
        EXPECT_EQ(config->getModuleInst(0)->getIsAutorun(), value) << text;
        EXPECT_EQ(config->getModuleInst(0)->getSharedOn(), value) << text;
    }
}

TEST(ProfilerDocument, LoadsFromAFile) {
    ProfilerConfigXmlLoader loader(false);
    testing::internal::CaptureStdout();
    EXPECT_EQ(loader.load_file("/nonexistent/profiler.xml"), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "ERROR FOUND: XML_ERROR_FILE_NOT_FOUND\n");
    EXPECT_EQ(loader.get_num_errors(), 1u);
    EXPECT_EQ(loader.load_profiler_config(nullptr), nullptr);
}

TEST(ProfilerDocument, DebugModeTellsTheWalkButNotItsEnd) {
    ProfilerConfigXmlLoader loader(true);
    testing::internal::CaptureStderr();
    const std::unique_ptr<ProfilerConfig> config(loader.load_xml("<PROFILER/>"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "<PROFILER/>\n[xml] entering document\n"
              "[xml] entering PROFILER\n[xml] exiting PROFILER\n");
}

TEST(ProfilerVisitorDeathTest, VisitorsNeedAModel) {
    ProbeVisitor parent;
    EXPECT_CONTRACT(profiler::xml::ProfilerVisitor(nullptr, nullptr, false), "config != __null");
    EXPECT_CONTRACT(profiler::xml::ProfilerFunctionListVisitor(nullptr, &parent), "config != __null");
    EXPECT_CONTRACT(profiler::xml::ProfilerConnectionListVisitor(nullptr, &parent), "config != __null");
}

} // namespace
} // namespace zan::test
