// A node of the report, told piece by piece to whatever takes it: a tree, its text, or folded nodes.
#pragma once

#include <cstddef>
#include <string_view>

#include "report_numbers.h"
#include "sample_list.h"

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
