// SPDX-License-Identifier: Apache-2.0
#include "progress_line.h"

#include <unistd.h>

#include <csignal>
#include <string_view>

namespace zan::tool {

namespace {

volatile std::sig_atomic_t line_is_shown = 0;

// A line that can't be written is no fault: the work goes on.
void write_to_terminal(std::string_view text) {
    [[maybe_unused]] const ssize_t ignored = ::write(STDERR_FILENO, text.data(), text.size());
}

} // namespace

// In one write, so that a message of another process doesn't come between.
void show_progress_line(const std::string& text) {
    line_is_shown = 1;
    write_to_terminal("\r" + text + "\x1b[K");
}

void remove_progress_line() {
    if (line_is_shown == 0)
        return;
    line_is_shown = 0;
    write_to_terminal("\r\x1b[K");
}

} // namespace zan::tool
