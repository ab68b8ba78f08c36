// SPDX-License-Identifier: Apache-2.0
#include "message_faults.h"

#include <algorithm>
#include <array>

#include "input_names.h"

namespace zan::profile {

namespace {

// Of the details, {0} is the line, {1} the subject, {2} the kernel and {3} the block.
struct MessageFaultRow {
    Message message;
    FaultKind kind;
    FaultPlace place;
    const char* section;
    const char* text; // null: no fault of its own
};

using enum FaultPlace;

constexpr MessageFaultRow message_rows[] = {
    {Message::no_version, FaultKind::section_missing, package, version_section, "the package has no version"},
    {Message::no_board, FaultKind::section_missing, package, board_section,
     "the package has no board description"},
    {Message::no_timing_report, FaultKind::section_missing, package, timing_report_section,
     "the package has no timing report"},
    {Message::no_description, FaultKind::no_description, package, profiler_section,
     "the package has no profiler description, so counters can't be read"},
    {Message::description_unreadable, FaultKind::section_unreadable, package, profiler_section,
     "the profiler description can't be read"},
    // The loader's list of errors says more.
    {Message::description_not_loadable, FaultKind::xml_rule, package, profiler_section, nullptr},
    {Message::memory_twice, FaultKind::same_memory, package, board_section,
     "two memories have the name {1}; the first one counts"},
    {Message::shared_port_unknown, FaultKind::unknown_share, package, profiler_section,
     "the counter {1} of {2}/{3} shares a counter that isn't connected above it, and isn't read"},
    {Message::autorun_kernel_unknown, FaultKind::autorun_without_kernel, package, profiler_section,
     "{2} is an autorun kernel that isn't there"},
    {Message::monitor_file_unreadable, FaultKind::capture_unreadable, capture, nullptr,
     "the capture can't be opened"},
    {Message::shared_in_design_only, FaultKind::shared_in_design_only, capture_line, nullptr,
     "the counters of {2} are shared in the design, but not in this run"},
    {Message::shared_in_monitor_only, FaultKind::shared_in_capture_only, capture_line, nullptr,
     "the counters of {2} are shared in this run, but not in the design"},
    {Message::no_samples, FaultKind::kernel_without_data, capture, nullptr, "the kernel {2} has no samples"},
    {Message::no_autorun_samples, FaultKind::kernel_without_data, capture, nullptr,
     "the autorun kernel {2} has no samples"},
    {Message::empty_line, FaultKind::empty_line, capture_line, nullptr, "the line is empty"},
    {Message::bad_number, FaultKind::bad_number, capture_line, nullptr, "the {1} is no number"},
    {Message::wrong_field_count, FaultKind::wrong_field_count, capture_line, nullptr,
     "the line has too few fields, or too many for a transfer"},
    {Message::wrong_counter_count, FaultKind::wrong_counter_count, capture_line, nullptr,
     "the number of counters of {2} isn't that of the fields after it"},
    {Message::kernel_unknown, FaultKind::unknown_kernel, capture_line, nullptr,
     "the design has no kernel {2}"},
    {Message::kernel_without_blocks, FaultKind::kernel_without_counters, capture_line, nullptr,
     "the kernel {2} has no counters in the design"},
    {Message::bad_counter, FaultKind::bad_counter, capture_line, nullptr,
     "a counter of {2}/{3} isn't there or is no number, and counts as -1"},
    {Message::memory_tag_without_operation, FaultKind::tag_fault, package, profiler_section,
     "a memory counter of {2}/{3} names no operation"},
    {Message::memory_tag_unreadable, FaultKind::tag_fault, package, profiler_section,
     "the memory counter {1} of {2}/{3} names no memory, bank or port, and isn't read"},
    {Message::memory_bank_invalid, FaultKind::tag_fault, package, profiler_section,
     "a memory counter of {2}/{3} has the bank '{1}', and isn't read"},
    {Message::memory_port_invalid, FaultKind::tag_fault, package, profiler_section,
     "a memory counter of {2}/{3} has the port '{1}', and isn't read"},
    {Message::no_cycles, FaultKind::no_cycles, package, profiler_section,
     "the kernel {2} counts no clock cycles"},
    {Message::no_timestamps, FaultKind::sample_mismatch, package, profiler_section,
     "{2}/{3} has no sample times"},
    {Message::one_channel_size, FaultKind::sample_mismatch, package, profiler_section,
     "{2}/{3} counts only one of the fill of its channel and the largest fill"},
    {Message::channel_counts_differ, FaultKind::sample_mismatch, capture, nullptr,
     "the fills, stalls and requests of {2}/{3} differ in number"},
    {Message::width_invalid, FaultKind::no_width, package, profiler_section,
     "the width of {2}/{3} is '{1}', and counts as 1 byte"},
    {Message::width_replaced, FaultKind::no_width, package, profiler_section, nullptr},
    {Message::request_count_differs, FaultKind::sample_mismatch, capture, nullptr,
     "the cycles and requests of {2}/{3} differ in number"},
    {Message::requests_invalid, FaultKind::sample_mismatch, capture, nullptr,
     "a sample of {2}/{3} has -1 requests, so its bandwidth may be wrong"},
    {Message::bursts_differ, FaultKind::sample_mismatch, capture, nullptr,
     "the bursts and their words of {2}/{3} differ in number"},
    {Message::locations_differ, FaultKind::sample_mismatch, package, profiler_section,
     "the lines, files and columns of {2}/{3} differ in number"},
    {Message::memory_unknown, FaultKind::unknown_memory, package, profiler_section,
     "{2} counts accesses of the memory {1}, which the board doesn't have"},
    {Message::memory_writes_differ, FaultKind::sample_mismatch, capture, nullptr,
     "the cycles of {2} and its writes to {1} differ in number"},
    {Message::memory_reads_differ, FaultKind::sample_mismatch, capture, nullptr,
     "the cycles of {2} and its reads from {1} differ in number"},
    {Message::memory_samples_differ, FaultKind::sample_mismatch, capture, nullptr,
     "the cycles of {2} and its reads and writes of {1} differ in number"},
    {Message::memory_without_data, FaultKind::sample_mismatch, capture, nullptr,
     "{2} neither reads nor writes {1}"},
};
static_assert(std::size(message_rows) == static_cast<std::size_t>(Message::count));
static_assert(std::ranges::is_sorted(message_rows, {}, &MessageFaultRow::message));

} // namespace

std::optional<MessageFault> fault_of(Message message, const MessageDetails& details) {
    const MessageFaultRow& row = message_rows[static_cast<std::size_t>(message)];
    if (!row.text)
        return std::nullopt;
    return MessageFault{
        row.kind, row.place, row.section,
        fmt::format(fmt::runtime(row.text), details.line, details.subject, details.kernel, details.block)};
}

} // namespace zan::profile
