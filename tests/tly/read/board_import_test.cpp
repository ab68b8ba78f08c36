// SPDX-License-Identifier: Apache-2.0
// From a board description to memories and the board's node.
#include "board_import.h"

#include <csignal>

#include "capture.h"
#include "make_package.h"
#include "node_text.h"
#include "temp_dir.h"

namespace {

// A board with these memories.
std::string board_with(const std::string& memories) {
    return R"(
    <board version="17.1" name="small">
      <device device_model="m.xml">
        <used_resources> <les num="1"/> <ffs num="2"/> <dsps num="3"/> <rams num="4"/> </used_resources>
      </device>
      <compile name="default" project="top" revision="top" plexo_file="f" generic_kernel="true">
        <generate cmd="g"/> <synthesize cmd="s"/> <auto_migrate platform_type="none"/>
      </compile>)" +
           memories + R"(
      <host> <kernel_config start="0" size="1"/> </host>
      <interfaces> <kernel_clk_reset clk="c" reset="r"/> </interfaces>
    </board>)";
}

class BoardImport : public testing::Test {
  protected:
    BoardImport() { tree.put("boards.nodes", ""); }

    StageResult import(const PackageSections& sections) {
        make_package(m_path, sections);
        Package package(m_path.c_str());
        return import_board(model, tree, package);
    }

    ProfileModel model;
    ptree tree;

  private:
    const TempDir m_dir;
    const std::string m_path = m_dir.path("design.zanx");
};

TEST_F(BoardImport, MakesAMemoryWithInterfacesAndPorts) {
    EXPECT_EQ(import({{".zan.board_spec.xml", board_with(R"(
      <global_mem name="DDR" max_bandwidth="25600">
        <interface name="i0" port="p" type="agent" width="512" maxburst="16" address="0" size="1024"/>
      </global_mem>)")}}),
              StageResult::done);
    EXPECT_EQ(node_text(tree),
              "boards={nodes=[{type=board board_type=small children=[{type=globalmem "
              "global_memory_name=DDR max_theoretical_globalmem_bw=25600 "
              "max_burst_count=16}]}]}");
    ASSERT_EQ(model.ext_mems.size(), 1u);
    const TlyExtMem& memory = *model.ext_mems.at("DDR");
    EXPECT_EQ(memory.get_name(), "DDR");
    EXPECT_EQ(memory.get_max_burst_count(), 16u);
    ASSERT_EQ(memory.get_num_interfaces(), 1);
    EXPECT_EQ(memory.get_interface_name(0), "i0");
    EXPECT_EQ(memory.get_interface_width(0), 512);
    EXPECT_EQ(memory.get_interface_port_name(0, 0), "p");
}

// The node has the numbers of the second, because those are looked up by name; the model keeps the first.
TEST_F(BoardImport, OfTwoMemoriesOfOneNameTheModelKeepsTheFirst) {
    const std::string board = board_with(R"(
      <global_mem name="DDR" max_bandwidth="25600">
        <interface name="first" port="p" type="agent" width="512" maxburst="16" address="0" size="1024"/>
      </global_mem>
      <global_mem name="DDR" max_bandwidth="100">
        <interface name="second" port="p" type="agent" width="256" maxburst="8" address="1024" size="1024"/>
      </global_mem>)");
    EXPECT_EQ(stderr_of([&] {
                  EXPECT_EQ(import({{".zan.board_spec.xml", board}}), StageResult::done);
              }),
              "Warning: trying to insert new global memory object with a name that already belongs to "
              "an existing global memory. Global memory names must be unique\n");
    ASSERT_EQ(model.ext_mems.size(), 1u);
    EXPECT_EQ(model.ext_mems.at("DDR")->get_interface_name(0), "first");
    EXPECT_EQ(model.ext_mems.at("DDR")->get_max_burst_count(), 16u);
    EXPECT_EQ(node_text(tree),
              "boards={nodes=[{type=board board_type=small children=[{type=globalmem "
              "global_memory_name=DDR max_theoretical_globalmem_bw=100 max_burst_count=8}]}]}");
}

TEST_F(BoardImport, FailsWithoutADescription) {
    EXPECT_EQ(stderr_of([&] {
                  EXPECT_EQ(import({{"a", "1"}}), StageResult::failed);
              }),
              "Error: unable to get board xml zanx section\n");
    EXPECT_TRUE(model.ext_mems.empty());
    EXPECT_EQ(node_text(tree), "boards={nodes=}");
}

using BoardImportDeathTest = BoardImport;

TEST_F(BoardImportDeathTest, ADescriptionThatCanNotBeLoadedEndsTheProcessWithoutAMessage) {
    EXPECT_EXIT(import({{".zan.board_spec.xml", "<board/>"}}), testing::KilledBySignal(SIGSEGV), "^$");
}

TEST_F(BoardImportDeathTest, ThatEndCanNotBePrevented) {
    const auto import_with_signal_blocked = [&] {
        std::signal(SIGSEGV, SIG_IGN);
        sigset_t all;
        sigfillset(&all);
        sigprocmask(SIG_BLOCK, &all, nullptr);
        import({{ ".zan.board_spec.xml", "<board/>" }});
    };
    EXPECT_EXIT(import_with_signal_blocked(), testing::KilledBySignal(SIGSEGV), "^$");
}

} // namespace
