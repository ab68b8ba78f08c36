// SPDX-License-Identifier: Apache-2.0
// What the lines of a capture show before they are read.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

#include "design_counters.h"
#include "finding.h"
#include "mon_line.h"

namespace zan::profile {

// Looks at each line on its own, and at the times of one after the other.
class CaptureCheck {
  public:
    // `capture` is the file's name. It and the log must outlive the check.
    CaptureCheck(std::string_view capture, FindingLog& log) : m_capture(capture), m_log(log) {}

    void take_design(const ProfileModel& model);
    void take_line(std::uint64_t number, std::string_view text);
    // `has_newline`: the last line ended with it.
    void take_end(bool has_newline);

    // The current line has another number of counters than the design: faults of its counters follow from
    // that.
    bool has_other_counters() const { return m_has_other_counters; }
    // The file is compressed, so that nothing else that is found in it matters.
    bool is_compressed() const { return m_is_compressed; }
    std::uint64_t num_samples() const { return m_num_samples; }

  private:
    struct LastSample {
        long long start = 0;
        long long time = 0;
    };

    void check_sample(std::string_view name, const MonLine& line);
    void check_transfer(std::string_view name, const MonLine& line);
    void check_counters(std::string_view name, long long num_fields, long long num_counters);
    void check_times(std::string_view name, long long start, long long time);
    void add(std::string_view code, const std::string& message, const std::string& detail = {});

    std::string_view m_capture;
    FindingLog& m_log;
    DesignCounters m_counters;
    bool m_is_described = true;
    MonLine m_line;
    std::uint64_t m_number = 0;
    std::string_view m_text;
    std::unordered_map<std::string, LastSample> m_last; // by name on the line
    bool m_has_other_counters = false;
    bool m_is_compressed = false;
    std::uint64_t m_num_samples = 0;
};

} // namespace zan::profile
