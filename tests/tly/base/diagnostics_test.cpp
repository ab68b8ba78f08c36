// SPDX-License-Identifier: Apache-2.0
#include "diagnostics.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "capture.h"

namespace {

// What a receiver got, with copies of the texts.
class TakenMessages final : public MessageReceiver {
  public:
    void take(Message message, const MessageDetails& details) override {
        messages.push_back(message);
        texts.push_back(text_of(message, details));
    }

    std::vector<Message> messages;
    std::vector<std::string> texts;
};

TEST(Diagnostics, GoToStandardErrorAsTheyAre) {
    EXPECT_EQ(stderr_of([] { diagnose(Message::empty_line, {.line = 12}); }),
              "warning: empty .mon line 12\n");
    EXPECT_EQ(stderr_of([] { diagnose(Message::kernel_unknown, {.line = 3, .kernel = "%s{}"}); }),
              "Warning: profile.mon has some kernel which is not in the profiler.xml - Ignoring .mon line\n"
              "----> kernel in .mon at line 3: %s{}\n");
    EXPECT_EQ(
        stderr_of([] { diagnose(Message::locations_differ); }),
        "Warning: number of debug lines, number of debug filepaths, and number of columns do not match.");
}

TEST(Diagnostics, ATextIsMadeOfTheDetailsThatItNames) {
    const MessageDetails details{.line = 7, .subject = "x", .kernel = "k", .block = "b"};
    EXPECT_EQ(text_of(Message::width_invalid, details),
              "Warning: value for byte width for moduleinst b was invalid: x\n");
    EXPECT_EQ(text_of(Message::bad_number, details), "ERROR: Unable to parse x. Ignoring .mon line 7\n");
    EXPECT_EQ(text_of(Message::no_cycles, details), "WARNING: No total cycles found for kernel k\n");
}

TEST(Diagnostics, EachMessageHasATextOfItsOwn) {
    std::map<std::string, int> texts;
    for (int i = 0; i < static_cast<int>(Message::count); ++i)
        EXPECT_EQ(texts[text_of(static_cast<Message>(i), {})]++, 0) << i;
}

TEST(Diagnostics, GoToTheInnermostReceiverInstead) {
    TakenMessages outer;
    TakenMessages inner;
    const std::string written = stderr_of([&] {
        const ReceiveMessages receive_outer(outer);
        {
            const ReceiveMessages receive_inner(inner);
            diagnose(Message::no_board);
        }
        diagnose(Message::empty_line, {.line = 1});
    });
    EXPECT_EQ(written, "");
    EXPECT_EQ(inner.messages, std::vector{Message::no_board});
    EXPECT_EQ(outer.messages, std::vector{Message::empty_line});
    EXPECT_EQ(outer.texts, std::vector<std::string>{"warning: empty .mon line 1\n"});
    EXPECT_EQ(stderr_of([] { diagnose(Message::empty_line, {.line = 2}); }), "warning: empty .mon line 2\n");
}

TEST(Diagnostics, AreOutBeforeTheNextStatement) {
    std::FILE* const file = std::tmpfile();
    ASSERT_NE(file, nullptr);
    write_message(file, "{}", "text");
    char text[8] = {};
    EXPECT_EQ(pread(fileno(file), text, sizeof text, 0), 4); // past the stream's own buffer
    EXPECT_STREQ(text, "text");
    std::fclose(file);
}

TEST(Diagnostics, AFullStreamIsNoError) {
    std::FILE* const full = std::fopen("/dev/full", "w");
    ASSERT_NE(full, nullptr);
    write_message(full, "{}\n", "lost");
    EXPECT_NE(std::ferror(full), 0);
    std::fclose(full);
}

} // namespace
