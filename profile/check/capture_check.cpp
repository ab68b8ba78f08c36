// SPDX-License-Identifier: Apache-2.0
#include "capture_check.h"

#include <algorithm>
#include <array>

#include "input_names.h"
#include "line_head.h"
#include "value_text.h"

namespace zan::profile {

namespace {

// The beginnings of compressed files, and what they are called.
constexpr std::pair<std::string_view, std::string_view> compressed_beginnings[] = {
    {"\x1f\x8b", "gzip"},
    {"\x28\xb5\x2f\xfd", "zstd"},
    {"\xfd"
     "7zXZ",
     "xz"},
    {"BZh", "bzip2"},
    {"PK\x03\x04", "zip"},
    {"\x04\x22\x4d\x18", "lz4"},
};

// Indices of the fields of a line.
constexpr std::size_t start_field = 3;
constexpr std::size_t time_field = 4;
constexpr std::size_t count_field = 6;

std::string number_words(long long number, const char* what) {
    return count_text(static_cast<double>(number)) + " " + what + (number == 1 ? "" : "s");
}

} // namespace

void CaptureCheck::add(std::string_view code, const std::string& message, const std::string& detail) {
    Fault fault;
    fault.file = m_capture;
    fault.line = m_number;
    fault.line_text = m_text;
    fault.message = message;
    m_log.add(code, fault, detail);
}

void CaptureCheck::take_design(const ProfileModel& model) {
    m_counters = DesignCounters(model);
    m_is_described = model.is_described;
}

void CaptureCheck::take_line(std::uint64_t number, std::string_view text) {
    m_number = number;
    m_text = text;
    m_has_other_counters = false;
    if (number == 1) {
        const auto* found = std::ranges::find_if(
            compressed_beginnings, [&](const auto& entry) { return text.starts_with(entry.first); });
        m_is_compressed = found != std::end(compressed_beginnings);
        if (m_is_compressed) {
            m_number = 0;
            m_text = {};
            add("compressed-capture", "the capture is compressed by " + std::string(found->second));
        }
    }
    const bool has_name = text.find_first_not_of("0123456789,") != std::string_view::npos;
    if (!has_name || m_is_compressed)
        return;
    const std::string_view name = name_in_line(text);
    m_line.split(text);
    if (is_transfer_name(name))
        check_transfer(name, m_line);
    else
        check_sample(name, m_line);
}

// Lines that are left out have faults of their own.
void CaptureCheck::check_transfer(std::string_view name, const MonLine& line) {
    const auto fields = line.fields();
    if (fields.size() <= time_field || !fields[start_field].is_number || !fields[time_field].is_number)
        return;
    if (fields[time_field].value < fields[start_field].value)
        add("time-backwards", "a transfer " + std::string(name) + " ends before it starts");
}

void CaptureCheck::check_sample(std::string_view name, const MonLine& line) {
    const auto fields = line.fields();
    const LineCounters* known = m_counters.find(name);
    if (fields.size() <= count_field || (!known && m_is_described))
        return;
    for (const std::size_t field : {start_field, time_field, count_field}) {
        if (!fields[field].is_number)
            return;
    }
    ++m_num_samples;
    if (known)
        check_counters(name, static_cast<long long>(fields.size()) - first_counter_field,
                       fields[count_field].value);
    check_times(name, fields[start_field].value, fields[time_field].value);
}

void CaptureCheck::check_counters(std::string_view name, long long num_fields, long long num_counters) {
    const LineCounters& known = *m_counters.find(name);
    if (num_fields != num_counters || !known.is_known || num_counters == known.num_fields)
        return;
    m_has_other_counters = true;
    add("counter-count",
        std::string(name) + " has " + number_words(num_counters, "counter") + " here, the design has " +
            count_text(static_cast<double>(known.num_fields)),
        DesignCounters::reason(known, num_counters));
}

void CaptureCheck::check_times(std::string_view name, long long start, long long time) {
    LastSample& last = m_last[std::string(name)];
    if (time < start)
        add("time-backwards", "a sample of " + std::string(name) + " is before the start of its invocation");
    else if (start == last.start && time < last.time)
        add("time-backwards", "a sample of " + std::string(name) + " is before the one before it");
    last = {start, time};
}

void CaptureCheck::take_end(bool has_newline) {
    if (m_is_compressed)
        return;
    if (m_number == 0)
        add("empty-capture", "the capture is empty");
    else if (!has_newline)
        add("no-final-newline", "the last line has no newline");
    if (m_number == 0)
        return;
    m_number = 0;
    m_text = {};
    if (m_num_samples == 0)
        add("no-samples", "no line is a sample of a kernel of the design");
}

} // namespace zan::profile
