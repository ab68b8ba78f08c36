// Programs of a test's own; the toolbox's commands are in toolbox_test.cpp.
#include "command_line.h"

#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <new>
#include <stdexcept>

#include "capture.h"
#include "failure.h"
#include "run_program.h"
#include "tly_constants.h"

namespace {

using namespace zan::tool;

template <class Exception>
void define_failing(CLI::App& app) {
    app.callback([] { throw Exception("it\nfailed"); });
}

const Command greet = {"greet", "print a greeting",
                       [](CLI::App& app) { app.callback([] { std::fputs("hello\n", stdout); }); }};
const Command fail = {"fail", "end early", define_failing<Failure>};
const Command say_no = {"no", "find nothing", [](CLI::App& app) {
                            app.callback([] { throw Failure("it isn't there", status_no); });
                        }};
const Command run_out = {"run-out", "use up memory",
                         [](CLI::App& app) { app.callback([] { throw std::bad_alloc(); }); }};
const Command stop = {"stop", "meet a fault", define_failing<std::runtime_error>};

constexpr const Command* commands[] = {&greet, &fail, &say_no, &run_out, &stop};
const Command program = {"tester", "Tests command lines.",
                         [](CLI::App& app) { add_commands(app, commands); }};

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
    EXPECT_EQ(run({}), (Outcome{"", "tester: no command is given\nsee 'tester --help'\n", "2"}));
    EXPECT_EQ(run({"gret"}), (Outcome{"", "tester: unknown command 'gret'; did you mean 'greet'?\n", "2"}));
    EXPECT_EQ(
        run({"greet", "--halp"}),
        (Outcome{"", "tester: unknown option '--halp'; did you mean '--help'?\nsee 'tester greet --help'\n",
                 "2"}));
}

// As exec() allows it.
TEST(CommandLine, AProgramMayHaveNoNameAmongItsArguments) {
    const char* const none[] = {nullptr};
    EXPECT_EQ(stderr_of([&] { EXPECT_EQ(run_command_line(program, 0, none), 2); }),
              "tester: no command is given\nsee 'tester --help'\n");
}

} // namespace
