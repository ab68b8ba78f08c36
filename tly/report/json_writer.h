// SPDX-License-Identifier: Apache-2.0
// Nodes of the report as JSON text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
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
    void part(std::uint64_t number, const NodePart& nodes) override;
    // Closes the object; to be called once, after all nodes. The bytes may still be in the buffer.
    void finish();

  private:
    struct OpenNode {
        Form form;
        bool is_member; // has a key
        bool has_children;
        bool operator==(const OpenNode&) const = default;
    };
    // The text of a part. It is the same wherever the depth and the node around it are.
    struct KnownPart {
        std::size_t depth;
        OpenNode parent;
        std::string text;
        std::vector<OpenNode> open; // the parent and what is open in it after the part
    };

    void append_indent(std::size_t depth);
    void keep_part(std::uint64_t number, const NodePart& nodes);
    void begin_children();
    void begin_child(std::string_view key);
    template <class T>
    void write_numbers(const SampleList<T>& numbers);
    template <class T>
    void write_numbers(std::span<const T> numbers);

    TextBuffer& m_out;
    std::vector<OpenNode> m_open;
    std::unordered_map<std::uint64_t, KnownPart> m_parts;
    std::size_t m_parts_size = 0; // of all their texts
};
