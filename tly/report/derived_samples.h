// SPDX-License-Identifier: Apache-2.0
// Values that are worked out for the report.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string_view>

#include "report_sink.h"
#include "sample_list.h"

// Values that are worked out for the report, one after the other. A few of them need no list.
class DerivedSamples {
  public:
    void push_back(float value) {
        if (m_count == m_values.size())
            move_to_list();
        m_values[m_count++] = value;
    }
    bool empty() const { return m_count == 0; }
    // Appends the array, unless it is empty.
    void append_to(ReportSink& sink, std::string_view key) {
        if (!m_list.empty()) {
            move_to_list();
            sink.array(key, m_list);
        } else if (m_count != 0) {
            sink.array(key, std::span<const float>(m_values.data(), m_count));
        }
    }

  private:
    void move_to_list() {
        m_list.append(m_values.data(), m_count);
        m_count = 0;
    }

    std::array<float, 64> m_values; // the last ones
    std::size_t m_count = 0;
    SampleList<float> m_list;
};
