// SPDX-License-Identifier: Apache-2.0
// The one way to write nodes of the report: piece by piece to whatever takes them, such as a tree, a text, or
// folded nodes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "report_array.h"
#include "report_numbers.h"
#include "sample_list.h"

// What the children of a node are: members of an object, each with a key, or elements of an array.
enum class Form { object, array };

class ReportSink;

// Nodes that are written again and again, such as the name of a block and where it stands in the source.
class NodePart {
  public:
    virtual ~NodePart() = default;
    // Writes the same nodes each time. It may leave nodes open, and closes none that was open before.
    virtual void write_to(ReportSink& sink) const = 0;
};

// Takes the children of one node, in their order. `key` is the name of a member; it is empty for an element.
// Views and spans hold until the call returns. Nothing is checked: callers close what they open, and the keys
// of an object may occur twice.
class ReportSink {
  public:
    virtual ~ReportSink() = default;

    // A child that is a text. Numbers are texts, too.
    virtual void text(std::string_view key, std::string_view text) = 0;
    // What comes up to the matching close() are the children of a new child. A child that gets none is an
    // empty text: the report has no empty objects and arrays.
    virtual void open(std::string_view key, Form form) = 0;
    virtual void close() = 0;
    // A child that is an array of numbers, at least one. It stands for an open array with a text for each.
    virtual void array(std::string_view key, const ReportArray& values) = 0;
    // The next elements of the array that is open, which come in pieces because there are many of them: at
    // least one number. Each stands for a text.
    virtual void elements(const ReportArray& values) {
        values.visit([&](const auto& numbers) {
            for (std::size_t i = 0; i < numbers.size(); ++i)
                number({}, numbers[i]);
        });
    }

    // Nodes that are the same whenever they come with this number, which is above 0: a sink may keep what it
    // made of them, and need not ask for them again.
    virtual void part(std::uint64_t, const NodePart& nodes) { nodes.write_to(*this); }

    // The report's text of a number.
    template <ReportNumber T>
    void number(std::string_view key, T value) {
        char digits[max_number_text];
        text(key, std::string_view(digits, write_number(digits, value)));
    }
    // The same of what `write` writes to the sink that it is handed.
    template <class Write>
    void part_of(std::uint64_t number, const Write& write) {
        struct Part final : NodePart {
            explicit Part(const Write& function) : m_write(function) {}
            void write_to(ReportSink& sink) const override { m_write(sink); }
            const Write& m_write;
        };
        part(number, Part(write));
    }
    void boolean(std::string_view key, bool value) { text(key, value ? "true" : "false"); }
    // The array of the samples; an empty list has no child.
    template <class T>
    void samples(std::string_view key, const SampleList<T>& samples) {
        if (!samples.empty())
            array(key, samples);
    }
};
