// SPDX-License-Identifier: Apache-2.0
// Messages to the user of a run: as text on standard error, or as values for callers that show them in their
// own way.
#pragma once

#include <fmt/core.h>

#include <cstdio>
#include <string>
#include <string_view>
#include <utility>

// Writes the formatted text and flushes. A stream that can't take it is no reason to end a run, so a failure
// is ignored.
void write_formatted(std::FILE* stream, fmt::string_view format, fmt::format_args args);

// The same for arguments of any type. All formatting is in the function above, since a source that formats by
// itself takes twice as long to compile.
template <class... Args>
void write_message(std::FILE* stream, fmt::format_string<Args...> format, const Args&... args) {
    write_formatted(stream, format, fmt::make_format_args(args...));
}

// What the stages of a run have to say.
enum class Message {
    // Of the package's sections.
    no_version,
    no_board,
    no_timing_report,
    no_description,
    description_unreadable,
    description_not_loadable,
    memory_twice,
    shared_port_unknown,
    autorun_kernel_unknown,
    // Of the monitor file.
    monitor_file_unreadable,
    shared_in_design_only,
    shared_in_monitor_only,
    no_samples,
    no_autorun_samples,
    // Of a line, which is left out.
    empty_line,
    bad_number,
    wrong_field_count,
    wrong_counter_count,
    kernel_unknown,
    kernel_without_blocks,
    // Of a counter.
    bad_counter,
    memory_tag_without_operation,
    memory_tag_unreadable,
    memory_bank_invalid,
    memory_port_invalid,
    // Of an invocation's samples.
    no_cycles,
    no_timestamps,
    one_channel_size,
    channel_counts_differ,
    width_invalid,
    width_replaced,
    request_count_differs,
    requests_invalid,
    bursts_differ,
    locations_differ,
    memory_unknown,
    memory_writes_differ,
    memory_reads_differ,
    memory_samples_differ,
    memory_without_data,
    count // how many there are
};

// What a message is about. A text that isn't known is empty, and not all that are known are in the text that
// is written.
struct MessageDetails {
    int line = 0;                  // of the monitor file, from 1
    std::string_view subject = {}; // a memory, a tag, a field, a value
    std::string_view kernel = {};
    std::string_view block = {};
};

// The text of a message, with its newline if it has one. Tools that call the program know these texts.
std::string text_of(Message message, const MessageDetails& details);

// Takes the messages of a thread, as they come.
class MessageReceiver {
  public:
    virtual ~MessageReceiver() = default;
    // The views hold until the call returns.
    virtual void take(Message message, const MessageDetails& details) = 0;
};

// As long as it lives, the messages of this thread go to `receiver`, which isn't owned, and not to standard
// error. They nest: then the innermost one counts.
class ReceiveMessages {
  public:
    explicit ReceiveMessages(MessageReceiver& receiver);
    ReceiveMessages(const ReceiveMessages&) = delete;
    ReceiveMessages& operator=(const ReceiveMessages&) = delete;
    ~ReceiveMessages();

  private:
    MessageReceiver* m_before;
};

// Hands a message to the thread's receiver. Without one its text is written to standard error.
void diagnose(Message message, const MessageDetails& details = {});
