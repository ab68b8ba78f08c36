// SPDX-License-Identifier: Apache-2.0
#include "signals.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <optional>

#include "default_signals.h"
#include "temp_dir.h"
#include "whole_file.h"

namespace {

using namespace zan::tool;
namespace fs = std::filesystem;

// Runs `body` in a process of its own with signals prepared; `body` doesn't return.
template <typename Body>
void in_process(Body body) {
    use_default_signals();
    prepare_signals();
    body();
    ::_exit(99);
}

class SignalsTest : public testing::Test {
  protected:
    void make(const std::string& name) const {
        fs::create_directories(fs::path(dir.path(name)).parent_path());
        write_file(dir.path(name), "1");
    }

    const TempDir dir;
};

TEST_F(SignalsTest, AnEndingSignalRemovesWhatIsRegisteredAndEndsTheProcess) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        make("f");
        make("d/e/f");
        make("kept");
        EXPECT_EXIT(in_process([&] {
                        const std::string f = dir.path("f"), d = dir.path("d"), kept = dir.path("kept");
                        const RemovedBySignal file(f), folder(d);
                        { const RemovedBySignal over(kept); }
                        ::raise(signal);
                    }),
                    testing::KilledBySignal(signal), "");
        EXPECT_FALSE(fs::exists(dir.path("f")));
        EXPECT_FALSE(fs::exists(dir.path("d")));
        EXPECT_TRUE(fs::exists(dir.path("kept")));
    }
}

// The objects go in another order than they came.
TEST_F(SignalsTest, WhatIsNotRegisteredAnyMoreStays) {
    make("a");
    make("b");
    make("c");
    EXPECT_EXIT(in_process([&] {
                    const std::string paths[] = {dir.path("a"), dir.path("b"), dir.path("c")};
                    std::optional<RemovedBySignal> a, b, c;
                    a.emplace(paths[0]);
                    b.emplace(paths[1]);
                    c.emplace(paths[2]);
                    b.reset();
                    c.reset();
                    ::raise(SIGTERM);
                }),
                testing::KilledBySignal(SIGTERM), "");
    EXPECT_FALSE(fs::exists(dir.path("a")));
    EXPECT_TRUE(fs::exists(dir.path("b")));
    EXPECT_TRUE(fs::exists(dir.path("c")));
}

TEST_F(SignalsTest, AHeldSignalComesAtTheEnd) {
    make("f");
    EXPECT_EXIT(in_process([&] {
                    const std::string path = dir.path("f");
                    const RemovedBySignal file(path);
                    {
                        const SignalsHeld held;
                        ::raise(SIGTERM);
                        if (!fs::exists(dir.path("f")))
                            ::_exit(1);
                    }
                }),
                testing::KilledBySignal(SIGTERM), "");
    EXPECT_FALSE(fs::exists(dir.path("f")));
}

TEST_F(SignalsTest, HoldingSignalsKeepsTheReasonOfAFailure) {
    errno = ENOSPC;
    { const SignalsHeld held; }
    EXPECT_EQ(errno, ENOSPC);
}

TEST_F(SignalsTest, AnIgnoredSignalStaysIgnored) {
    EXPECT_EXIT(
        {
            ::signal(SIGHUP, SIG_IGN);
            prepare_signals();
            ::raise(SIGHUP);
            ::_exit(0);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(SignalsTest, AWriteFailsWithAReasonInPlaceOfASignal) {
    EXPECT_EXIT(in_process([] {
                    int ends[2];
                    if (::pipe(ends) != 0 || ::close(ends[0]) != 0)
                        ::_exit(1);
                    ::_exit(::write(ends[1], "x", 1) < 0 && errno == EPIPE ? 0 : 2);
                }),
                testing::ExitedWithCode(0), "");
    EXPECT_EXIT(in_process([&] {
                    constexpr rlimit no_byte = {0, 0};
                    ::setrlimit(RLIMIT_FSIZE, &no_byte);
                    std::FILE* const file = std::fopen(dir.path("f").c_str(), "wb");
                    ::_exit(::write(::fileno(file), "x", 1) < 0 && errno == EFBIG ? 0 : 2);
                }),
                testing::ExitedWithCode(0), "");
}

} // namespace
