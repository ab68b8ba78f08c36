// SPDX-License-Identifier: Apache-2.0
// Programs of a test's own; the toolbox's commands are in toolbox_test.cpp.
#include "command_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <new>
#include <stdexcept>

#include "capture.h"
#include "failure.h"
#include "run_program.h"
#include "tly_constants.h"

namespace {

using namespace zan::tool;

template <class Exception>
void define_failing(CLI::App& app, Console&) {
    app.callback([] { throw Exception("it\nfailed"); });
}

const Command greet = {"greet", "print a greeting",
                       [](CLI::App& app, Console&) { app.callback([] { std::fputs("hello\n", stdout); }); },
                       "tester greet\ntester greet --quiet"};
const Command fail = {"fail", "end early", define_failing<Failure>, "tester fail"};
const Command say_no = {
    "no", "find nothing",
    [](CLI::App& app, Console&) { app.callback([] { throw Failure("it isn't there", status_no); }); },
    "tester no", "it isn't there"};
const Command run_out = {"run-out", "use up memory",
                         [](CLI::App& app, Console&) { app.callback([] { throw std::bad_alloc(); }); },
                         "tester run-out"};
const Command stop = {"stop", "meet a fault", define_failing<std::runtime_error>, "tester stop"};

// Prints what it was asked for.
void define_echo(CLI::App& app, Console& console) {
    const auto words = std::make_shared<std::vector<std::string>>();
    const auto rules = std::make_shared<std::vector<std::string>>();
    app.add_option("WORD", *words, "words");
    app.add_option("--rule", *rules, "rules");
    add_json_option(app, console);
    app.callback([&console, words, rules] {
        std::printf("json %d, quiet %d, color %d, words", console.json, console.quiet,
                    static_cast<int>(console.color));
        for (const std::string& word : *words)
            std::printf(" %s", word.c_str());
        std::fputs(", rules", stdout);
        for (const std::string& rule : *rules)
            std::printf(" %s", rule.c_str());
    });
}
const Command echo = {"echo", "print the options", define_echo, "tester echo"};

constexpr const Command* commands[] = {&greet, &fail, &say_no, &run_out, &stop, &echo};
const Command program = {"tester", "Tests command lines.",
                         [](CLI::App& app, Console& console) { add_commands(app, console, commands); },
                         "tester greet"};

Outcome run(std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), "tester");
    arguments.push_back(nullptr);
    int status = 0;
    std::string err;
    const std::string out = stdout_of([&] {
        err = stderr_of([&] {
            status = run_command_line(program, static_cast<int>(arguments.size() - 1), arguments.data());
        });
    });
    return {out, err, std::to_string(status)};
}

TEST(CommandLine, ACommandDoesItsWork) {
    EXPECT_EQ(run({"greet"}), (Outcome{"hello\n", "", "0"}));
}

TEST(CommandLine, AFailureEndsTheCommandWithItsTextAndStatus) {
    EXPECT_EQ(run({"fail"}), (Outcome{"", "tester: it\nfailed\n", "2"}));
    EXPECT_EQ(run({"no"}), (Outcome{"", "tester: it isn't there\n", "1"}));
}

TEST(CommandLine, NoExceptionLeavesTheProgram) {
    EXPECT_EQ(run({"run-out"}), (Outcome{"", "tester: there is not enough memory\n", "2"}));
    EXPECT_EQ(run({"stop"}), (Outcome{"", "tester: it\nfailed\n", "2"}));
}

TEST(CommandLine, HelpListsTheCommandsInTheirOrder) {
    const Outcome outcome = run({"--help"});
    EXPECT_EQ(outcome.status, "0");
    EXPECT_EQ(outcome.err, "");
    std::size_t last = 0;
    for (const Command* command : commands) {
        const std::size_t found = outcome.out.find(std::string("\n  ") + command->name + " ");
        EXPECT_GT(found, last) << command->name;
        EXPECT_NE(found, outcome.out.npos) << command->name;
        EXPECT_NE(outcome.out.find(command->summary), outcome.out.npos) << command->name;
        last = found;
    }
}

TEST(CommandLine, TheVersionIsTheOneOfReports) {
    EXPECT_EQ(run({"--version"}), (Outcome{"tester " + tly_version + "\n", "", "0"}));
}

TEST(CommandLine, WrongUseIsReportedWithAHint) {
    EXPECT_EQ(run({"-q"}), (Outcome{"", "tester: no command is given\nsee 'tester --help'\n", "2"}));
    EXPECT_EQ(run({"gret"}), (Outcome{"", "tester: unknown command 'gret'; did you mean 'greet'?\n", "2"}));
    EXPECT_EQ(
        run({"greet", "--halp"}),
        (Outcome{"", "tester: unknown option '--halp'; did you mean '--help'?\nsee 'tester greet --help'\n",
                 "2"}));
}

TEST(CommandLine, ACommandReceivesTheOptionsInCommon) {
    EXPECT_EQ(run({"echo"}).out, "json 0, quiet 0, color 0, words, rules");
    EXPECT_EQ(run({"echo", "--json", "--quiet", "--color", "always"}).out,
              "json 1, quiet 1, color 1, words, rules");
    EXPECT_EQ(run({"--color=never", "-q", "echo"}).out, "json 0, quiet 1, color 2, words, rules");
}

// "a" is no command, so it is the value of --rule; the option takes one word each time.
TEST(CommandLine, AnOptionTakesOneValueOnEitherSideOfTheCommand) {
    EXPECT_EQ(run({"--rule", "a", "echo", "--rule", "b", "c", "--rule=d", "e"}).out,
              "json 0, quiet 0, color 0, words c e, rules a b d");
    EXPECT_EQ(run({"echo", "--", "--rule"}).out, "json 0, quiet 0, color 0, words --rule, rules");
}

TEST(CommandLine, ACommandWithoutJsonRefusesTheOption) {
    EXPECT_EQ(run({"--json", "greet"}),
              (Outcome{"", "tester: unknown option '--json'\nsee 'tester greet --help'\n", "2"}));
}

TEST(CommandLine, TheHelpOfACommandEndsWithItsExampleAndItsStatuses) {
    EXPECT_THAT(run({"help", "greet"}).out,
                testing::EndsWith("\n\nExample:\n"
                                  "  tester greet\n"
                                  "  tester greet --quiet\n"
                                  "\n"
                                  "Exit status:\n"
                                  "  0  all went well\n"
                                  "  2  wrong use, or something can't be read or written\n"));
    EXPECT_THAT(run({"help", "no"}).out, testing::HasSubstr("\n  1  it isn't there\n  2  "));
}

// As exec() allows it.
TEST(CommandLine, AProgramMayHaveNoNameAmongItsArguments) {
    const char* const none[] = {nullptr};
    EXPECT_EQ(stderr_of([&] { EXPECT_EQ(run_command_line(program, 0, none), 2); }), run({"--help"}).out);
}

} // namespace
