// SPDX-License-Identifier: Apache-2.0
// Help, versions and wrong use of the toolbox.
#include "package_commands.h"
#include "tly_constants.h"
#include "toolbox_fixture.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;

#define ZAN_NAME(name) #name,
constexpr const char* package_commands[] = {ZAN_PACKAGE_COMMANDS(ZAN_NAME)};
#undef ZAN_NAME

using ToolboxCommandLine = Toolbox;

TEST_F(ToolboxCommandLine, HelpListsTheCommandsOfItsLevel) {
    const Outcome top = run({"--help"});
    EXPECT_EQ(top.status, "0");
    EXPECT_EQ(top.err, "");
    EXPECT_THAT(top.out, HasSubstr("Usage: zanl-profile [OPTIONS] COMMAND"));
    EXPECT_THAT(top.out, HasSubstr("package "));
    const Outcome package = run({"package", "--help"});
    EXPECT_EQ(package.status, "0");
    EXPECT_EQ(package.err, "");
    EXPECT_THAT(package.out, HasSubstr("Usage: zanl-profile package [OPTIONS] COMMAND"));
    for (const char* command : package_commands)
        EXPECT_THAT(package.out, HasSubstr(std::string("\n  ") + command + " "));
}

TEST_F(ToolboxCommandLine, EachCommandHasHelp) {
    for (const char* command : package_commands) {
        for (const char* option : {"--help", "-h"}) {
            const Outcome outcome = run({"package", command, option});
            EXPECT_EQ(outcome.status, "0");
            EXPECT_EQ(outcome.err, "");
            EXPECT_THAT(outcome.out, HasSubstr(std::string("Usage: zanl-profile package ") + command + " "));
        }
    }
}

TEST_F(ToolboxCommandLine, TheVersionIsTheOneOfReports) {
    const Outcome version = {"zanl-profile " + tly_version + "\n", "", "0"};
    EXPECT_EQ(run({"--version"}), version);
    EXPECT_EQ(run({"-V"}), version);
    EXPECT_EQ(run({"package", "-V", "list"}), version);
}

TEST_F(ToolboxCommandLine, WithoutArgumentsItPrintsTheHelpAsATrouble) {
    const Outcome help = run({"--help"});
    EXPECT_EQ(run({}), (Outcome{"", help.out, "2"}));
    EXPECT_EQ(run({"package"}),
              (Outcome{"", "zanl-profile: no command is given\nsee 'zanl-profile package --help'\n", "2"}));
}

TEST_F(ToolboxCommandLine, HelpIsACommandToo) {
    EXPECT_EQ(run({"help"}), run({"--help"}));
    EXPECT_EQ(run({"help", "package"}), run({"package", "--help"}));
    EXPECT_EQ(run({"help", "package", "list"}), run({"package", "list", "--help"}));
    EXPECT_EQ(run({"help", "package", "lst"}), trouble("unknown command 'lst'; did you mean 'list'?"));
}

TEST_F(ToolboxCommandLine, EachHelpPageHasAnExampleAndTheStatuses) {
    std::vector<std::vector<std::string>> pages = {{"help"}, {"help", "help"}, {"help", "package"}};
    for (const char* command : package_commands)
        pages.push_back({"help", "package", command});
    for (const auto& page : pages) {
        const std::string text = run(page).out;
        EXPECT_THAT(text, HasSubstr("\nExample:\n  zanl-profile ")) << page.back();
        EXPECT_THAT(text, HasSubstr("\nExit status:\n  0  all went well\n")) << page.back();
        EXPECT_THAT(text, testing::EndsWith("\n  2  wrong use, or something can't be read or written\n"));
    }
}

TEST_F(ToolboxCommandLine, OptionsStandOnEitherSideOfTheCommand) {
    make("p.zanx", {{"a", "1"}});
    const Outcome list = run({"package", "list", "p.zanx", "--json", "--quiet", "--color", "never"});
    EXPECT_EQ(list.status, "0");
    EXPECT_EQ(run({"--json", "-q", "--color", "never", "package", "list", "p.zanx"}), list);
    EXPECT_EQ(run({"--quiet", "package", "--color=never", "--json", "list", "p.zanx"}), list);
    write("d/f", "1");
    EXPECT_EQ(run({"-C", "d", "package", "pack", "s", "f"}), silent_success);
    EXPECT_TRUE(exists("s"));
}

