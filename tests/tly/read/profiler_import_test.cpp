// SPDX-License-Identifier: Apache-2.0
// What a profiler description becomes: kernels, instances, and their attributes and locations.
#include <gmock/gmock.h>

#include "import_fixture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

// Kernel "k" with an instance "m" that has one counter.
Description one_inst(const std::string& attribute = "", const std::string& debugs = "") {
    return Description()
        .function("k")
        .module("lsu", {"bandwidth"})
        .inst("k", "m", "lsu", attribute, false, false, debugs)
        .connect("k", "m", "bandwidth");
}

TEST_F(ImportTest, WithoutASectionTheRunIsOneOfTimesAlone) {
    EXPECT_EQ(import_package({{".zan.version", "1"}}), 2);
    EXPECT_EQ(messages,
              "Warning: No profiler elf section. Will only return kernel start/stop time and "
              "memory transfer times between device & host.\n");
    EXPECT_THAT(kernels, IsEmpty());
}

TEST_F(ImportTest, APackageThatCannotBeOpenedIsAFailure) {
    EXPECT_EQ(import_from("/nonexistent/design.zanx"), 1);
    EXPECT_EQ(messages, "Error unable to read profiler elf section\n");
}

TEST_F(ImportTest, ADescriptionThatCannotBeLoadedIsAFailureAndLeavesNothing) {
    for (const char* text :
         {"", "no XML", "<PROFILER>", "<BOARD/>", "<PROFILER><PORT/></PROFILER>",
          "<PROFILER><FUNCTION_LIST><FUNCTION name='k' num_compute_units='1' filename='f'/>"
          "<FUNCTION name='k' num_compute_units='1' filename='f'/></FUNCTION_LIST>"
          "</PROFILER>"}) {
        EXPECT_EQ(import_text(text), 1) << text;
        EXPECT_EQ(messages, "Error: unable to load profiler.xml file\n") << text;
        EXPECT_THAT(kernels, IsEmpty()) << text;
        EXPECT_THAT(original_names, IsEmpty()) << text;
    }
}

TEST_F(ImportTest, TheTextEndsAtItsFirstNul) {
    EXPECT_EQ(import_text("<PROFILER/>" + std::string("\0<garbage", 9)), 0);
    EXPECT_EQ(messages, "");
}

TEST_F(ImportTest, AnEmptyDescriptionHasNoKernels) {
    EXPECT_EQ(import_text("<PROFILER/>"), 0);
    EXPECT_THAT(kernels, IsEmpty());
}

TEST_F(ImportTest, FunctionsWithoutConnectionsAreKernelsWithoutInstances) {
    import(Description()
               .function("a")
               .function("b")
               .module("lsu", {"bandwidth"})
               .inst("a", "m", "lsu", "", true));
    ASSERT_EQ(kernels.size(), 2u);
    EXPECT_THAT(kernels.at("a")->get_module_insts(), IsEmpty()); // what isn't connected isn't made
    EXPECT_THAT(kernels.at("b")->get_module_insts(), IsEmpty());
    EXPECT_FALSE(kernels.at("a")->is_autorun_kernel());
    EXPECT_EQ(messages, "");
}

TEST_F(ImportTest, AKernelTakesNamesAndPlaceOfItsFunction) {
    import(Description().function("k", "line_number='12' original_name='o' user_friendly_name='Friendly'"));
    const TlyKernel& kernel = *kernels.at("k");
    EXPECT_EQ(kernel.get_name(), "k");
    EXPECT_EQ(kernel.get_original_name(), "o");
    EXPECT_EQ(kernel.get_user_friendly_name(), "Friendly");
    EXPECT_EQ(kernel.get_filename(), "k.cl");
    EXPECT_EQ(kernel.get_line_num(), 12);
}

TEST_F(ImportTest, TheFirstKernelThatClaimsAnOriginalNameKeepsIt) {
    import(Description()
               .function("a", "original_name='o'")
               .function("b", "original_name='o'")
               .function("c", "original_name=''")
               .function("d", "original_name='p'"));
    EXPECT_THAT(original_names, ElementsAre(Pair("o", "a"), Pair("p", "d")));
}

struct AttributeCase {
    const char* text;
    const char* memory_type;
    const char* others; // read or write, unit, memory, width, optimisation, joined by "|"
};

TEST_F(ImportTest, AttributesAreTakenByTheirPlaces) {
    const AttributeCase cases[] = {
        {"", "", "||||"},
        {"__global", "__global", "||||"},
        {";", "", "||||"},
        {"__global;read;UNIT;DDR", "__global", "||||"},       // too few for the others
        {"__global;read;UNIT;DDR;512;x", "__global", "||||"}, // six
        {"a;b;c;d;e;f;g", "a", "b|c|d|e|g"},                  // nothing takes f
        {"a;b;c;d;e;;g", "a", "b|c|d|e|g"},
        {"a;b;c;d;e;f;", "a", "b|c|d|e|"}, // the seventh field is empty
        {";;;;;;", "", "||||"},
        {"a;b;c;d;e;f;g;h;i", "a", "b|c|d|e|g"},
    };
    for (const AttributeCase& expected : cases) {
        forget();
        import(one_inst(expected.text));
        const TlyModuleInst& made = inst("k", "m");
        EXPECT_EQ(made.getAttrMemoryType(), expected.memory_type) << expected.text;
        EXPECT_EQ(made.getAttrRw() + "|" + made.getAttrLsuType() + "|" + made.getAttrGlobalMemName() + "|" +
                      made.getAttrByteWidth() + "|" + made.getAttrMemoryOpt(),
                  expected.others)
            << expected.text;
    }
}

