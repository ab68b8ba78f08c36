// SPDX-License-Identifier: Apache-2.0
// Commands of zanl-profile where the system fails in a rare way: files that shrink, disks that lose what they
// are handed, pipes, and calls that a system doesn't have.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "fault_fixture.h"
#include "make_package.h"
#include "traced_fixture.h"

namespace {

using testing::Contains;

class OddFaults : public Traced<FaultTest> {
  protected:
    void start() override {
        make_package(dir.path("p.zanx"), {{"a", std::string(300, 'a')}, {"b", "1"}});
        write("f", std::string(400, 'f'));
        write("d/e/f", "12");
        write("d/g", "345");
    }

    static std::function<int()> package_command(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "package");
        return program_body(ZAN_TOOLBOX, arguments);
    }
    // Runs the command with each call in turn that counts for this fault. Calls `check(run)` after each of
    // them; the folder is as it was before each of them. Returns what was struck.
    template <typename Check>
    Words strike_each(const std::vector<std::string>& arguments, Fault fault, Check check) const {
        const Tree before = tree();
        const auto body = package_command(arguments);
        const int count = run_traced(body, dir.path(), {.calls = fault.calls, .file = fault.file}).calls;
        Words struck;
        for (fault.number = 1; fault.number <= count; ++fault.number) {
            restore(before);
            const TracedRun run = run_traced(body, dir.path(), fault);
            SCOPED_TRACE(run.struck + " " + std::to_string(fault.number));
            struck.insert(run.struck);
            check(run);
        }
        restore(before);
        return struck;
    }
};

Outcome trouble_of(const std::string& text) {
    return {"", "zanl-profile: " + text + "\n", "2"};
}

// Only the sizes of sections are looked at, so lost contents aren't noticed.
TEST_F(OddFaults, APackageWhoseHeadersAreLostIsSeenBeforeTheOldOneIsGone) {
    const std::string no_package =
        "'p.zanx' is no package: it is no ELF file of the 32-bit class with named sections";
    struct Row {
        std::vector<std::string> arguments;
        std::string section_is_lost;
    };
    const Row rows[] = {
        {{"add", "p.zanx", "c=f"}, "can't write section 'c' of 'p.zanx': it did not reach the file"},
        {{"remove", "p.zanx", "a"}, "can't write 'p.zanx': a section did not reach the file"}};
    for (const auto& [arguments, section_is_lost] : rows) {
        const Tree before = tree();
        std::set<std::string> messages;
        strike_each(arguments, {.calls = Calls::writes, .is_lost = true}, [&](const TracedRun& run) {
            if (run.outcome.status == "0" || run.struck.starts_with("copy_file_range"))
                return;
            messages.insert(run.outcome.err);
            EXPECT_EQ(run.outcome.status, "2");
            EXPECT_EQ(tree(), before);
        });
        EXPECT_EQ(messages, (std::set{trouble_of(no_package).err, trouble_of(section_is_lost).err}));
    }
}

TEST_F(OddFaults, WhereANameIsTakenAFileGetsAnother) {
    std::size_t num_links = 0;
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"create", "new.zanx", "a=f"},
                                                      std::vector<std::string>{"update", "p.zanx", "a=f"}}) {
        const Tree before = tree();
        EXPECT_EQ(run_whole(package_command(arguments)).outcome.status, "0");
        const Tree after = tree();
        restore(before);
        const Fault taken = {.calls = Calls::others, .error = EEXIST, .file = "(unfinished)"};
        strike_each(arguments, taken, [&](const TracedRun& run) {
            if (run.struck != "linkat (unfinished)")
                return;
            ++num_links;
            EXPECT_EQ(run.outcome, (Outcome{"", "", "0"}));
            EXPECT_EQ(tree(), after);
        });
    }
    EXPECT_EQ(num_links, 2u);
}

// Systems that are older than openat2(), and those that forbid it. Of so many folders not all stay open, so
// that some are opened again from far above.
TEST_F(OddFaults, AFolderIsOpenedStepByStepWhereThatIsNotPossibleInOneCall) {
    std::string deep = "deep";
    for (int i = 0; i < 180; ++i)
        deep += "/d";
    write(deep + "/f", "12");
    ASSERT_EQ(run_whole(package_command({"pack", "s.stream", deep + "/f", "f", deep})).outcome.status, "0");
    std::filesystem::create_directories(dir.path("to/" + deep));
    for (const int error : {ENOSYS, EPERM}) {
        const TracedRun run = run_traced(
            package_command({"unpack", "s.stream", "-o", "to"}), dir.path(),
            {.calls = Calls::opens, .number = 1, .error = error, .lasting = true, .call = "openat2"});
        EXPECT_GT(run.calls, 0);
        EXPECT_EQ(run.outcome, (Outcome{"", "", "0"}));
        EXPECT_EQ(read("to/" + deep + "/f"), "12");
        EXPECT_EQ(read("to/f"), read("f"));
        write("to/" + deep + "/f", "old");
    }
}

