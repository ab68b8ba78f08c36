// Report nodes as a tree.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "report_sink.h"
#include "report_tree.h"

// Appends to a node of a report tree.
class TreeSink final : public ReportSink {
  public:
    explicit TreeSink(ptree& node) : m_open{&node} {}

    void text(std::string_view key, std::string_view text) override {
        append_text(*m_open.back(), key, std::string(text));
    }
    void open(std::string_view key) override { m_open.push_back(&append_text(*m_open.back(), key, "")); }
    void close() override { m_open.pop_back(); }
    void list(std::string_view key, const SampleList<int>& values) override { append(key, values); }
    void list(std::string_view key, const SampleList<long long>& values) override { append(key, values); }
    void list(std::string_view key, const SampleList<float>& values) override { append(key, values); }
    void values(std::string_view key, const int* values, std::size_t count) override {
        append(key, SampleList<int>(values, count));
    }
    void values(std::string_view key, const long long* values, std::size_t count) override {
        append(key, SampleList<long long>(values, count));
    }
    void values(std::string_view key, const float* values, std::size_t count) override {
        append(key, SampleList<float>(values, count));
    }

  private:
    template <class T>
    void append(std::string_view key, const SampleList<T>& values) {
        append_samples(*m_open.back(), key, values);
    }

    std::vector<ptree*> m_open;
};
