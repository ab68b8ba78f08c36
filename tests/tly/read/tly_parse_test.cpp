// The stages of a run that read one section each, for callers that have a path and a tree.
#include <csignal>

#include "capture.h"
#include "make_package.h"
#include "node_text.h"
#include "temp_dir.h"
#include "tly_parse.h"

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

// ---- Sections

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

// ---- Version

TEST_F(PackageStages, TheVersionIsTheFirstLine) {
    EXPECT_EQ(parseVersionFile(&tree, package({{".zan.version", "4.2 Build 117\nmore\n"}})), 0);
    EXPECT_EQ(node_text(tree), "versions={zanx_version=4.2 Build 117}");
}

TEST_F(PackageStages, APackageWithoutVersionIsTold) {
    const char* const path = package({{"a", "1"}});
    EXPECT_EQ(stderr_of([&] { EXPECT_EQ(parseVersionFile(&tree, path), 1); }),
              "Error: unable to get version zanx section\n");
    EXPECT_EQ(node_text(tree), "");
}

// ---- Timing report

TEST_F(PackageStages, TheClockGoesToTheRunInformation) {
    tree.put("run_info.nodes..name", "profile");
    EXPECT_EQ(parseVelmoraReport(&tree, package({{".zan.velmora_report", "x\nActual clock freq: 240.5\n"}})),
              0);
    EXPECT_EQ(node_text(tree), "run_info={nodes=[{name=profile fmax=240.5}]}");
}

TEST_F(PackageStages, APackageWithoutTimingReportIsTold) {
    tree.put("run_info.nodes..name", "profile");
    EXPECT_EQ(stderr_of([&] { EXPECT_EQ(parseVelmoraReport(&tree, nowhere()), 1); }),
              "Error: unable to get velmora report zanx section\n");
    EXPECT_EQ(node_text(tree), "run_info={nodes=[{name=profile}]}");
}

// ---- Board

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

    // Interfaces of memories live as long as the process, and so do the memories here: who looks for leaks
    // finds the one through the other.
    static Memories& new_memories() {
        static auto* const all = new std::vector<Memories>;
        return all->emplace_back();
    }

    Memories& memories = new_memories();
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

TEST_F(BoardStage, APackageWithoutDescriptionIsTold) {
    const char* const path = package({{"a", "1"}});
    EXPECT_EQ(stderr_of([&] { EXPECT_EQ(parseBoardXMLFile(&tree, path, memories), 1); }),
              "Error: unable to get board xml zanx section\n");
    EXPECT_TRUE(memories.empty());
}

using BoardStageDeathTest = BoardStage;

TEST_F(BoardStageDeathTest, OneThatCanNotBeLoadedEndsTheProcessWithoutAWord) {
    const char* const path = package({{".zan.board_spec.xml", "<board/>"}});
    EXPECT_EXIT(parseBoardXMLFile(&tree, path, memories), testing::KilledBySignal(SIGSEGV), "^$");
}

TEST_F(BoardStageDeathTest, NobodyKeepsThatEndBack) {
    const char* const path = package({{".zan.board_spec.xml", "<board/>"}});
    const auto load_with_signal_kept_back = [&] {
        std::signal(SIGSEGV, SIG_IGN);
        sigset_t all;
        sigfillset(&all);
        sigprocmask(SIG_BLOCK, &all, nullptr);
        parseBoardXMLFile(&tree, path, memories);
    };
    EXPECT_EXIT(load_with_signal_kept_back(), testing::KilledBySignal(SIGSEGV), "^$");
}

} // namespace
