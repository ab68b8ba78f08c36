// SPDX-License-Identifier: Apache-2.0
// Floats as a reader of the report's text finds them.
#pragma once

#include <vector>

#include "report_sink.h"

namespace zan::profile {

// The float nearest to the text that the report has for a float. The text has seven digits at most, so this
// may be another one.
float as_written(float value);

// Passes all nodes on to another sink, with each float of an array as it is written. So what is worked out of
// a run is the same, to the last bit, as what is worked out of its report.
class WrittenNumbers final : public ReportSink {
  public:
    // The sink must outlive it.
    explicit WrittenNumbers(ReportSink& sink) : m_sink(sink) {}

    void text(std::string_view key, std::string_view text) override { m_sink.text(key, text); }
    void open(std::string_view key, Form form) override { m_sink.open(key, form); }
    void close() override { m_sink.close(); }
    void array(std::string_view key, const ReportArray& values) override;
    void elements(const ReportArray& values) override;

  private:
    template <class Write>
    void write(const ReportArray& values, Write write_as);

    ReportSink& m_sink;
    std::vector<float> m_floats; // of the current array
};

} // namespace zan::profile
