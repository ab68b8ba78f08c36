// SPDX-License-Identifier: Apache-2.0
// What a sink of the report gets, as lines for comparison.
#pragma once

#include <string>
#include <type_traits>
#include <vector>

#include "report_sink.h"

// One line for each call: "key text TEXT", "key open array", "close", "key integers 1 2", "key floats 0.5";
// without a key, without its blank. "more floats 0.5" are elements of an open array.
class NodeEventList final : public ReportSink {
  public:
    void text(std::string_view key, std::string_view text) override { add(key, "text " + std::string(text)); }
    void open(std::string_view key, Form form) override {
        add(key, form == Form::array ? "open array" : "open object");
    }
    void close() override { add({}, "close"); }
    void array(std::string_view key, const ReportArray& values) override { add(key, line_of(values)); }
    void elements(const ReportArray& values) override { add("more", line_of(values)); }

    std::vector<std::string> list;

  private:
    static std::string line_of(const ReportArray& values) {
        std::string line;
        values.visit([&](const auto& numbers) {
            using Number = std::decay_t<decltype(numbers[0])>;
            line = std::is_same_v<Number, float> ? "floats" : "integers";
            for (std::size_t i = 0; i < numbers.size(); ++i)
                line += " " + report_text(numbers[i]);
        });
        return line;
    }
    void add(std::string_view key, const std::string& line) {
        list.push_back(key.empty() ? line : std::string(key) + " " + line);
    }
};
