// SPDX-License-Identifier: Apache-2.0
// Signals, standard streams that are closed or full, and folders that can't be written to.
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "child_process.h"
#include "sample_runs.h"
#include "traced_run.h"

namespace {

namespace fs = std::filesystem;

using testing::HasSubstr;
using testing::StartsWith;

// Runs both programs through a shell, where $P is zanl-profile-tly and $T the toolbox.
class Signals : public SampleRuns {
  protected:
    void SetUp() override {
        prepare([&] { return shell("$P design.zanx profile.mon report.json"); });
        fs::remove(dir.path("report.json"));
        files = tree();
    }

    Outcome shell(const std::string& line) const {
        return run_program("/bin/bash", {"-c", "P=" ZAN_PROGRAM " T=" ZAN_TOOLBOX "; " + line}, dir.path());
    }

    // Starts the program with a named pipe as one of its files, waits until it reads from the pipe, and calls
    // `meanwhile(process, writer)`. Returns the exit status, or the name of the signal.
    template <typename Meanwhile>
    std::string waiting_at_pipe(const std::string& program, const std::vector<std::string>& arguments,
                                const std::string& pipe, Meanwhile meanwhile) {
        ::mkfifo(dir.path(pipe).c_str(), 0600);
        const pid_t process =
            start_child(dir.path(), dir.path("out"), dir.path("err"), program_body(program, arguments));
        const int writer = ::open(dir.path(pipe).c_str(), O_WRONLY); // waits for the reader
        meanwhile(process, writer);
        ::close(writer);
        const std::string status = status_text(wait_for_child(process));
        for (const char* name : {"out", "err", pipe.c_str()})
            fs::remove(dir.path(name));
        return status;
    }

    // Waits until a staging folder has a file.
    void wait_for_unfinished() const {
        const auto is_unfinished = [](const fs::directory_entry& entry) {
            return entry.path().string().find(".unfinished-") != std::string::npos && entry.is_regular_file();
        };
        for (int tries = 0; tries < 10000; ++tries) {
            const fs::recursive_directory_iterator entries(dir.path());
            if (std::any_of(begin(entries), end(entries), is_unfinished))
                return;
            ::usleep(1000);
        }
        FAIL() << "there is no file";
    }

