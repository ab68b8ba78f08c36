// Messages to the user of a run.
#pragma once

#include <fmt/format.h>

#include <cstdio>
#include <iterator>
#include <utility>

// Writes the formatted text and flushes. A stream that can't take it is no reason to end a run, so a failure
// is ignored.
template <class... Args>
void write_message(std::FILE* stream, fmt::format_string<Args...> format, Args&&... args) {
    fmt::memory_buffer text;
    fmt::format_to(std::back_inserter(text), format, std::forward<Args>(args)...);
    std::fwrite(text.data(), 1, text.size(), stream);
    std::fflush(stream);
}

// Writes a message to standard error. The caller's text holds the newline, as one message has none.
template <class... Args>
void diagnose(fmt::format_string<Args...> format, Args&&... args) {
    write_message(stderr, format, std::forward<Args>(args)...);
}
