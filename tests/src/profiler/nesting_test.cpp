// SPDX-License-Identifier: Apache-2.0
// Which element may stand where, and how often.
#include "whole_document.h"

namespace zan::test {
namespace {

struct Misplaced {
    const char* name; // of the test
    const char* element;
    unsigned int line;
    std::string xml;
};

void PrintTo(const Misplaced& misplaced, std::ostream* os) {
    *os << misplaced.name;
}

const char* const MODULE = "<MODULE name='x' function='' isKernelWrapper='true'>\n";
const char* const PORT = "<PORT cntl_name='' incr_name='' tag='x' desc='' module='m' flag='0'>\n";
const char* const FUNCTION = "<FUNCTION name='x' num_compute_units='1' filename=''>\n";
const char* const CONNECTION = "<CONNECTION moduleinst='i' function='f' compute_unit='0' port_tag='t'>\n";
const char* const SIGNAL = "<SIGNAL cntl_name='x' incr_name='' port_tag='t'>\n";
const char* const CALLSITE = "<CALLSITE file='x' line='1' column='1'>\n";

// The whole document with `content` as the last thing in `element`.
std::string added(const std::string& element, const std::string& content) {
    return WholeDocument().adding(element, content).text();
}

// `inner` on the second line of a document with the root `outer`.
std::string in_root(const std::string& outer, const std::string& inner) {
    return "<" + outer + ">\n<" + inner + "/>\n</" + outer + ">";
}

const Misplaced MISPLACED[] = {
    // As the root.
    {"OtherRoot", "BOARD", 1, "<BOARD/>"},
    {"OtherRootBeyondTheFirstLine", "profiler", 3, "<?xml version='1.0'?>\n\n<profiler>\n</profiler>"},
    {"RootFunctionList", "FUNCTION_LIST", 2, "\n<FUNCTION_LIST/>"},
    {"RootModuleList", "MODULE_LIST", 2, "\n<MODULE_LIST/>"},
    {"RootPortList", "PORT_LIST", 2, "\n<PORT_LIST/>"},
    {"RootModuleInstList", "MODULEINST_LIST", 2, "\n<MODULEINST_LIST/>"},
    {"RootConnectionList", "CONNECTION_LIST", 2, "\n<CONNECTION_LIST/>"},
    {"RootFunction", "FUNCTION", 1, "<FUNCTION name='f' num_compute_units='1' filename=''/>"},
    {"SecondRootOfAnotherName", "BOARD", 2, "<PROFILER/>\n<BOARD/>"},
    // In the root.
    {"ProfilerInProfiler", "PROFILER", 2, in_root("PROFILER", "PROFILER")},
    {"UnknownInProfiler", "OTHER", 2, in_root("PROFILER", "OTHER")},
    {"FunctionInProfiler", "FUNCTION", 2, in_root("PROFILER", "FUNCTION")},
    {"ModuleInProfiler", "MODULE", 2, in_root("PROFILER", "MODULE")},
    {"PortInProfiler", "PORT", 2, in_root("PROFILER", "PORT")},
    {"ModuleInstInProfiler", "MODULEINST", 2, in_root("PROFILER", "MODULEINST")},
    {"DebugInProfiler", "DEBUG", 2, in_root("PROFILER", "DEBUG")},
    {"CallsiteInProfiler", "CALLSITE", 2, in_root("PROFILER", "CALLSITE")},
    {"SignalInProfiler", "SIGNAL", 2, in_root("PROFILER", "SIGNAL")},
    {"ConnectionInProfiler", "CONNECTION", 2, in_root("PROFILER", "CONNECTION")},
    {"UnknownBehindTheLists", "OTHER", 90, added("PROFILER", "<OTHER/>")},
    // In a list.
    {"ListInFunctionList", "FUNCTION_LIST", 18, added("FUNCTION_LIST", "<FUNCTION_LIST/>")},
    {"ListInModuleList", "MODULE_LIST", 28, added("MODULE_LIST", "<MODULE_LIST/>")},
    {"ListInPortList", "PORT_LIST", 38, added("PORT_LIST", "<PORT_LIST/>")},
    {"ListInModuleInstList", "MODULEINST_LIST", 78, added("MODULEINST_LIST", "<MODULEINST_LIST/>")},
    {"ListInConnectionList", "CONNECTION_LIST", 88, added("CONNECTION_LIST", "<CONNECTION_LIST/>")},
    {"OtherListInFunctionList", "MODULE_LIST", 18, added("FUNCTION_LIST", "<MODULE_LIST/>")},
    {"ProfilerInModuleList", "PROFILER", 28, added("MODULE_LIST", "<PROFILER/>")},
    {"ModuleInFunctionList", "MODULE", 18, added("FUNCTION_LIST", "<MODULE/>")},
    {"PortInModuleList", "PORT", 28, added("MODULE_LIST", "<PORT/>")},
    {"ModuleInstInPortList", "MODULEINST", 38, added("PORT_LIST", "<MODULEINST/>")},
    {"ConnectionInModuleInstList", "CONNECTION", 78, added("MODULEINST_LIST", "<CONNECTION/>")},
    {"FunctionInConnectionList", "FUNCTION", 88, added("CONNECTION_LIST", "<FUNCTION/>")},
    {"DebugInModuleInstList", "DEBUG", 78, added("MODULEINST_LIST", "<DEBUG/>")},
    {"CallsiteInModuleInstList", "CALLSITE", 78, added("MODULEINST_LIST", "<CALLSITE/>")},
    {"SignalInModuleInstList", "SIGNAL", 78, added("MODULEINST_LIST", "<SIGNAL/>")},
    {"UnknownInFunctionList", "x", 18, added("FUNCTION_LIST", "<x/>")},
    {"UnknownInModuleList", "x", 28, added("MODULE_LIST", "<x/>")},
    {"UnknownInPortList", "x", 38, added("PORT_LIST", "<x/>")},
    {"UnknownInModuleInstList", "x", 78, added("MODULEINST_LIST", "<x/>")},
    {"UnknownInConnectionList", "x", 88, added("CONNECTION_LIST", "<x/>")},
    // In an element of a list. The outer element is in order.
    {"FunctionInFunction", "FUNCTION", 19,
     added("FUNCTION_LIST", FUNCTION + std::string("<FUNCTION/></FUNCTION>"))},
    {"UnknownInFunction", "x", 19, added("FUNCTION_LIST", FUNCTION + std::string("<x/></FUNCTION>"))},
    {"ListInFunction", "FUNCTION_LIST", 19,
     added("FUNCTION_LIST", FUNCTION + std::string("<FUNCTION_LIST/></FUNCTION>"))},
    {"ModuleInModule", "MODULE", 29, added("MODULE_LIST", MODULE + std::string("<MODULE/></MODULE>"))},
    {"PortListInModule", "PORT_LIST", 29,
     added("MODULE_LIST", MODULE + std::string("<PORT_LIST/></MODULE>"))},
    {"PortInPort", "PORT", 39, added("PORT_LIST", PORT + std::string("<PORT/></PORT>"))},
    {"ModuleInstInModuleInst", "MODULEINST", 77, added("MODULEINST", "<MODULEINST/>")},
    {"ListInModuleInst", "MODULEINST_LIST", 77, added("MODULEINST", "<MODULEINST_LIST/>")},
    {"CallsiteInModuleInst", "CALLSITE", 77, added("MODULEINST", "<CALLSITE/>")},
    {"UnknownInModuleInst", "x", 77, added("MODULEINST", "<x/>")},
    {"ConnectionInConnection", "CONNECTION", 89,
     added("CONNECTION_LIST", CONNECTION + std::string("<CONNECTION/></CONNECTION>"))},
    // Deeper still.
    {"DebugInDebug", "DEBUG", 68, added("DEBUG", "<DEBUG/>")},
    {"SignalInDebug", "SIGNAL", 68, added("DEBUG", "<SIGNAL/>")},
    {"ModuleInstInDebug", "MODULEINST", 68, added("DEBUG", "<MODULEINST/>")},
    {"UnknownInDebug", "x", 68, added("DEBUG", "<x/>")},
    {"CallsiteInCallsite", "CALLSITE", 69, added("DEBUG", CALLSITE + std::string("<CALLSITE/></CALLSITE>"))},
    {"DebugInCallsite", "DEBUG", 69, added("DEBUG", CALLSITE + std::string("<DEBUG/></CALLSITE>"))},
    {"SignalInSignal", "SIGNAL", 78, added("MODULEINST", SIGNAL + std::string("<SIGNAL/></SIGNAL>"))},
    {"CallsiteInSignal", "CALLSITE", 78, added("MODULEINST", SIGNAL + std::string("<CALLSITE/></SIGNAL>"))},
};

class MisplacedElement : public testing::TestWithParam<Misplaced> {};

INSTANTIATE_TEST_SUITE_P(Nesting, MisplacedElement, testing::ValuesIn(MISPLACED),
                         [](const auto& info) { return std::string(info.param.name); });

// None of the elements has the attributes it should have: its place is looked at first.
TEST_P(MisplacedElement, IsUnexpectedAtItsLine) {
    const Misplaced& row = GetParam();
    expect_refused(row.xml, {at_line(row.line, std::string("Unexpected element '") + row.element + "'.")});
}

class RepeatedList : public testing::TestWithParam<const char*> {};

INSTANTIATE_TEST_SUITE_P(Nesting, RepeatedList,
                         testing::Values("FUNCTION_LIST", "MODULE_LIST", "PORT_LIST", "MODULEINST_LIST",
                                         "CONNECTION_LIST"),
                         [](const auto& info) { return std::string(info.param); });

TEST_P(RepeatedList, IsAllowedOnce) {
    const std::string list = GetParam();
    const std::string once = "Expected element <" + list + "> to appear exactly once.";
    expect_refused("<PROFILER>\n<" + list + "/>\n<" + list + "/>\n<" + list + "/>\n</PROFILER>",
                   {at_line(3, once)});
    expect_refused(WholeDocument().adding("PROFILER", "<" + list + "/>"), {at_line(90, once)});
}

TEST_P(RepeatedList, IsRefusedBeforeItsContentIsSeen) {
    const std::string list = GetParam();
    expect_refused("<PROFILER>\n<" + list + "/>\n<" + list + ">\n<x/></" + list + "></PROFILER>",
                   {at_line(3, "Expected element <" + list + "> to appear exactly once.")});
}

TEST(Nesting, ASecondProfilerAsRoot) {
    expect_refused("<PROFILER/>\n<PROFILER/>\n<PROFILER/>",
                   {at_line(2, "Expected element <PROFILER> to appear exactly once.")});
    expect_refused(WholeDocument().text() + "\n<PROFILER><FUNCTION_LIST/></PROFILER>",
                   {at_line(91, "Expected element <PROFILER> to appear exactly once.")});
}

TEST(Nesting, AFailedRootIsTheLast) {
    expect_refused("<BOARD/>\n<PROFILER/>\n<BOARD/>", {at_line(1, "Unexpected element 'BOARD'.")});
}

TEST(Nesting, ElementsOfListsMayRepeat) {
    const auto config = config_of(
        "<PROFILER><MODULE_LIST>"
        "<MODULE name='a' function='' isKernelWrapper='true'/>"
        "<MODULE name='b' function='' isKernelWrapper='true'/>"
        "<MODULE name='c' function='' isKernelWrapper='true'/>"
        "</MODULE_LIST></PROFILER>");
    EXPECT_EQ(config->getNumModules(), 3u);
}

// An element of the list before is known only once it has been read.
TEST(Order, ModulesAfterFunctionsThatTheyName) {
    const std::string functions =
        "<FUNCTION_LIST><FUNCTION name='f' num_compute_units='1' filename=''/></FUNCTION_LIST>";
    const std::string modules =
        "<MODULE_LIST><MODULE name='m' function='f' isKernelWrapper='false'/></MODULE_LIST>";
    EXPECT_TRUE(config_of("<PROFILER>" + functions + modules + "</PROFILER>"));
    expect_refused("<PROFILER>" + modules + functions + "</PROFILER>",
                   {without_line("Function \"f\" does not exist in Module \"m\".")});
}

TEST(Order, AnyForListsThatNameNothing) {
    const auto config = config_of(
        "<PROFILER><CONNECTION_LIST/><MODULEINST_LIST/>"
        "<MODULE_LIST><MODULE name='m' function='' isKernelWrapper='false'/></MODULE_LIST>"
        "<PORT_LIST><PORT cntl_name='' incr_name='' tag='' desc='' module='m' flag='0'/></PORT_LIST>"
        "<FUNCTION_LIST><FUNCTION name='f' num_compute_units='1' filename=''/></FUNCTION_LIST>"
        "</PROFILER>");
    EXPECT_EQ(config->getNumFunctions(), 1u);
    EXPECT_EQ(config->getPort(0)->getModule(), config->getModule(0));
}

TEST(Order, PortsAfterTheirModules) {
    expect_refused(
        "<PROFILER><PORT_LIST><PORT cntl_name='c' incr_name='n' tag='t' desc='' module='m' flag='0'/>"
        "</PORT_LIST><MODULE_LIST><MODULE name='m' function='' isKernelWrapper='false'/></MODULE_LIST>"
        "</PROFILER>",
        {without_line("Module \"m\" does not exist in Port \"(c,n)\".")});
}

TEST(Order, ConnectionsAfterTheirInstances) {
    expect_refused(
        "<PROFILER><CONNECTION_LIST>"
        "<CONNECTION moduleinst='i' function='f' compute_unit='0' port_tag='t'/>"
        "</CONNECTION_LIST><MODULEINST_LIST/></PROFILER>",
        {without_line("ModuleInst \"i\" does not exist in Function \"f\" in connection of Port tag "
                      "\"t\".")});
}

TEST(Order, PortsBeforeInstancesOnlyIfTheseHaveSignals) {
    const std::string head =
        "<PROFILER><FUNCTION_LIST><FUNCTION name='f' num_compute_units='1' filename=''/></FUNCTION_LIST>"
        "<MODULE_LIST><MODULE name='m' function='f' isKernelWrapper='false'/></MODULE_LIST>";
    const std::string inst =
        "<MODULEINST name='i' function='f' module='m' attribute='' isAutorun='false' "
        "sharedOn='false'>";
    const std::string ports =
        "<PORT_LIST><PORT cntl_name='' incr_name='' tag='t' desc='' module='m' flag='0'/></PORT_LIST>";
    const std::string signal = "<SIGNAL cntl_name='s' incr_name='' port_tag='t'/>";
    EXPECT_TRUE(config_of(head + "<MODULEINST_LIST>" + inst + "</MODULEINST></MODULEINST_LIST>" + ports +
                          "</PROFILER>"));
    expect_refused(head + "<MODULEINST_LIST>" + inst + signal + "</MODULEINST></MODULEINST_LIST>" + ports +
                       "</PROFILER>",
                   {without_line("Port tag \"t\" does not exist in ModuleInst \"s\".")});
}

} // namespace
} // namespace zan::test
