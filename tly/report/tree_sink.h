// SPDX-License-Identifier: Apache-2.0
// Report nodes as a tree.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "report_sink.h"
#include "report_tree.h"

// Appends to a node of a report tree, which must outlive the sink. The tree has no forms: an array is a node
// whose children have the empty key.
class TreeSink final : public ReportSink {
  public:
    explicit TreeSink(ptree& node) : m_open{&node} {}

    void text(std::string_view key, std::string_view text) override {
        append_text(*m_open.back(), key, std::string(text));
    }
    void open(std::string_view key, Form /*form*/) override {
        m_open.push_back(&append_text(*m_open.back(), key, ""));
    }
    void close() override { m_open.pop_back(); }
    void array(std::string_view key, const ReportArray& values) override {
        values.visit([&](const auto& numbers) {
            ptree child = packed_array(list_of(numbers));
            append_node(*m_open.back(), key, child);
        });
    }

  private:
    std::vector<ptree*> m_open;
};
