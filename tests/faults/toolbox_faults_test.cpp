// SPDX-License-Identifier: Apache-2.0
// The commands of zanl-profile where system calls fail: each ends with all done, or with one message and
// nothing done.
#include "fault_fixture.h"
#include "make_package.h"
#include "traced_fixture.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

// A command, and what a failure may leave of its work: nothing, or some whole files.
struct Case {
    std::string name;
    std::vector<std::string> arguments;
    bool works_file_by_file = false;
};

const std::vector<Case> cases = {
    {"Create", {"create", "new.zanx", "a=f", "b=g"}},
    {"CreateInPlaceOfAFile", {"create", "p.zanx", "a=f"}},
    {"CreateFromSample", {"create", "new.zanx", "--from", "sample"}},
    {"List", {"list", "p.zanx"}},
    {"Show", {"show", "p.zanx", "a"}},
    {"Extract", {"extract", "p.zanx", "-o", "to"}},
    {"ExtractIntoAFolder", {"extract", "p.zanx", "-o", "there"}, true},
    {"Add", {"add", "p.zanx", "c=f"}},
    {"Update", {"update", "p.zanx", "a=f"}},
    {"Remove", {"remove", "p.zanx", "a"}},
    {"Copy", {"copy", "q.zanx", "p.zanx", "x"}},
    {"Pack", {"pack", "new.stream", "d"}},
    {"PackInPlaceOfAFile", {"pack", "old.stream", "d"}},
    {"PackIntoASection", {"pack", "p.zanx:s", "d"}},
    {"PackToStandardOutput", {"pack", "-", "d"}},
    {"Unpack", {"unpack", "s.stream", "-o", "to"}},
    {"UnpackIntoAFolder", {"unpack", "s.stream", "-o", "there"}, true},
    {"UnpackASection", {"unpack", "r.zanx:s", "-o", "to"}},
    {"UnpackDryRun", {"unpack", "s.stream", "-o", "to", "--dry-run"}},
    {"UnpackTrusted", {"unpack", "s.stream", "-o", "to", "--trust-names"}, true},
};

class ToolboxFaults : public Traced<FaultTest>, public testing::WithParamInterface<Case> {
  protected:
    void start() override {
        make_package(dir.path("p.zanx"), {{"a", std::string(300, 'a')}, {"b", "1"}});
        make_package(dir.path("q.zanx"), {{"x", "xx"}});
        write("f", std::string(400, 'f'));
        write("g", "g");
        write("d/f", "12");
        write("d/e/g", "345");
        write("sample/sections/version", "1.0\n");
        write("there/d/f", "old");
        write("there/other", "other");
        run_whole(toolbox({"pack", "s.stream", "d"}));
        run_whole(toolbox({"pack", "old.stream", "f"}));
        make_package(dir.path("r.zanx"), {{"s", read("s.stream")}});
        before = tree();
        whole = run_whole(body());
        after = tree();
    }

    static std::function<int()> toolbox(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "package");
        return program_body(ZAN_TOOLBOX, arguments);
    }
    std::function<int()> body() const { return toolbox(GetParam().arguments); }

    // With each of these calls failing, the command does all its work or none of it. `spared`
    // describes the calls that it can do without.
    void expect_all_or_nothing(Calls calls, int error, bool lasting, const std::string& spared) const {
        with_each_call_failing(
            body(), calls, error, lasting, [&] { restore(before); },
            [&](const TracedRun& run) {
                if (run.outcome.status == "0") {
                    EXPECT_THAT(run.struck, testing::MatchesRegex(spared));
                    expect_done(run);
                } else {
                    expect_failure(run, error);
                }
            });
    }

    void expect_done(const TracedRun& run) const {
        EXPECT_EQ(run.outcome, whole.outcome);
        Tree now = tree();
        // A folder that can't be looked into can't be removed.
        if (run.struck.find("unfinished-XXXXXX") != run.struck.npos)
            std::erase_if(
                now, [](const auto& entry) { return entry.first.find("unfinished-") != std::string::npos; });
        EXPECT_EQ(now, after);
    }

    void expect_failure(const TracedRun& run, int error) const {
        const auto& [out, err, status] = run.outcome;
        EXPECT_EQ(status, "2");
        EXPECT_THAT(err, StartsWith("zanl-profile: can't "));
        // libelf has a text of its own for what it can't read.
        EXPECT_THAT(err, testing::AnyOf(EndsWith(std::string(": ") + std::strerror(error) + "\n"),
                                        EndsWith(": cannot read data from file\n")));
        EXPECT_EQ(std::ranges::count(err, '\n'), 1) << err;
        EXPECT_THAT(err, testing::Not(HasSubstr("unfinished-"))) << "a name that the user doesn't know";
        EXPECT_TRUE(whole.outcome.out.starts_with(out)) << out;
        const Tree now = tree();
        if (GetParam().works_file_by_file)
            expect_whole_files(now);
        else
            EXPECT_EQ(now, before);
    }

    // Each file is as it was, or as it has to be.
    void expect_whole_files(const Tree& now) const {
        for (const auto& [name, bytes] : before)
            EXPECT_TRUE(now.contains(name)) << name;
        for (const auto& [name, bytes] : now) {
            const auto old = before.find(name);
            const auto done = after.find(name);
            EXPECT_TRUE((old != before.end() && bytes == old->second) ||
                        (done != after.end() && bytes == done->second))
                << name << ": " << bytes;
        }
    }

    Tree before;
    Tree after;
    TracedRun whole;
};