    static void send(int writer, const std::string& bytes) {
        ASSERT_EQ(::write(writer, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }
};

constexpr int ending_signals[] = {SIGINT, SIGTERM, SIGHUP, SIGKILL};

TEST_F(Signals, ARunThatIsEndedLeavesNoReport) {
    for (const int signal : ending_signals) {
        EXPECT_EQ(waiting_at_pipe(ZAN_PROGRAM, {"design.zanx", "pipe.mon", "report.json"}, "pipe.mon",
                                  [&](pid_t process, int writer) {
                                      send(writer, "0,1,");
                                      ::kill(process, signal);
                                  }),
                  std::string("SIG") + ::sigabbrev_np(signal));
        EXPECT_EQ(tree(), files);
    }
}

// A named pipe shows when the program reads it; by then the copy of the package has been made. Where a file
// system has no files without a name, a process that is killed leaves the copy.
TEST_F(Signals, AToolboxThatIsEndedLeavesThePackageAsItWas) {
    for (const int signal : ending_signals) {
        EXPECT_EQ(waiting_at_pipe(ZAN_TOOLBOX, {"package", "add", "design.zanx", "x=pipe"}, "pipe",
                                  [&](pid_t process, int writer) {
                                      send(writer, "0123");
                                      ::kill(process, signal);
                                  }),
                  std::string("SIG") + ::sigabbrev_np(signal));
        Tree left = tree();
        if (signal == SIGKILL)
            std::erase_if(
                left, [](const auto& entry) { return entry.first.starts_with("design.zanx.unfinished-"); });
        EXPECT_EQ(left, files);
        restore(files);
    }
}

// The stream stops after its first file, which is in the staging folder then.
TEST_F(Signals, AnUnpackingThatIsEndedLeavesNoFile) {
    // Bytes that can't be compressed, so that the program meets the file before the stream's end.
    shell("mkdir -p d/e; head -c 300000 /dev/urandom >d/e/f; $T package pack s.stream d; rm -r d");
    const std::string stream = read("s.stream");
    fs::remove(dir.path("s.stream"));
    fs::create_directory(dir.path("there"));
    const Tree before = tree();
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        for (const char* folder : {"new", "there"}) {
            EXPECT_EQ(waiting_at_pipe(ZAN_TOOLBOX, {"package", "unpack", "pipe", "-o", folder}, "pipe",
                                      [&](pid_t process, int writer) {
                                          send(writer, stream.substr(0, stream.size() - 8));
                                          wait_for_unfinished();
                                          ::kill(process, signal);
                                      }),
                      std::string("SIG") + ::sigabbrev_np(signal));
            EXPECT_EQ(tree(), before);
        }
    }
}

TEST_F(Signals, ASignalThatTheCallerIgnoresEndsNothing) {
    EXPECT_EQ(shell("trap '' HUP; mkfifo pipe; $T package add design.zanx x=pipe & "
                    "exec 3>pipe; kill -HUP $!; echo 1 >&3; exec 3>&-; wait $!"),
              (Outcome{"", "", "0"}));
}

// By default these signals would end the process without a word.
TEST_F(Signals, TheToolboxReportsAPipeWithoutReaderAndAFileThatIsTooLong) {
    write("large", std::string(200000, 'x'));
    shell("$T package create large.zanx x=large; rm large");
    const Tree before = tree();
    const std::string program = "zanl-profile: ";
    // The reader at the end of the pipe has gone when the program starts.
    EXPECT_EQ(shell("exec 3> >(exec true); wait $!; $T package show large.zanx x >&3"),
              (Outcome{"", program + "can't write to 'standard output': Broken pipe\n", "2"}));
    EXPECT_EQ(shell("exec 3> >(exec true); wait $!; $T package list large.zanx >&3"),
              (Outcome{"", program + "can't write to 'standard output': Broken pipe\n", "2"}));
    EXPECT_EQ(shell("exec 3> >(exec true); wait $!; $T help >&3"),
              (Outcome{"", program + "can't write to standard output: Broken pipe\n", "2"}));
    // 100 blocks of 1 KiB.
    EXPECT_EQ(shell("ulimit -f 100; $T package extract large.zanx -o to; [ ! -e to ]"),
              (Outcome{"", program + "can't write to 'to/x': File too large\n", "0"}));
    EXPECT_EQ(shell("ulimit -f 100; $T package create new.zanx x=large.zanx").status, "2");
    EXPECT_EQ(shell("ulimit -f 100; $T package copy large.zanx design.zanx x").status, "2");
    EXPECT_EQ(tree(), before);
}

// Of zanl-profile-tly, as docs/faults.md has it.
TEST_F(Signals, AReportThatIsTooLongEndsARunWithAPartOfTheReport) {
    write("profile.mon", files.at("profile.mon") + std::string(3000, '\n'));
    const std::size_t limit = 1024; // a block
    ASSERT_GT(right_report.size(), limit);
    EXPECT_EQ(shell("ulimit -f 1; $P design.zanx profile.mon report.json 2>/dev/null").status,
              std::to_string(128 + SIGXFSZ));
    EXPECT_EQ(read("report.json"), right_report.substr(0, limit));
}

// A report of more bytes than a pipe holds, which is 64 KiB.
TEST_F(Signals, AReportIntoAPipeWhoseReaderGoesEndsTheRun) {
    std::string lines;
    for (int i = 0; i < 1000; ++i)
        lines += files.at("profile.mon");
    write("profile.mon", lines);
    shell("$P design.zanx profile.mon report.json");
    ASSERT_GT(read("report.json").size(), 1u << 17);
    EXPECT_EQ(shell("mkfifo pipe.json; head -c 10 pipe.json >read & $P design.zanx profile.mon pipe.json; "
                    "status=$?; rm pipe.json; exit $status")
                  .status,
              std::to_string(128 + SIGPIPE));
    EXPECT_EQ(read("read"), right_report.substr(0, 10));
}

TEST_F(Signals, ARunThatWasStoppedGoesOn) {
    const std::string& lines = files.at("profile.mon");
    EXPECT_EQ(waiting_at_pipe(ZAN_PROGRAM, {"design.zanx", "pipe.mon", "report.json"}, "pipe.mon",
                              [&](pid_t process, int writer) {
                                  for (std::size_t i = 0; i < lines.size(); i += 40) {
                                      ::kill(process, SIGSTOP);
                                      int status = 0;
                                      ::waitpid(process, &status, WUNTRACED);
                                      send(writer, lines.substr(i, 40));
                                      ::kill(process, SIGCONT);
                                  }
                              }),
              "0");
    EXPECT_EQ(read("report.json"), right_report);
}

TEST_F(Signals, AClosedOrFullStandardErrorDoesNotChangeAReport) {
    write("profile.mon", "\n" + files.at("profile.mon"));
    for (const char* stream : {"2>&-", "2>/dev/full", ">&- 2>&-", "<&- >&- 2>&-"}) {
        EXPECT_EQ(shell(std::string("$P design.zanx profile.mon report.json ") + stream),
                  (Outcome{"", "", "0"}));
        EXPECT_EQ(read("report.json"), right_report) << stream;
        EXPECT_EQ(shell(std::string("$P none.zanx profile.mon report.json ") + stream),
                  (Outcome{"", "", "1"}));
    }
}

TEST_F(Signals, AMessageIntoAClosedPipeEndsARunWithoutAReport) {
    write("profile.mon", "\n" + files.at("profile.mon"));
    // The reader at the end of the pipe has gone when the program starts.
    EXPECT_EQ(shell("exec 3> >(exec true); wait $!; $P design.zanx profile.mon report.json 2>&3").status,
              "141");
    EXPECT_FALSE(fs::exists(dir.path("report.json")));
}

TEST_F(Signals, TheToolboxHasItsStatusEvenIfItsMessagesAreLost) {
    for (const char* stream : {"2>&-", "2>/dev/full", "<&- >&- 2>&-"}) {
        EXPECT_EQ(shell(std::string("$T package show none.zanx x ") + stream), (Outcome{"", "", "2"}));
        EXPECT_EQ(shell(std::string("$T package show design.zanx x ") + stream), (Outcome{"", "", "1"}));
        EXPECT_EQ(shell(std::string("$T package add design.zanx x=profile.mon ") + stream),
                  (Outcome{"", "", "0"}));
        EXPECT_NE(tree(), files);
        restore(files);
    }
}

// A file that is opened gets the number of a closed stream, and would be read or written in its place.
TEST_F(Signals, AClosedStandardStreamIsNoFileOfTheToolbox) {
    const auto trouble = [](const std::string& text) {
        return Outcome{"", "zanl-profile: " + text + ": Bad file descriptor\n", "2"};
    };
    EXPECT_EQ(shell("$T package add design.zanx x=- <&-"), trouble("can't read 'standard input'"));
    EXPECT_EQ(shell("$T package create new.zanx x=- <&-"), trouble("can't read 'standard input'"));
    EXPECT_EQ(shell("$T package show design.zanx .zan.version >&-"),
              trouble("can't write to 'standard output'"));
    EXPECT_EQ(shell("$T package list design.zanx >&-"), trouble("can't write to 'standard output'"));
    EXPECT_THAT(shell("$T package pack - profile.mon >&-").err,
                StartsWith("zanl-profile: can't write 'standard output': "));
    EXPECT_EQ(shell("$T --version >&-"), trouble("can't write to standard output"));
    EXPECT_EQ(tree(), files);
}

// Runs a program as a user who doesn't own the folder; permissions don't bind the super-user.
Outcome as_plain_user(const std::string& program, const std::vector<std::string>& arguments,
                      const std::string& folder) {
    const TempDir output;
    const pid_t process = start_child(folder, output.path("out"), output.path("err"), [&] {
        constexpr uid_t plain_user = 65534;
        if (::geteuid() == 0 && (::setgid(plain_user) != 0 || ::setuid(plain_user) != 0))
            return 127;
        return program_body(program, arguments)();
    });
    const std::string status = status_text(wait_for_child(process));
    return {read_file(output.path("out")), read_file(output.path("err")), status};
}

TEST_F(Signals, AReadOnlyFolderGetsNoReportAndNoPackage) {
    const std::string folder = dir.path();
    fs::copy(ZAN_PROGRAM, dir.path("program"));
    fs::copy(ZAN_TOOLBOX, dir.path("toolbox"));
    fs::permissions(folder, fs::perms(0555));
    const Tree before = tree();
    const Outcome report = as_plain_user("./program", {"design.zanx", "profile.mon", "report.json"}, folder);
    EXPECT_EQ(report.status, "SIGABRT");
    EXPECT_THAT(report.err, HasSubstr("report.json: cannot open file"));
    EXPECT_EQ(as_plain_user("./toolbox", {"package", "add", "design.zanx", "x=profile.mon"}, folder),
              (Outcome{"", "zanl-profile: can't write 'design.zanx': Permission denied\n", "2"}));
    EXPECT_EQ(as_plain_user("./toolbox", {"package", "create", "new.zanx", "x=profile.mon"}, folder),
              (Outcome{"", "zanl-profile: can't write 'new.zanx': Permission denied\n", "2"}));
    EXPECT_EQ(tree(), before);
    fs::permissions(folder, fs::perms(0755));
}

} // namespace
