// Messages to the user of a run.
#pragma once

#include <fmt/core.h>

#include <cstdio>

// Writes the formatted text and flushes. A stream that can't take it is no reason to end a run, so a failure
// is ignored.
void write_formatted(std::FILE* stream, fmt::string_view format, fmt::format_args args);

// The same for arguments of any type. All formatting is in the function above, since a source that formats by
// itself takes twice as long to compile.
template <class... Args>
void write_message(std::FILE* stream, fmt::format_string<Args...> format, const Args&... args) {
    write_formatted(stream, format, fmt::make_format_args(args...));
}

// Writes a message to standard error. The caller's text holds the newline, as one message has none.
template <class... Args>
void diagnose(fmt::format_string<Args...> format, const Args&... args) {
    write_message(stderr, format, args...);
}