TEST_P(ToolboxFaults, WithoutAFaultTheWorkIsDone) {
    EXPECT_EQ(whole.outcome.status, "0");
    EXPECT_EQ(whole.outcome.err, "");
    EXPECT_TRUE(after != before || whole.outcome.out != "");
}

// The exceptions are a read after the last byte, which only finds the end, and one that ends the removal of a
// folder.
TEST_P(ToolboxFaults, AFailedReadLeavesAllAsItWas) {
    expect_all_or_nothing(Calls::reads, EIO, false, "read s\\.stream");
    expect_all_or_nothing(Calls::folder_reads, EIO, false, "getdents64 there/\\.unfinished-.*");
}

TEST_P(ToolboxFaults, AFileThatCannotBeReadToItsEndLeavesAllAsItWas) {
    expect_all_or_nothing(Calls::reads, EIO, true, "read s\\.stream");
}

// What the system can't copy goes through memory.
TEST_P(ToolboxFaults, AFailedWriteLeavesAllAsItWas) {
    expect_all_or_nothing(Calls::writes, EIO, false, "copy_file_range .*");
}

TEST_P(ToolboxFaults, AFullDiskLeavesAllAsItWas) {
    expect_all_or_nothing(Calls::writes, ENOSPC, true, "nothing");
}

// Where a folder can't have files without a name, which is asked for by opening the folder, a file has one. A
// folder of the stage that can't be opened in one step is opened in several.
TEST_P(ToolboxFaults, AFileThatCannotBeOpenedLeavesAllAsItWas) {
    expect_all_or_nothing(
        Calls::opens, EMFILE, false,
        "openat \\(temporary\\)|openat there/\\.unfinished-.*|openat to\\.unfinished-.*|openat (\\.|.*/)");
}

// Files that were only read lose nothing; nor does one that has another descriptor open.
TEST_P(ToolboxFaults, AFailedCloseLeavesAllAsItWasOrDone) {
    expect_all_or_nothing(Calls::closes, EIO, false, ".*");
}

// Permissions are kept where that is possible.
TEST_P(ToolboxFaults, AnyOtherFailureLeavesAllAsItWas) {
    expect_all_or_nothing(Calls::others, EIO, false, "f?chmod .*|newfstatat .*|lseek .*");
}

TEST_P(ToolboxFaults, AnInterruptedCallIsMadeAgainOrReported) {
    for (const Calls calls : {Calls::reads, Calls::writes})
        expect_all_or_nothing(calls, EINTR, false, ".*");
}

TEST_P(ToolboxFaults, PiecesOfAFewBytesHaveTheSameEffect) {
    for (const Calls calls : {Calls::reads, Calls::writes}) {
        restore(before);
        const TracedRun run = run_traced(body(), dir.path(), {.calls = calls, .piece = 7});
        EXPECT_EQ(run.outcome, whole.outcome);
        EXPECT_EQ(tree(), after);
    }
}

INSTANTIATE_TEST_SUITE_P(Commands, ToolboxFaults, testing::ValuesIn(cases),
                         [](const auto& info) { return info.param.name; });

} // namespace
