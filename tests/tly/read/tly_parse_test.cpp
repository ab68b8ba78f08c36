// SPDX-License-Identifier: Apache-2.0
// The stages of a run for callers that have a path, a tree and containers of their own.
#include "tly_parse.h"

#include "capture.h"
#include "description.h"
#include "make_package.h"
#include "node_text.h"
#include "profile_model.h"
#include "temp_dir.h"
#include "whole_file.h"

namespace {

class PackageStages : public testing::Test {
  protected:
    // The path of a package with these sections.
    const char* package(const PackageSections& sections) {
        make_package(m_path, sections);
        return m_path.c_str();
    }
    const char* nowhere() {
        m_path = m_dir.path("nowhere.zanx");
        return m_path.c_str();
    }

    ptree tree;

  private:
    const TempDir m_dir;
    std::string m_path = m_dir.path("design.zanx");
};

TEST_F(PackageStages, ASectionIsCopiedAndEnded) {
    char* text = nullptr;
    EXPECT_EQ(get_zanx_sect("b", package({{"a", "1"}, {"b", "two\0three"}}), &text), 0);
    const std::unique_ptr<char[]> owned(text);
    EXPECT_STREQ(text, "two");
}

TEST_F(PackageStages, AnEmptySectionIsAnEmptyText) {
    char* text = nullptr;
    EXPECT_EQ(get_zanx_sect("a", package({{"a", ""}}), &text), 0);
    const std::unique_ptr<char[]> owned(text);
    EXPECT_STREQ(text, "");
}

TEST_F(PackageStages, ASectionThatIsNotThereMakesNoText) {
    char* text = nullptr;
    EXPECT_EQ(get_zanx_sect("b", package({{"a", "1"}}), &text), 1);
    EXPECT_EQ(text, nullptr);
}

TEST_F(PackageStages, APackageThatIsNotThereMakesNoText) {
    char* text = nullptr;
    EXPECT_EQ(get_zanx_sect("a", nowhere(), &text), 2);
    EXPECT_EQ(text, nullptr);
}

TEST_F(PackageStages, TheVersionIsTheFirstLine) {
    EXPECT_EQ(parseVersionFile(&tree, package({{".zan.version", "4.2 Build 117\nmore\n"}})), 0);
    EXPECT_EQ(node_text(tree), "versions={zanx_version=4.2 Build 117}");
}

TEST_F(PackageStages, APackageWithoutVersionHasAMessage) {
    const char* const path = package({{"a", "1"}});
    EXPECT_EQ(stderr_of([&] { EXPECT_EQ(parseVersionFile(&tree, path), 1); }),
              "Error: unable to get version zanx section\n");
    EXPECT_EQ(node_text(tree), "");
}

TEST_F(PackageStages, TheClockGoesToTheRunInformation) {
    tree.put("run_info.nodes..name", "profile");
    EXPECT_EQ(parseVelmoraReport(&tree, package({{".zan.velmora_report", "x\nActual clock freq: 240.5\n"}})),
              0);
    EXPECT_EQ(node_text(tree), "run_info={nodes=[{name=profile fmax=240.5}]}");
}

TEST_F(PackageStages, APackageWithoutTimingReportHasAMessage) {
    tree.put("run_info.nodes..name", "profile");
    EXPECT_EQ(stderr_of([&] { EXPECT_EQ(parseVelmoraReport(&tree, nowhere()), 1); }),
              "Error: unable to get velmora report zanx section\n");
    EXPECT_EQ(node_text(tree), "run_info={nodes=[{name=profile}]}");
}

constexpr const char* small_board = R"(
    <board version="17.1" name="small">
      <device device_model="m.xml">
        <used_resources> <les num="1"/> <ffs num="2"/> <dsps num="3"/> <rams num="4"/> </used_resources>
      </device>
      <compile name="default" project="top" revision="top" plexo_file="f" generic_kernel="true">
        <generate cmd="g"/> <synthesize cmd="s"/> <auto_migrate platform_type="none"/>
      </compile>
      <global_mem name="DDR" max_bandwidth="25600">
        <interface name="i0" port="p" type="agent" width="512" maxburst="16" address="0" size="1024"/>
      </global_mem>
      <host> <kernel_config start="0" size="1"/> </host>
      <interfaces> <kernel_clk_reset clk="c" reset="r"/> </interfaces>
    </board>)";

