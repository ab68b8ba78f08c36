// SPDX-License-Identifier: Apache-2.0
// Each check of a value, what is checked before what, and what is allowed next to what is refused.
#include "whole_document.h"

namespace zan::test {
namespace {

using testing::IsEmpty;

const char* const SECOND_MODULE = "<MODULE name='m2' function='' isKernelWrapper='false'/>";
const char* const SECOND_PORT = "<PORT cntl_name='c2' incr_name='n2' tag='t2' desc='' module='m2' flag='0'/>";

// The whole document and a second module, "m2", with a port of its own, "t2".
WholeDocument two_modules() {
    return WholeDocument().adding("MODULE_LIST", SECOND_MODULE).adding("PORT_LIST", SECOND_PORT);
}

TEST(FunctionValues, NoComputeUnits) {
    expect_refused(WholeDocument().with("FUNCTION", "num_compute_units", "0"),
                   {at_line(12, "Non-zero num_compute_units value expected.")});
}

TEST(FunctionValues, NoComputeUnitsIsReportedBeforeTheRestIsRead) {
    expect_refused(WholeDocument().with("FUNCTION", "num_compute_units", "0").without("FUNCTION", "filename"),
                   {at_line(12, "Non-zero num_compute_units value expected.")});
}

TEST(FunctionValues, ANumberOf32BitsAndMoreIsCutToThem) {
    expect_refused(WholeDocument().with("FUNCTION", "num_compute_units", "4294967296"),
                   {at_line(12, "Non-zero num_compute_units value expected.")});
    EXPECT_EQ(config_of(WholeDocument().with("FUNCTION", "num_compute_units", "4294967298"))
                  ->getFunction(0)
                  ->getNumComputeUnits(),
              2u);
}

TEST(FunctionValues, NameIsNotUnique) {
    expect_refused(
        WholeDocument().adding("FUNCTION_LIST", "<FUNCTION name='f' num_compute_units='1' filename='g.cl'/>"),
        {without_line("Function name \"f\" is not unique.")});
}

TEST(FunctionValues, UniquenessIsCheckedAfterAllReads) {
    expect_refused(
        WholeDocument().adding("FUNCTION_LIST",
                               "\n<FUNCTION name='f' num_compute_units='1' filename='' line_number='x'/>"),
        {at_line(19, "Incorrect type for attribute 'line_number' on element 'FUNCTION'."),
         at_line(19, "Unsupported line_number value.")});
}

TEST(FunctionValues, NamesDifferByCase) {
    EXPECT_TRUE(config_of(WholeDocument().adding(
        "FUNCTION_LIST", "<FUNCTION name='F' num_compute_units='1' filename='g.cl'/>")));
}

TEST(FunctionValues, TheOtherNamesNeedNotBeUnique) {
    EXPECT_TRUE(config_of(WholeDocument().adding("FUNCTION_LIST",
                                                 "<FUNCTION name='g' num_compute_units='2' filename='f.cl' "
                                                 "original_name='of' user_friendly_name='uf'/>")));
}

TEST(ModuleValues, FunctionDoesNotExist) {
    expect_refused(WholeDocument().with("MODULE", "function", "g"),
                   {without_line("Function \"g\" does not exist in Module \"m\".")});
}

TEST(ModuleValues, NameIsNotUnique) {
    expect_refused(
        WholeDocument().adding("MODULE_LIST", "<MODULE name='m' function='' isKernelWrapper='false'/>"),
        {without_line("Module name \"m\" is not unique.")});
}

TEST(ModuleValues, TheFunctionIsCheckedBeforeTheName) {
    expect_refused(
        WholeDocument().adding("MODULE_LIST", "<MODULE name='m' function='g' isKernelWrapper='x'/>"),
        {without_line("Function \"g\" does not exist in Module \"m\".")});
}

TEST(ModuleValues, BothAreCheckedBeforeIsKernelWrapperIsRead) {
    expect_refused(WholeDocument().with("MODULE", "function", "g").without("MODULE", "isKernelWrapper"),
                   {without_line("Function \"g\" does not exist in Module \"m\".")});
    expect_refused(WholeDocument().adding("MODULE_LIST", "<MODULE name='m' function='f'/>"),
                   {without_line("Module name \"m\" is not unique.")});
}

TEST(ModuleValues, IsKernelWrapperIsExactlyTrueOrFalse) {
    for (const char* value : {"TRUE", "True", "False", "1", "0", "yes", "", " true", "true "}) {
        SCOPED_TRACE(value);
        expect_refused(WholeDocument().with("MODULE", "isKernelWrapper", value),
                       {without_line("isKernelWrapper attribute is expected to be true/false.")});
    }
}

TEST(PortValues, TagIsNotUnique) {
    expect_refused(WholeDocument().adding(
                       "PORT_LIST", "<PORT cntl_name='' incr_name='' tag='t' desc='' module='m' flag='0'/>"),
                   {without_line("Port tag \"t\" is not unique.")});
}

TEST(PortValues, ModuleDoesNotExist) {
    expect_refused(WholeDocument().with("PORT", "module", "x"),
                   {without_line("Module \"x\" does not exist in Port \"(c,n)\".")});
    expect_refused(WholeDocument().with("PORT", "module", ""),
                   {without_line("Module \"\" does not exist in Port \"(c,n)\".")});
}

TEST(PortValues, TheTagIsCheckedBeforeTheModule) {
    expect_refused(WholeDocument().adding(
                       "PORT_LIST", "<PORT cntl_name='' incr_name='' tag='t' desc='' module='x' flag='0'/>"),
                   {without_line("Port tag \"t\" is not unique.")});
}

TEST(ModuleInstValues, FunctionDoesNotExist) {
    expect_refused(WholeDocument().with("MODULEINST", "function", "g"),
                   {without_line("Function \"g\" does not exist in ModuleInst \"i\".")});
    // Other than for a module, an empty function is none.
    expect_refused(WholeDocument().with("MODULEINST", "function", ""),
                   {without_line("Function \"\" does not exist in ModuleInst \"i\".")});
}

TEST(ModuleInstValues, ModuleDoesNotExist) {
    expect_refused(WholeDocument().with("MODULEINST", "module", "x"),
                   {without_line("Module \"x\" does not exist in ModuleInst \"i\".")});
}

TEST(ModuleInstValues, TheFunctionIsCheckedBeforeTheModule) {
    expect_refused(WholeDocument().with("MODULEINST", "function", "g").with("MODULEINST", "module", "x"),
                   {without_line("Function \"g\" does not exist in ModuleInst \"i\".")});
}

TEST(ModuleInstValues, ASecondInstanceOfTheNameIsReportedWithItsModule) {
    expect_refused(two_modules().adding("MODULEINST_LIST",
                                        "<MODULEINST name='i' function='f' module='m2' attribute='' "
                                        "isAutorun='false' sharedOn='false'/>"),
                   {without_line("Module \"m2\" is not unique.")});
}

TEST(ModuleInstValues, TheModuleIsCheckedBeforeUniqueness) {
    expect_refused(WholeDocument().adding("MODULEINST_LIST",
                                          "<MODULEINST name='i' function='f' module='x' attribute='' "
                                          "isAutorun='false' sharedOn='false'/>"),
                   {without_line("Module \"x\" does not exist in ModuleInst \"i\".")});
}

TEST(ModuleInstValues, OneNameMayStandInTwoFunctions) {
    const auto config =
        config_of(WholeDocument()
                      .adding("FUNCTION_LIST", "<FUNCTION name='g' num_compute_units='1' filename=''/>")
                      .adding("MODULEINST_LIST",
                              "<MODULEINST name='i' function='g' module='m' attribute='' "
                              "isAutorun='false' sharedOn='false'/>"));
    EXPECT_EQ(config->getNumModuleInsts(), 2u);
    EXPECT_EQ(config->getModuleInstWithNameAndFunction("i", "g"), config->getModuleInst(1));
}

TEST(LocationValues, DebugWithoutAFile) {
    expect_refused(WholeDocument().with("DEBUG", "file", ""), {without_line("File name cannot be null.")});
    expect_refused(WholeDocument().with("DEBUG", "file", "").with("DEBUG", "line", "x"),
                   {without_line("File name cannot be null.")});
}

TEST(LocationValues, CallsiteWithoutAFile) {
    expect_refused(WholeDocument().with("CALLSITE", "file", ""), {without_line("File name cannot be null.")});
    expect_refused(WholeDocument().with("CALLSITE", "file", "").without("CALLSITE", "line"),
                   {without_line("File name cannot be null.")});
}

TEST(SignalValues, WithoutAControlSignal) {
    expect_refused(WholeDocument().with("SIGNAL", "cntl_name", ""),
                   {without_line("Control signal \"\" cannot be null.")});
    expect_refused(WholeDocument().with("SIGNAL", "cntl_name", "").without("SIGNAL", "incr_name"),
                   {without_line("Control signal \"\" cannot be null.")});
}

TEST(SignalValues, PortTagDoesNotExist) {
    // The signal's own name stands where the text announces the instance's.
    expect_refused(WholeDocument().with("SIGNAL", "port_tag", "x"),
                   {without_line("Port tag \"x\" does not exist in ModuleInst \"sc\".")});
}

TEST(SignalValues, PortOfAnotherModule) {
    expect_refused(two_modules().with("SIGNAL", "port_tag", "t2"),
                   {without_line("Port tag \"t2\" does not belong to module in ModuleInst \"sc\".")});
}

TEST(SignalValues, TheIncrementMayBeEmpty) {
    EXPECT_TRUE(config_of(WholeDocument().with("SIGNAL", "incr_name", "")));
}

TEST(ConnectionValues, InstanceDoesNotExist) {
    expect_refused(
        WholeDocument().with("CONNECTION", "moduleinst", "j"),
        {without_line("ModuleInst \"j\" does not exist in Function \"f\" in connection of Port tag \"t\".")});
}

TEST(ConnectionValues, InstanceOfAnotherFunction) {
    expect_refused(
        WholeDocument()
            .adding("FUNCTION_LIST", "<FUNCTION name='g' num_compute_units='9' filename=''/>")
            .with("CONNECTION", "function", "g"),
        {without_line("ModuleInst \"i\" does not exist in Function \"g\" in connection of Port tag \"t\".")});
}

TEST(ConnectionValues, FunctionDoesNotExist) {
    expect_refused(
        WholeDocument().with("CONNECTION", "function", "x"),
        {without_line("ModuleInst \"i\" does not exist in Function \"x\" in connection of Port tag \"t\".")});
}

TEST(ConnectionValues, ComputeUnitIsBelowTheirNumber) {
    const std::string message = "Compute unit is incorrect in ModuleInst \"i\" and function \"f\".";
    for (const char* value : {"2", "3", "4294967295"}) {
        SCOPED_TRACE(value);
        expect_refused(WholeDocument().with("CONNECTION", "compute_unit", value), {without_line(message)});
    }
    for (const char* value : {"0", "1"})
        EXPECT_THAT(loaded(WholeDocument().with("CONNECTION", "compute_unit", value).text()).errors,
                    IsEmpty());
}

TEST(ConnectionValues, ComputeUnitBelowTheLargestNumber) {
    WholeDocument document = WholeDocument().with("FUNCTION", "num_compute_units", "4294967295");
    EXPECT_EQ(config_of(document.with("CONNECTION", "compute_unit", "4294967294"))
                  ->getConnection(0)
                  ->getComputeUnit(),
              4294967294u);
    expect_refused(document.with("CONNECTION", "compute_unit", "4294967295"),
                   {without_line("Compute unit is incorrect in ModuleInst \"i\" and function \"f\".")});
}

TEST(ConnectionValues, PortTagDoesNotExist) {
    expect_refused(WholeDocument().with("CONNECTION", "port_tag", "x"),
                   {without_line("Port tag \"x\" does not exist in ModuleInst \"i\" and function \"f\".")});
}

TEST(ConnectionValues, SharedPortTagDoesNotExist) {
    expect_refused(
        WholeDocument().with("CONNECTION", "shared_with", "x"),
        {without_line("Shared Port tag \"x\" does not exist in ModuleInst \"i\" and function \"f\".")});
}

TEST(ConnectionValues, AnEmptySharedPortTagIsLookedUpToo) {
    expect_refused(
        WholeDocument().with("CONNECTION", "shared_with", ""),
        {without_line("Shared Port tag \"\" does not exist in ModuleInst \"i\" and function \"f\".")});
}

TEST(ConnectionValues, PortOfAnotherModule) {
    expect_refused(two_modules().with("CONNECTION", "port_tag", "t2"),
                   {without_line("Port tag \"t2\" and ModuleInst \"i\" do not match.")});
}

TEST(ConnectionValues, TheSharedPortMayBeOfAnotherModule) {
    const auto config = config_of(two_modules().with("CONNECTION", "shared_with", "t2"));
    EXPECT_EQ(config->getConnection(0)->getSharedPort(), config->getPortWithTag("t2"));
}

// Every later fault is still there when the earlier one is reported.
TEST(ConnectionValues, AreCheckedInTheirOrder) {
    WholeDocument document = two_modules().with("CONNECTION", "port_tag", "t2");
    document.with("CONNECTION", "shared_with", "x");
    expect_refused(document, {without_line("Shared Port tag \"x\" does not exist in ModuleInst \"i\" and "
                                           "function \"f\".")});
    document.with("CONNECTION", "port_tag", "y");
    expect_refused(document, {without_line("Port tag \"y\" does not exist in ModuleInst \"i\" and "
                                           "function \"f\".")});
    document.with("CONNECTION", "compute_unit", "2");
    expect_refused(document, {without_line("Compute unit is incorrect in ModuleInst \"i\" and function "
                                           "\"f\".")});
    document.with("CONNECTION", "moduleinst", "j");
    expect_refused(document, {without_line("ModuleInst \"j\" does not exist in Function \"f\" in connection "
                                           "of Port tag \"y\".")});
}

TEST(ConnectionValues, AllIsReadBeforeAnyCheck) {
    expect_refused(WholeDocument().with("CONNECTION", "moduleinst", "j").without("CONNECTION", "port_tag"),
                   {at_line(80, "Expected attribute 'port_tag' on element 'CONNECTION'."),
                    at_line(80, "Unsupported port_tag string.")});
}

TEST(Values, StandInMessagesDecodedAndUnescaped) {
    expect_refused(WholeDocument().with("MODULE", "function", "&lt;&quot;%s\xc3\xa9"),
                   {without_line("Function \"<\"%s\xc3\xa9\" does not exist in Module \"m\".")});
}

TEST(Values, TheFirstErrorEndsTheWalk) {
    expect_refused(WholeDocument()
                       .with("MODULE", "function", "g")
                       .with("PORT", "module", "x")
                       .without("CONNECTION", "function")
                       .adding("MODULE_LIST", "<MODULE/><OTHER/>"),
                   {without_line("Function \"g\" does not exist in Module \"m\".")});
}

} // namespace
} // namespace zan::test
