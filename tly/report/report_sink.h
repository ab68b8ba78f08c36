// A node of the report, told piece by piece to whatever takes it: a tree, its text, or folded nodes.
#pragma once

#include <array>
#include <string_view>

#include "report_tree.h"

// Takes the children of one node in their order. A child without text, values or children of its own is an
// empty text. Views hold until the call returns.
class ReportSink {
  public:
    virtual ~ReportSink() = default;

    virtual void text(std::string_view key, std::string_view text) = 0;
    // What is told up to the matching close() are the children of a new child.
    virtual void open(std::string_view key) = 0;
    virtual void close() = 0;
    // Arrays, which have at least one value. A list may be kept, sharing its storage.
    virtual void list(std::string_view key, const SampleList<int>& values) = 0;
    virtual void list(std::string_view key, const SampleList<long long>& values) = 0;
    virtual void list(std::string_view key, const SampleList<float>& values) = 0;
    virtual void values(std::string_view key, const int* values, std::size_t count) = 0;
    virtual void values(std::string_view key, const long long* values, std::size_t count) = 0;
    virtual void values(std::string_view key, const float* values, std::size_t count) = 0;

    // The report's text of a number.
    template <ReportNumber T>
    void number(std::string_view key, T value) {
        char digits[max_number_text];
        text(key, std::string_view(digits, write_number(digits, value)));
    }
    void truth(std::string_view key, bool value) { text(key, value ? "true" : "false"); }
    // Appends the array of the samples; an empty list appends nothing.
    template <class T>
    void samples(std::string_view key, const SampleList<T>& samples) {
        if (!samples.empty())
            list(key, samples);
    }
};

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
            sink.list(key, m_list);
        } else if (m_count != 0) {
            sink.values(key, m_values.data(), m_count);
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
