// SPDX-License-Identifier: Apache-2.0
// Finished nodes in as few bytes as they can be restored from.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <vector>

#include "report_sink.h"
#include "sample_list.h"

// Takes the elements of an array and writes them again, in the same order. A run of many invocations has
// millions of small nodes, which would cost some hundred bytes each in a tree: here it is the text's own
// bytes and two or three more, or the values. Arrays of many values share the storage of their lists.
class FoldedNodes final : public ReportSink {
  public:
    void text(std::string_view key, std::string_view text) override;
    void open(std::string_view key, Form form) override;
    void close() override;
    void array(std::string_view key, const ReportArray& values) override;
    void part(std::uint64_t number, const NodePart& nodes) override;

    // Writes the same nodes in the same order.
    void write_to(ReportSink& sink) const;

  private:
    // The first byte of each entry, followed by the number of its key, if it has one.
    enum class Entry : unsigned char {
        text, // length, bytes
        open_object,
        open_array,
        close,
        ints,       // number of values and their width, their bytes
        long_longs, // number of values and their width, their bytes
        floats,     // number of values, their bytes
        int_list,   // number of the list
        long_list,  // number of the list
        float_list, // number of the list
        part,       // number of the part in m_parts, no key
    };
    // Entries that are written again: those of the first time, which lie in one block.
    struct Part {
        std::uint64_t number; // that of its caller
        const char* begin;
        const char* end;
    };
    struct Block {
        std::unique_ptr<char[]> bytes;
        std::size_t size;
    };
    struct Key {
        std::string_view text;
        std::size_t number = 0;
        bool is(std::string_view key) const;
    };
    struct Reader;

    // Makes room for an entry, writes its kind and key, and returns the place after them. `end` is where the
    // entry ends.
    char* begin(Entry entry, std::string_view key, std::size_t size);
    void end(const char* end);
    std::size_t number_of(std::string_view key);
    Key add_key(std::string_view key);
    template <class T>
    void add_array(std::string_view key, const SampleList<T>& values);
    template <class T>
    void add_array(std::string_view key, std::span<const T> values);
    template <class T>
    void add_integers(Entry entry, std::string_view key, std::span<const T> values);
    void add_floats(std::string_view key, std::span<const float> values);
    void write_entries(Reader reader, ReportSink& sink) const;
    void write_entry(Entry entry, Reader& reader, ReportSink& sink) const;
    void write_part(const Part& part, ReportSink& sink) const;

    std::vector<Block> m_blocks;
    std::size_t m_room = 0; // bytes left in the last block
    std::deque<std::string> m_key_texts;
    std::vector<std::string_view> m_keys{{}}; // by their numbers; the first one is that of elements
    std::unordered_map<std::string_view, std::size_t> m_numbers{{{}, 0}};
    // Recent keys by a hash of a few letters: most keys are found here.
    std::array<Key, 256> m_recent{};
    std::vector<Part> m_parts;
    std::unordered_map<std::uint64_t, std::size_t> m_part_indices; // by the numbers of callers
    std::tuple<std::deque<SampleList<int>>, std::deque<SampleList<long long>>, std::deque<SampleList<float>>>
        m_lists;
};
