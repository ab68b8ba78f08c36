// SPDX-License-Identifier: Apache-2.0
#include "command_search.h"

#include <gtest/gtest.h>

#include <CLI/CLI.hpp>

#include "failure.h"

namespace {

using namespace zan::tool;

using Words = std::vector<std::string>;

// A program with the commands `show`, `store list` and `store pack [--depth N] [--all]`.
class CommandSearch : public testing::Test {
  protected:
    CommandSearch() {
        program.add_subcommand("show");
        CLI::App* const store = program.add_subcommand("store");
        store->add_subcommand("list");
        CLI::App* const pack = store->add_subcommand("pack");
        pack->add_option("--depth", depth);
        pack->add_flag("--all");
    }
    Words ordered(const Words& words) { return find_command(program, words, own).arguments; }
    std::string meant(const Words& words) { return full_name(*find_command(program, words, own).app); }
    std::string refused(const Words& words) {
        try {
            find_command(program, words, own);
        } catch (const Failure& failure) {
            return failure.what();
        }
        return "(none)";
    }

    const Words own = {"-V"};
    int depth = 0;
    CLI::App program{"", "tester"};
};

TEST_F(CommandSearch, NamesLeadToACommand) {
    EXPECT_EQ(meant({}), "tester");
    EXPECT_EQ(meant({"store"}), "tester store");
    EXPECT_EQ(meant({"store", "list", "show"}), "tester store list");
    EXPECT_EQ(command_names(program), (Words{"show", "store"}));
}

TEST_F(CommandSearch, OptionsBeforeTheNameMoveAfterIt) {
    EXPECT_EQ(ordered({"--all", "store", "--depth=1", "pack", "x"}),
              (Words{"store", "pack", "--all", "--depth=1", "x"}));
    EXPECT_EQ(ordered({"--all", "-V", "show"}), (Words{"-V", "show", "--all"}));
    EXPECT_EQ(ordered({"show", "-", "--", "--all"}), (Words{"show", "-", "--", "--all"}));
}

// "list" after --depth is its value, after --all a command.
TEST_F(CommandSearch, AValueMovesWithItsOption) {
    EXPECT_EQ(ordered({"--depth", "show", "store", "pack"}), (Words{"store", "pack", "--depth", "show"}));
    EXPECT_EQ(meant({"store", "--all", "list"}), "tester store list");
}

TEST_F(CommandSearch, AfterTwoDashesThereIsNoCommand) {
    EXPECT_EQ(meant({"--", "show"}), "tester");
    EXPECT_EQ(meant({"store", "--", "list"}), "tester store");
}

TEST_F(CommandSearch, AnUnknownWordIsRefusedWithTheNearestCommandOfAnyLevel) {
    EXPECT_EQ(refused({"shwo"}), "unknown command 'shwo'; did you mean 'show'?");
    EXPECT_EQ(refused({"list"}), "unknown command 'list'; did you mean 'store list'?");
    EXPECT_EQ(refused({"store", "lst"}), "unknown command 'lst'; did you mean 'list'?");
    EXPECT_EQ(refused({"store", "show"}), "unknown command 'show'; did you mean 'tester show'?");
    EXPECT_EQ(refused({"--all", "nothing"}), "unknown command 'nothing'");
    EXPECT_EQ(refused({"-"}), "unknown command '-'");
}

} // namespace