// So many entries are waited for at once.
TEST_F(OddFaults, ManyEntriesThatDoNotReachTheDiskAreReported) {
    for (int i = 0; i <= 100; ++i)
        write("many/" + std::to_string(i), "");
    std::filesystem::create_directories(dir.path("to/many"));
    ASSERT_EQ(run_whole(package_command({"pack", "s.stream", "many"})).outcome.status, "0");
    const Words struck = strike_each(
        {"unpack", "s.stream", "-o", "to"},
        {.calls = Calls::others, .error = EIO, .file = "to/.unfinished-XXXXXX"}, [](const TracedRun& run) {
            if (!run.struck.starts_with("syncfs "))
                return;
            EXPECT_EQ(run.outcome, trouble_of("can't write to the folder 'to': Input/output error"));
        });
    EXPECT_THAT(struck, Contains("syncfs to/.unfinished-XXXXXX"));
}

TEST_F(OddFaults, AFileThatShrinksWhileItIsPackedIsReported) {
    const Fault at_end = {.calls = Calls::reads, .number = 1, .error = 0, .file = "d/g"};
    const Tree before = tree();
    for (const char* output : {"new.stream", "p.zanx:s"}) {
        const TracedRun run = run_traced(package_command({"pack", output, "d"}), dir.path(), at_end);
        EXPECT_EQ(run.struck, "read d/g");
        EXPECT_EQ(run.outcome, trouble_of("can't read 'd/g': it became shorter meanwhile"));
        EXPECT_EQ(tree(), before);
    }
}

TEST_F(OddFaults, WithoutATemporaryFileNothingIsPackedIntoASection) {
    const Tree before = tree();
    const TracedRun run = run_traced(
        package_command({"pack", "p.zanx:s", "d"}), dir.path(),
        {.calls = Calls::opens, .number = 1, .error = EMFILE, .lasting = true, .file = "(temporary)"});
    EXPECT_EQ(run.calls, 2); // of a file without a name, and of one with a name
    EXPECT_EQ(run.outcome, trouble_of("can't make a temporary file: Too many open files"));
    EXPECT_EQ(tree(), before);
}

// Two pipes in the folder, and a history.
class PipeFaults : public OddFaults {
  protected:
    void start() override {
        OddFaults::start();
        write("run.json", read_file(std::filesystem::path(ZAN_SAMPLE) / "expected_report.json"));
        const auto add = program_body(ZAN_TOOLBOX, {"history", "add", "runs.db", "run.json"});
        ASSERT_EQ(run_whole(add).outcome.status, "0");
        run_whole(package_command({"pack", "s.stream", "d/g"}));
        std::filesystem::create_directories(dir.path("to/d"));
        for (const char* pipe : {"pipe", "to/d/g"})
            ASSERT_EQ(::mkfifo(dir.path(pipe).c_str(), 0600), 0);
    }

    // The outcome of a run in which the first of these calls on the pipe fails. The pipe is open for reading,
    // so that writing to it doesn't wait.
    Outcome outcome(const std::vector<std::string>& arguments, Calls calls, const std::string& pipe) const {
        const int reader = ::open(dir.path(pipe).c_str(), O_RDWR | O_CLOEXEC);
        const TracedRun run = run_traced(program_body(ZAN_TOOLBOX, arguments), dir.path(),
                                         {.calls = calls, .number = 1, .error = EIO, .file = pipe});
        ::close(reader);
        EXPECT_EQ(run.struck, (calls == Calls::closes ? "close " : "openat ") + pipe);
        return run.outcome;
    }
};

TEST_F(PipeFaults, APipeThatCannotBeOpenedOrClosedIsReported) {
    struct PipeUse {
        std::vector<std::string> arguments;
        std::string pipe;
    };
    const PipeUse uses[] = {{{"history", "trend", "runs.db", "--kernel", "Scale, 32-bit float", "--metric",
                              "kernel_time", "--html", "pipe"},
                             "pipe"},
                            {{"package", "unpack", "s.stream", "-o", "to", "--trust-names"}, "to/d/g"}};
    for (const auto& [arguments, pipe] : uses) {
        EXPECT_EQ(outcome(arguments, Calls::opens, pipe),
                  trouble_of("can't write '" + pipe + "': Input/output error"));
        EXPECT_EQ(outcome(arguments, Calls::closes, pipe),
                  trouble_of("can't write to '" + pipe + "': Input/output error"));
    }
    EXPECT_EQ(outcome({"package", "pack", "pipe", "d"}, Calls::opens, "pipe"),
              trouble_of("can't write 'pipe': Input/output error"));
}

} // namespace
