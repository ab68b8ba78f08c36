// SPDX-License-Identifier: Apache-2.0
#include "console.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <unistd.h>

#include <cstdlib>

#include "capture.h"

namespace {

using namespace zan::tool;

// A terminal of this many columns.
class Terminal {
  public:
    explicit Terminal(unsigned short columns) {
        winsize size = {};
        size.ws_col = columns;
        EXPECT_EQ(::openpty(&m_user, &m_program, nullptr, nullptr, &size), 0);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    ~Terminal() {
        ::close(m_user);
        ::close(m_program);
    }
    int fd() const { return m_program; }

  private:
    int m_user = -1;
    int m_program = -1;
};

Console with_color(ColorChoice choice) {
    return {.color = choice};
}

class ConsoleColors : public testing::Test {
  protected:
    void SetUp() override { ::unsetenv("NO_COLOR"); }
    void TearDown() override { ::unsetenv("NO_COLOR"); }
    const Terminal terminal{80};
};

TEST_F(ConsoleColors, ATerminalHasColorsAndAFileHasNone) {
    EXPECT_TRUE(Console().has_colors(terminal.fd()));
    const int file = ::open("/dev/null", O_WRONLY);
    EXPECT_FALSE(Console().has_colors(file));
    ::close(file);
}

TEST_F(ConsoleColors, NoColorCountsIfItIsNotEmpty) {
    ::setenv("NO_COLOR", "", 1);
    EXPECT_TRUE(Console().has_colors(terminal.fd()));
    ::setenv("NO_COLOR", "0", 1);
    EXPECT_FALSE(Console().has_colors(terminal.fd()));
}

TEST_F(ConsoleColors, TheOptionCountsMost) {
    EXPECT_FALSE(with_color(ColorChoice::never).has_colors(terminal.fd()));
    ::setenv("NO_COLOR", "1", 1);
    EXPECT_TRUE(with_color(ColorChoice::always).has_colors(terminal.fd()));
    EXPECT_TRUE(with_color(ColorChoice::always).has_colors(-1));
}

TEST(LineColumns, AreThoseOfTheTerminalOrAHundred) {
    EXPECT_EQ(line_columns(Terminal(72).fd()), 72u);
    EXPECT_EQ(line_columns(Terminal(0).fd()), 100u); // a terminal that doesn't know its size
    EXPECT_EQ(line_columns(-1), 100u);
}

TEST(PrintNote, IsSilentIfItShallBe) {
    EXPECT_EQ(stderr_of([] { print_note({}, "3 lines"); }), "3 lines\n");
    EXPECT_EQ(stderr_of([] { print_note({.quiet = true}, "3 lines"); }), "");
}

// The first variable that is set and not empty counts.
TEST(ConsoleLocale, MayHaveUtf8) {
    const auto with = [](const char* all, const char* type, const char* language) {
        ::setenv("LC_ALL", all, 1);
        ::setenv("LC_CTYPE", type, 1);
        ::setenv("LANG", language, 1);
        const bool found = has_utf8();
        for (const char* const name : {"LC_ALL", "LC_CTYPE", "LANG"})
            ::unsetenv(name);
        return found;
    };
    EXPECT_TRUE(with("C.UTF-8", "C", "C"));
    EXPECT_FALSE(with("C", "de_DE.utf8", "C.UTF-8"));
    EXPECT_TRUE(with("", "de_DE.utf8", "C"));
    EXPECT_TRUE(with("", "", "en_US.UTF-8"));
    EXPECT_FALSE(with("", "", "POSIX"));
    EXPECT_FALSE(has_utf8()) << "none is set";
}

} // namespace
