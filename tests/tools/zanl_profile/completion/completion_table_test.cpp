// SPDX-License-Identifier: Apache-2.0
#include "completion_table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <CLI/CLI.hpp>

namespace {

using zan::tool::completion_table;
using zan::tool::CompletionRow;

// "command|what|name|kind|text".
std::vector<std::string> texts(const std::vector<CompletionRow>& rows) {
    std::vector<std::string> result;
    for (const CompletionRow& row : rows)
        result.push_back(row.command + "|" + row.what + "|" + row.name + "|" + row.kind + "|" + row.text);
    return result;
}

TEST(CompletionTable, HasCommandsThenOptionsAndArgumentsThenTheCommandsBelow) {
    CLI::App program("A program.", "program");
    program.set_help_flag("-h,--help", "help");
    CLI::App* const upper = program.add_subcommand("upper", "has others");
    upper->set_help_flag();
    CLI::App* const lower = upper->add_subcommand("lower", "does the work");
    lower->set_help_flag();
    std::string design, color;
    std::vector<std::string> sections;
    lower->add_option("DESIGN", design, "the package");
    lower->add_option("SECTION", sections, "its sections");
    lower->add_option("--color", color, "when")->type_name("WHEN");

    EXPECT_THAT(texts(completion_table(program)),
                testing::ElementsAre("|command|upper|none|has others", "|option|-h|none|help",
                                     "|option|--help|none|help", "upper|command|lower|none|does the work",
                                     "upper lower|argument|1|files:zanx|the package",
                                     "upper lower|argument|more|section|its sections",
                                     "upper lower|option|--color|words:auto,always,never|when"));
}

} // namespace