TEST_F(ToolboxCommandLine, AColorThatIsNoChoiceIsReported) {
    EXPECT_EQ(run({"package", "list", "p.zanx", "--color", "red"}),
              trouble("--color takes auto, always or never, not 'red'"));
}

TEST_F(ToolboxCommandLine, AnUnknownCommandIsReportedWithTheNearestOne) {
    EXPECT_EQ(run({"packag"}), trouble("unknown command 'packag'; did you mean 'package'?"));
    EXPECT_EQ(run({"package", "lsit", "x"}), trouble("unknown command 'lsit'; did you mean 'list'?"));
    EXPECT_EQ(run({"package", "unpak"}), trouble("unknown command 'unpak'; did you mean 'unpack'?"));
    EXPECT_EQ(run({"package", "something"}), trouble("unknown command 'something'"));
    EXPECT_EQ(run({"package", "\x1b[2J"}), trouble("unknown command '⟨U+001B⟩[2J'"));
    EXPECT_EQ(run({"list"}), trouble("unknown command 'list'; did you mean 'package list'?"));
    EXPECT_EQ(run({"--quiet", "shwo"}), trouble("unknown command 'shwo'; did you mean 'package show'?"));
    EXPECT_EQ(run({"package", "help"}), trouble("unknown command 'help'; did you mean 'zanl-profile help'?"));
}

TEST_F(ToolboxCommandLine, AnUnknownOptionIsReportedWithTheNearestOne) {
    EXPECT_EQ(run({"package", "list", "x", "--jsno"}),
              (Outcome{"",
                       "zanl-profile: unknown option '--jsno'; did you mean '--json'?\n"
                       "see 'zanl-profile package list --help'\n",
                       "2"}));
    EXPECT_EQ(
        run({"package", "pack", "o", "d", "--nothing=1"}),
        (Outcome{"", "zanl-profile: unknown option '--nothing'\nsee 'zanl-profile package pack --help'\n",
                 "2"}));
}

TEST_F(ToolboxCommandLine, MissingAndSurplusArgumentsAreReported) {
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"package", "create"},
                                                      {"package", "list"},
                                                      {"package", "list", "a", "b"},
                                                      {"package", "show", "a"},
                                                      {"package", "show", "a", "b", "c"},
                                                      {"package", "extract", "a"},
                                                      {"package", "add", "a"},
                                                      {"package", "update", "a"},
                                                      {"package", "remove", "a"},
                                                      {"package", "copy", "a", "b"},
                                                      {"package", "pack", "a"},
                                                      {"package", "unpack", "a"},
                                                      {"package", "unpack", "a", "-o", "d", "--json"}}) {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, "2");
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(outcome.err, StartsWith("zanl-profile: "));
        EXPECT_THAT(outcome.err, HasSubstr("\nsee 'zanl-profile package " + arguments[1] + " --help'\n"));
        EXPECT_TRUE(tree().empty());
    }
}

TEST_F(ToolboxCommandLine, AStandardOutputThatCannotBeWrittenIsReported) {
    make("p.zanx", {{"a", "1"}});
    const std::string text = "zanl-profile: can't write to 'standard output': No space left on device\n";
    EXPECT_EQ(shell("$T package list p.zanx >/dev/full"), (Outcome{"", text, "2"}));
    EXPECT_EQ(shell("$T package list p.zanx --json >/dev/full"), (Outcome{"", text, "2"}));
    EXPECT_EQ(shell("$T package show p.zanx a >/dev/full"), (Outcome{"", text, "2"}));
    EXPECT_EQ(shell("$T --help >/dev/full"),
              trouble("can't write to standard output: No space left on device"));
}

} // namespace
