// SPDX-License-Identifier: Apache-2.0
#include "diagnostics.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>

namespace {

// Of the details, {0} is the line, {1} the subject, {2} the kernel and {3} the block.
struct MessageRow {
    Message message;
    const char* text;
};

constexpr MessageRow rows[] = {
    {Message::no_version, "Error: unable to get version zanx section\n"},
    {Message::no_board, "Error: unable to get board xml zanx section\n"},
    {Message::no_timing_report, "Error: unable to get velmora report zanx section\n"},
    {Message::no_description,
     "Warning: No profiler elf section. Will only return kernel start/stop time and memory "
     "transfer times between device & host.\n"},
    {Message::description_unreadable, "Error unable to read profiler elf section\n"},
    {Message::description_not_loadable, "Error: unable to load profiler.xml file\n"},
    {Message::memory_twice,
     "Warning: trying to insert new global memory object with a name that already belongs to "
     "an existing global memory. Global memory names must be unique\n"},
    // In spite of the last word the run goes on.
    {Message::shared_port_unknown, "ERROR: No shared offset was found for kernel {2}. ABORT\n"},
    {Message::autorun_kernel_unknown, "Warning: {2} is listed as an autorun kernel but no kernel exists\n"},
    {Message::monitor_file_unreadable, "ABORT: .mon file errored while trying to open.\n"},
    {Message::shared_in_design_only,
     "ERROR: .zanx file has shared counters data but .mon does not at line {0}. "
     "Data will not match. Ensure host is run with the Profiler Runtime Wrapper using the "
     "shared counter option. ABORT\n"},
    {Message::shared_in_monitor_only,
     "ERROR: .mon file has shared counters data at line {0} but .zanx does not. "
     "Data will not match. Ensure design is compiled with the profile shared counters flag. "
     "ABORT\n"},
    {Message::no_samples, "Warning: no data in the .mon file for the kernel {2}.\n"},
    {Message::no_autorun_samples, "Warning: no data in the .mon file for the autorun kernel {2}.\n"},
    {Message::empty_line, "warning: empty .mon line {0}\n"},
    {Message::bad_number, "ERROR: Unable to parse {1}. Ignoring .mon line {0}\n"},
    {Message::wrong_field_count, "ERROR: Unexpected number of values. Ignoring .mon line {0}\n"},
    {Message::wrong_counter_count,
     "Warning: number of .mon entries does not match number of counters for this kernel. "
     "Skipping line {0}\n"},
    {Message::kernel_unknown,
     "Warning: profile.mon has some kernel which is not in the profiler.xml - Ignoring .mon line\n"
     "----> kernel in .mon at line {0}: {2}\n"},
    {Message::kernel_without_blocks,
     "profile.mon has some kernel that does not have any moduleinsts - Skipping line {0}\n"},
    {Message::bad_counter, "WARNING: value for counter at line {0} was invalid: {1}\n"},
    {Message::memory_tag_without_operation, "WARNING: extmem port tag does not match an op type\n"},
    {Message::memory_tag_unreadable,
     "WARNING: something went wrong when decoding the properties of the external memory {1}\n"},
    {Message::memory_bank_invalid, "WARNING: value for external memory bank was invalid: {1}\n"},
    {Message::memory_port_invalid, "WARNING: value for external memory port was invalid: {1}\n"},
    {Message::no_cycles, "WARNING: No total cycles found for kernel {2}\n"},
    {Message::no_timestamps, "WARNING: no sample timestamps in moduleInst\n"},
    {Message::one_channel_size,
     "Warning: only one of max and total fifo size counters exists in profile.mon.\n"},
    {Message::channel_counts_differ,
     "Warning: numbers of fifo size counts, channel stall counts, "
     "and request or invalid counts do not match.\n"},
    {Message::width_invalid, "Warning: value for byte width for moduleinst {3} was invalid: {1}\n"},
    {Message::width_replaced, "Warning: unable to parse the byte width. Setting byte width to 1.\n"},
    {Message::request_count_differs,
     "Warning: number of cycle samples is not equal to number of valid cycles\n"},
    {Message::requests_invalid,
     "Warning: Invalid request count. Bandwidth measurement might be incorrect.\n"},
    {Message::bursts_differ,
     "Warning: Number of Total burst word samples does not match number of n bursts. "
     "May result in incorrect average burst size data\n"},
    // This one alone has no newline.
    {Message::locations_differ,
     "Warning: number of debug lines, number of debug filepaths, and number of columns do not match."},
    {Message::memory_unknown,
     "Warning: external memory from kernel does not match external memory from board.\n"},
    {Message::memory_writes_differ,
     "Warning: number of external memory write samples is not equal to "
     "the total number of clock samples\n"},
    {Message::memory_reads_differ,
     "Warning: number of external memory read samples is not equal to "
     "the total number of clock samples\n"},
    {Message::memory_samples_differ,
     "Warning: number of external memory write samples is not equal to "
     "number of external memory read samples and/or the total number of samples\n"},
    {Message::memory_without_data,
     "Error: there is no external read and write data. Nothing to add to json.\n"},
};
constexpr std::size_t num_messages = static_cast<std::size_t>(Message::count);

// The text of each message at its number.
constexpr auto texts = [] {
    std::array<const char*, num_messages> result{};
    for (const MessageRow& row : rows)
        result[static_cast<std::size_t>(row.message)] = row.text;
    return result;
}();
static_assert(std::ranges::find(texts, nullptr) == texts.end());

thread_local MessageReceiver* current_receiver = nullptr;

} // namespace

void write_formatted(std::FILE* stream, fmt::string_view format, fmt::format_args args) {
    fmt::memory_buffer text;
    fmt::vformat_to(std::back_inserter(text), format, args);
    std::fwrite(text.data(), 1, text.size(), stream);
    std::fflush(stream);
}

std::string text_of(Message message, const MessageDetails& details) {
    return fmt::format(fmt::runtime(texts[static_cast<std::size_t>(message)]), details.line, details.subject,
                       details.kernel, details.block);
}

ReceiveMessages::ReceiveMessages(MessageReceiver& receiver)
    : m_before(std::exchange(current_receiver, &receiver)) {
}

ReceiveMessages::~ReceiveMessages() {
    current_receiver = m_before;
}

void diagnose(Message message, const MessageDetails& details) {
    if (current_receiver)
        current_receiver->take(message, details);
    else
        write_message(stderr, "{}", text_of(message, details));
}