using Memories = std::unordered_map<std::string, TlyExtMem*>;

class BoardStage : public PackageStages {
  protected:
    BoardStage() { tree.put("boards.nodes", ""); }

    ~BoardStage() override { delete_ext_mems(memories); }

    Memories memories;
};

TEST_F(BoardStage, MakesTheMemoriesAndTheNode) {
    EXPECT_EQ(parseBoardXMLFile(&tree, package({{".zan.board_spec.xml", small_board}}), memories), 0);
    EXPECT_EQ(node_text(tree),
              "boards={nodes=[{type=board board_type=small children=[{type=globalmem "
              "global_memory_name=DDR max_theoretical_globalmem_bw=25600 "
              "max_burst_count=16}]}]}");
    ASSERT_EQ(memories.size(), 1u);
    const TlyExtMem& memory = *memories.at("DDR");
    EXPECT_EQ(memory.get_max_burst_count(), 16u);
    ASSERT_EQ(memory.get_num_interfaces(), 1);
    EXPECT_EQ(memory.get_interface_name(0), "i0");
    EXPECT_EQ(memory.get_interface_width(0), 512);
    EXPECT_EQ(memory.get_interface_port_name(0, 0), "p");
}

TEST_F(BoardStage, APackageWithoutDescriptionHasAMessage) {
    const char* const path = package({{"a", "1"}});
    EXPECT_EQ(stderr_of([&] { EXPECT_EQ(parseBoardXMLFile(&tree, path, memories), 1); }),
              "Error: unable to get board xml zanx section\n");
    EXPECT_TRUE(memories.empty());
}

class ModelStages : public PackageStages {
  protected:
    ModelStages() {
        for (const char* list : {"kernels.nodes", "memtransfers.nodes"})
            tree.put(list, "");
    }
    ~ModelStages() override { delete_kernels(kernels); }

    int read(const std::string& lines, bool no_profiler = false) {
        write_file(m_dir.path("profile.mon"), lines);
        return parseProfilerMONFile(&kernels, &tree, m_dir.path("profile.mon"), original_names, memories,
                                    no_profiler);
    }

    ProfileModel::Kernels kernels;
    ProfileModel::OriginalNames original_names;
    Memories memories;

  private:
    const TempDir m_dir;
};

TEST_F(ModelStages, TheKernelsOfADescriptionAreTheCallers) {
    const std::string xml = Description().function("k", "original_name='o'").xml();
    EXPECT_EQ(parseProfilerXMLFile(&kernels, &tree, package({{".zan.profiler.xml", xml}}), &original_names),
              0);
    EXPECT_EQ(kernels.at("k")->get_name(), "k");
    EXPECT_EQ(original_names, (ProfileModel::OriginalNames{{"o", "k"}}));
}

TEST_F(ModelStages, APackageWithoutADescriptionHasAStatusOfItsOwn) {
    const char* const path = package({{"a", "1"}});
    EXPECT_EQ(stderr_of([&] { EXPECT_EQ(parseProfilerXMLFile(&kernels, &tree, path, &original_names), 2); }),
              "Warning: No profiler elf section. Will only return kernel start/stop time and memory "
              "transfer times between device & host.\n");
    EXPECT_TRUE(kernels.empty());
}

TEST_F(ModelStages, KernelsThatLinesMakeAreTheCallers) {
    kernels["k"] = new TlyKernel("k");
    EXPECT_EQ(read("0,1,k,1,2,-1,0\n0,1,l,3,4,-1,0\n", true), 0);
    EXPECT_EQ(kernels.size(), 2u);
    EXPECT_EQ(kernels.at("l")->get_start_time(), 3);
    EXPECT_EQ(expanded(tree.get_child("kernels.nodes")).size(), 2u);
}

TEST_F(ModelStages, AnExceptionLeavesTheCallersContainersAsTheyAre) {
    kernels["k"] = new TlyKernel("k");
    memories["m"] = nullptr;
    EXPECT_THROW(read("0,1,k,1,2,-1,0\n0,1,2\n", true), std::out_of_range);
    ASSERT_EQ(kernels.size(), 1u);
    EXPECT_EQ(kernels.at("k")->get_start_time(), 1);
    EXPECT_TRUE(memories.contains("m"));
}

} // namespace
