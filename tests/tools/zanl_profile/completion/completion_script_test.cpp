// SPDX-License-Identifier: Apache-2.0
#include "completion_script.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::HasSubstr;
using testing::StartsWith;
using zan::tool::completion_script;
using zan::tool::CompletionRow;
using zan::tool::quoted_for_shell;

const std::vector<CompletionRow> two_commands = {{"", "command", "a", "none", "it's\nodd"},
                                                 {"a", "option", "-x", "text", "b|c"}};

TEST(CompletionScript, QuotesAreEscapedAsTheShellHasThem) {
    EXPECT_EQ(quoted_for_shell("bash", "it's \\"), "it'\\''s \\");
    EXPECT_EQ(quoted_for_shell("zsh", "it's"), "it'\\''s");
    EXPECT_EQ(quoted_for_shell("fish", "it's \\"), "it\\'s \\\\");
}

TEST(CompletionScript, ATableIsOneTextExceptForFish) {
    EXPECT_THAT(completion_script("bash", two_commands),
                HasSubstr("_zanl_profile_table='|command|a|none|it'\\''s odd\na|option|-x|text|b|c'\n"));
    EXPECT_THAT(
        completion_script("fish", two_commands),
        HasSubstr("__zanl_profile_table '|command|a|none|it\\'s odd' \\\n    'a|option|-x|text|b|c'\n"));
}

TEST(CompletionScript, ThatOfZshBeginsWithWhatItCompletes) {
    EXPECT_THAT(completion_script("zsh", two_commands), StartsWith("#compdef zanl-profile\n"));
}

TEST(CompletionScript, AnotherShellHasNone) {
    EXPECT_EQ(completion_script("tcsh", two_commands), "");
}

} // namespace
