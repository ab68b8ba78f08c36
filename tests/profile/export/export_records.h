// SPDX-License-Identifier: Apache-2.0
// What an export's writer got, as texts.
#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "series_reader.h"

namespace zan::profile {

inline std::string shown_series(const SampleSeries& series) {
    std::ostringstream text;
    text << layout_of(series.table).name << " " << series.invocation.value_or(0) << " "
         << series.owner.value_or(0) << " " << series.metric.name << ":";
    SeriesReader reader(series);
    SeriesChunk chunk;
    while (reader.next(chunk)) {
        for (std::size_t i = 0; i < chunk.size; ++i) {
            text << " " << series.first + chunk.first + i << "@";
            chunk.timed[i] ? text << chunk.times[i] : text << "-";
            text << "=";
            chunk.known[i] ? text << chunk.value(i) : text << "-";
        }
    }
    return text.str();
}

class RecordedExport final : public ExportWriter {
  public:
    void new_block(std::int64_t id, std::int64_t kernel, const BlockNode& node) override {
        lines.push_back("block " + std::to_string(id) + " of " + std::to_string(kernel) + " " + node.name);
    }
    void new_port(std::int64_t id, std::int64_t kernel, const PortNode& node) override {
        lines.push_back("port " + std::to_string(id) + " of " + std::to_string(kernel) + " " + node.port);
    }
    void series(const SampleSeries& series) override { lines.push_back(shown_series(series)); }
    void transfer(std::int64_t id, const TransferNode& node) override {
        lines.push_back("transfer " + std::to_string(id) + " " + node.type);
    }
    void finish(const WholeRun&) override { lines.push_back("end"); }

    std::vector<std::string> lines;
};

} // namespace zan::profile
