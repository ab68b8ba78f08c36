// SPDX-License-Identifier: Apache-2.0
// `zanl-profile completion` as users run it; tests/install completes words in each of the shells.
#include "toolbox_fixture.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;

using CompletionCommand = Toolbox;

TEST_F(CompletionCommand, PrintsAScriptThatKnowsAllCommands) {
    for (const char* const shell : {"bash", "zsh", "fish"}) {
        const Outcome outcome = run({"completion", shell});
        EXPECT_EQ(outcome.status, "0");
        EXPECT_EQ(outcome.err, "");
        EXPECT_THAT(outcome.out, HasSubstr("|command|package|none|")) << shell;
        EXPECT_THAT(outcome.out, HasSubstr("history|command|list|none|list the runs, oldest first")) << shell;
        EXPECT_THAT(outcome.out, HasSubstr("completion|argument|1|words:bash,zsh,fish|")) << shell;
    }
    EXPECT_THAT(run({"completion", "zsh"}).out, StartsWith("#compdef zanl-profile\n"));
}

TEST_F(CompletionCommand, BashCompletesWithItsScript) {
    EXPECT_EQ(shell("source <($T completion bash); COMP_WORDS=(zanl-profile hist); COMP_CWORD=1; "
                    "$(complete -p zanl-profile | sed 's/.*-F //; s/ .*//'); echo \"${COMPREPLY[@]}\"")
                  .out,
              "history\n");
}

TEST_F(CompletionCommand, AnotherShellIsNamed) {
    EXPECT_EQ(run({"completion", "tcsh"}), trouble("completion takes bash, zsh or fish, not 'tcsh'"));
    EXPECT_EQ(shell("$T completion bash >/dev/full"),
              trouble("can't write to 'standard output': No space left on device"));
}

} // namespace
