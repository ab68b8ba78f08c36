// SPDX-License-Identifier: Apache-2.0
// Nodes of the report as JSON text.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

#include "report_sink.h"
#include "text_buffer.h"

// Writes one object, whose members are what the sink takes, and a newline. Each child stands on a line of its
// own, four blanks further in than its parent. Open nodes stand on a list, so their depth isn't bounded by
// the stack.
//
// What must hold: a text once appended stays, and a node shows only with its first child whether it is a
// text. So the bracket of a node is written along with that child. The key is written at once, as views don't
// last.
class JsonWriter final : public ReportSink {
  public:
    // `out` must outlive the writer.
    explicit JsonWriter(TextBuffer& out) : m_out(out), m_open{{Form::object, false, false}} {}

    void text(std::string_view key, std::string_view text) override;
    void open(std::string_view key, Form form) override;
    void close() override;
    void array(std::string_view key, const ReportArray& values) override;
    // Closes the object; to be called once, after all nodes. The bytes may still be in the buffer.
    void finish();

  private:
    struct OpenNode {
        Form form;
        bool is_member; // has a key
        bool has_children;
    };

    void append_indent(std::size_t depth);
    void begin_children();
    void begin_child(std::string_view key);
    template <class T>
    void write_numbers(const SampleList<T>& numbers);
    template <class T>
    void write_numbers(std::span<const T> numbers);

    TextBuffer& m_out;
    std::vector<OpenNode> m_open;
};
