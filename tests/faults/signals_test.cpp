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

// A named pipe shows when the program reads it; by then the copy of the package has been made.
TEST_F(Signals, AToolboxThatIsEndedLeavesThePackageAsItWasAndTheCopyBesideIt) {
    for (const int signal : ending_signals) {
        EXPECT_EQ(waiting_at_pipe(ZAN_TOOLBOX, {"package", "add", "design.zanx", "x=pipe"}, "pipe",
                                  [&](pid_t process, int writer) {
                                      send(writer, "0123");
                                      ::kill(process, signal);
                                  }),
                  std::string("SIG") + ::sigabbrev_np(signal));
        Tree left = tree();
        EXPECT_EQ(
            std::erase_if(
                left, [](const auto& entry) { return entry.first.starts_with("design.zanx.unfinished-"); }),
            1u);
        EXPECT_EQ(left, files);
        restore(files);
    }
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