TEST_F(ImportTest, AnInstanceTakesTheNamesOfItsRecords) {
    import(Description()
               .function("k")
               .module("lsu", {"bandwidth"})
               .inst("k", "m", "lsu", "", true, true)
               .connect("k", "m", "bandwidth"));
    const TlyModuleInst& made = inst("k", "m");
    EXPECT_EQ(made.getModule(), "lsu");
    EXPECT_EQ(made.getFunction(), "k");
    EXPECT_TRUE(made.isAutorun());
    EXPECT_TRUE(made.compiledSharedCounters());
    EXPECT_EQ(made.getNumComputeUnits(), 1);
    EXPECT_TRUE(kernels.at("k")->is_autorun_kernel());
}

TEST_F(ImportTest, AnAutorunInstanceMakesItsKernelAutorunAfterOthersThatArenT) {
    import(Description()
               .function("k")
               .module("lsu", {"bandwidth"})
               .inst("k", "plain", "lsu")
               .inst("k", "autorun", "lsu", "", true)
               .connect("k", "plain", "bandwidth")
               .connect("k", "autorun", "bandwidth"));
    EXPECT_TRUE(kernels.at("k")->is_autorun_kernel());
}

TEST_F(ImportTest, InstancesStandInTheOrderOfTheirFirstConnections) {
    import(Description()
               .function("k")
               .module("lsu", {"bandwidth", "memorystalls"})
               .inst("k", "a", "lsu")
               .inst("k", "b", "lsu")
               .connect("k", "b", "bandwidth")
               .connect("k", "a", "bandwidth")
               .connect("k", "b", "memorystalls"));
    EXPECT_EQ(all_counters(),
              "k b bandwidth:7 memorystalls:9\n"
              "k a bandwidth:8\n");
}

TEST_F(ImportTest, InstancesOfOneNameInTwoKernelsAreTwo) {
    import(Description()
               .function("a")
               .function("b")
               .module("lsu", {"bandwidth"})
               .inst("a", "m", "lsu", "", true)
               .inst("b", "m", "lsu")
               .connect("a", "m", "bandwidth")
               .connect("b", "m", "bandwidth"));
    EXPECT_TRUE(inst("a", "m").isAutorun());
    EXPECT_FALSE(inst("b", "m").isAutorun());
}

// Locations of an instance as "file:line:column", call sites in brackets.
std::string locations(const TlyModuleInst& inst) {
    std::string text;
    for (int i = 0; i < inst.getNumLines(); ++i) {
        const std::string location = inst.getFileName(i) + ":" + std::to_string(inst.getLine(i)) + ":" +
                                     std::to_string(inst.getColNum(i));
        text += inst.getIsCallsite(i) == 1 ? "[" + location + "]" : location;
        text += " ";
    }
    EXPECT_EQ(inst.getNumFilenames(), inst.getNumLines());
    EXPECT_EQ(inst.getNumCols(), inst.getNumLines());
    return text;
}

TEST_F(ImportTest, EachLocationIsFollowedByItsCallSites) {
    import(one_inst("",
                    "<DEBUG file='f' line='1' column='2'>"
                    "<CALLSITE file='g' line='3' column='4'/><CALLSITE file='h' line='5' column='6'/>"
                    "</DEBUG><DEBUG file='i' line='7' column='8'/>"));
    EXPECT_EQ(locations(inst("k", "m")), "f:1:2 [g:3:4] [h:5:6] i:7:8 ");
}

TEST_F(ImportTest, ACallSiteOfLineZeroIsNone) {
    import(one_inst("",
                    "<DEBUG file='f' line='0' column='2'>" // a location of line 0 is one
                    "<CALLSITE file='g' line='0' column='4'/><CALLSITE file='h' line='5' column='6'/>"
                    "</DEBUG>"));
    EXPECT_EQ(locations(inst("k", "m")), "f:0:2 [h:5:6] ");
}

TEST_F(ImportTest, EachInstanceGetsTheClock) {
    struct ClockCase {
        const char* text;
        float fmax;
    };
    for (const ClockCase& expected : {ClockCase{"240.5", 240.5f},
                                      {" 240.5", 240.5f},
                                      {"240.5\r", 240.5f},
                                      {"1e2", 100.0f},
                                      {"-3", -3.0f},
                                      {"", 0.0f},
                                      {"fast", 0.0f},
                                      {"240.5 MHz", 0.0f},
                                      {"240,5", 0.0f}}) {
        forget();
        set_clock(expected.text);
        import(one_inst());
        EXPECT_EQ(inst("k", "m").getFmax(), expected.fmax) << expected.text;
    }
}

TEST_F(ImportTest, WithoutAClockItIsZero) {
    tree = ptree();
    import(one_inst());
    EXPECT_EQ(inst("k", "m").getFmax(), 0.0f);
}

} // namespace
