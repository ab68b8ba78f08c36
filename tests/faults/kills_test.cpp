// SPDX-License-Identifier: Apache-2.0
// Commands of the toolbox that are ended by a signal at random moments: all of their work is done, or none.
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <random>

#include "child_process.h"
#include "fault_fixture.h"
#include "make_package.h"
#include "traced_run.h"

namespace {

namespace fs = std::filesystem;

constexpr int kills_of_a_command = 8;

class Kills : public FaultTest, public testing::WithParamInterface<std::vector<std::string>> {
  protected:
    using Clock = std::chrono::steady_clock;

    void SetUp() override {
        make_package(dir.path("p.zanx"), {{"a", random_bytes(200000)}, {"b", "1"}});
        write("f", random_bytes(200000));
        for (int i = 0; i < 20; ++i)
            write("d/" + std::to_string(i % 4) + "/" + std::to_string(i), random_bytes(4000));
        write("there/d/0/0", "old");
        write("there/other", "other");
        EXPECT_EQ(run({"pack", "s.stream", "d"}, SIGCONT, std::chrono::seconds(0)), "0");
        before = tree();
    }

    std::string random_bytes(std::size_t size) {
        std::string bytes(size, '\0');
        for (char& byte : bytes)
            byte = static_cast<char>(dice());
        return bytes;
    }

    // Runs `zanl-profile package` with a signal after that time. SIGCONT does nothing.
    std::string run(std::vector<std::string> arguments, int signal, Clock::duration moment) const {
        const TempDir output;
        arguments.insert(arguments.begin(), "package");
        const pid_t process = start_child(dir.path(), output.path("out"), output.path("err"),
                                          program_body(ZAN_TOOLBOX, arguments));
        ::usleep(
            static_cast<useconds_t>(std::chrono::duration_cast<std::chrono::microseconds>(moment).count()));
        ::kill(process, signal);
        return status_text(wait_for_child(process));
    }

    Tree before;
    std::mt19937 dice{2026};
};

// SIGKILL leaves what has a name: the staging folder of `unpack`.
bool is_unfinished(const std::pair<const std::string, std::string>& entry) {
    return entry.first.find(".unfinished-") != std::string::npos;
}

TEST_P(Kills, LeaveAllTheWorkOrNone) {
    const auto begin = Clock::now();
    ASSERT_EQ(run(GetParam(), SIGCONT, std::chrono::seconds(0)), "0");
    const auto time = Clock::now() - begin;
    const Tree after = tree();
    ASSERT_NE(after, before);
    int num_ended = 0;
    for (int i = 0; i < kills_of_a_command; ++i) {
        restore(before);
        const int signal = std::array{SIGTERM, SIGINT, SIGHUP, SIGKILL}[static_cast<std::size_t>(i % 4)];
        const auto moment = time * static_cast<int>(dice() % 1000) / 1000;
        SCOPED_TRACE(std::string(::sigabbrev_np(signal)) + " after " +
                     std::to_string(std::chrono::duration_cast<std::chrono::microseconds>(moment).count()) +
                     " us");
        const std::string status = run(GetParam(), signal, moment);
        Tree left = tree();
        if (signal == SIGKILL)
            std::erase_if(left, is_unfinished);
        num_ended += status == "0" ? 0 : 1;
        EXPECT_TRUE(status == "0" || status == std::string("SIG") + ::sigabbrev_np(signal)) << status;
        EXPECT_TRUE(left == after || (left == before && status != "0")) << "a part of the work is left";
    }
    EXPECT_GT(num_ended, 0) << "no run was ended before it was done";
}

const std::vector<std::vector<std::string>> killed_commands = {
    {"create", "new.zanx", "a=f"},         {"create", "p.zanx", "a=f"}, {"add", "p.zanx", "c=f"},
    {"pack", "new.stream", "d"},           {"pack", "p.zanx:s", "d"},   {"unpack", "s.stream", "-o", "new"},
    {"unpack", "s.stream", "-o", "there"},
};

INSTANTIATE_TEST_SUITE_P(Commands, Kills, testing::ValuesIn(killed_commands), [](const auto& info) {
    return std::to_string(info.index) + "_" + info.param.front();
});

} // namespace
