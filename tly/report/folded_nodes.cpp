// SPDX-License-Identifier: Apache-2.0
// Nodes are folded once and written once, so an entry is only appended, and read from front to back.
//
// What must hold:
// - An entry lies in one block, so that a reader needn't join pieces. A long text has a block of its own.
// - Entries aren't aligned: values are copied out before they are used.
// - Short arrays are copied, as a list of its own costs more than its values. Their integers are as narrow as
//   all of an array's allow: most counters of a sample fit into two bytes.
// - Longer arrays share the storage of their list, which must not change: a SampleList promises that.
// - A part that comes again is a reference to its first entries, which must not move and lie in one block.
//   A part that didn't fit into the block is folded again.
// - Keys are numbered as they come. A report has fewer than 128 different ones, so their numbers take a byte.
//
// Measured (bench/README.md): 200,000 invocations of 3 samples take 7 bytes a value and 2 seconds as a whole
// run. As a tree of nodes the same run took 3.8 GiB and 27 seconds. Narrow integers: the pipeline workload
// takes 1.8 bytes a value in place of 2.7, and executes 0.7% more.
#include "folded_nodes.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "narrow_integers.h"

namespace {

// Arrays of up to this many values are copied, longer ones share their list.
constexpr std::size_t most_copied = 64;
constexpr std::size_t first_block = std::size_t{1} << 12;
constexpr std::size_t largest_block = std::size_t{1} << 18;
constexpr std::size_t max_number_bytes = 10;
constexpr std::size_t num_widths = 4; // of integers: 1, 2, 4 and 8 bytes

// Numbers take a byte for each seven bits; all but the last one have the highest bit.
char* put_number(char* out, std::size_t number) {
    for (; number > 0x7F; number >>= 7)
        *out++ = static_cast<char>(number | 0x80);
    *out++ = static_cast<char>(number);
    return out;
}

// Differs for most keys that differ. It looks at three letters, as keys are looked up for every node.
std::size_t key_hash(std::string_view key) {
    if (key.empty())
        return 0;
    const auto letter = [&](std::size_t index) {
        return std::size_t{static_cast<unsigned char>(key[index])};
    };
    return key.size() * 11 + letter(0) + letter(key.size() / 2) * 3 + letter(key.size() - 1) * 3;
}

} // namespace

// Goes over the bytes of one block.
struct FoldedNodes::Reader {
    const char* position;
    const char* end;

    std::size_t number() {
        std::size_t result = 0;
        int shift = 0;
        for (; (*position & 0x80) != 0; shift += 7)
            result |= static_cast<std::size_t>(*position++ & 0x7F) << shift;
        return result | static_cast<std::size_t>(*position++) << shift;
    }
    std::string_view text() {
        const std::size_t size = number();
        const char* const begin = position;
        position += size;
        return {begin, size};
    }
    // The next two copy the values out, as they aren't aligned.
    std::span<const float> floats(std::array<float, most_copied>& out) {
        const std::size_t count = number();
        std::memcpy(out.data(), position, count * sizeof(float));
        position += count * sizeof(float);
        return {out.data(), count};
    }
    template <class T>
    std::span<const T> integers(std::array<T, most_copied>& out) {
        const std::size_t count_and_width = number();
        const std::size_t count = count_and_width / num_widths;
        with_integer_of(std::size_t{1} << (count_and_width % num_widths), [&](auto stored) {
            for (std::size_t i = 0; i < count; ++i) {
                std::memcpy(&stored, position + i * sizeof stored, sizeof stored);
                // NOLINTNEXTLINE(bugprone-signed-char-misuse): it is a number of one byte, and no character
                out[i] = static_cast<T>(stored);
            }
            position += count * sizeof stored;
        });
        return {out.data(), count};
    }
};

// Keys are looked up for every node, so a call of memcmp would be most of what this takes.
bool FoldedNodes::Key::is(std::string_view key) const {
    if (text.size() != key.size())
        return false;
    constexpr std::size_t word = sizeof(std::uint64_t);
    if (key.size() < word)
        return text == key;
    std::uint64_t different = 0;
    for (std::size_t i = 0;; i += word) {
        const std::size_t begin = std::min(i, key.size() - word); // the last word may overlap the one before
        std::uint64_t a;
        std::uint64_t b;
        std::memcpy(&a, text.data() + begin, word);
        std::memcpy(&b, key.data() + begin, word);
        different |= a ^ b;
        if (begin + word == key.size())
            return different == 0;
    }
}

std::size_t FoldedNodes::number_of(std::string_view key) {
    Key& recent = m_recent[key_hash(key) % m_recent.size()];
    if (recent.is(key))
        return recent.number;
    const auto known = m_numbers.find(key);
    if (known != m_numbers.end())
        recent = {known->first, known->second};
    else
        recent = add_key(key);
    return recent.number;
}

FoldedNodes::Key FoldedNodes::add_key(std::string_view key) {
    const Key added{m_key_texts.emplace_back(key), m_keys.size()};
    m_numbers.emplace(added.text, added.number);
    m_keys.push_back(added.text);
    return added;
}

char* FoldedNodes::begin(Entry entry, std::string_view key, std::size_t size) {
    const std::size_t needed = 1 + max_number_bytes + size;
    if (m_room < needed) {
        const std::size_t next = m_blocks.empty() ? first_block : 2 * (m_blocks.back().size + m_room);
        const std::size_t capacity = std::max(needed, std::min(next, largest_block));
        m_blocks.push_back({std::unique_ptr<char[]>(new char[capacity]), 0});
        m_room = capacity;
    }
    char* out = m_blocks.back().bytes.get() + m_blocks.back().size;
    *out++ = static_cast<char>(entry);
    return entry == Entry::close || entry == Entry::part ? out : put_number(out, number_of(key));
}

void FoldedNodes::end(const char* end) {
    Block& block = m_blocks.back();
    const auto size = static_cast<std::size_t>(end - block.bytes.get());
    m_room -= size - block.size;
    block.size = size;
}

void FoldedNodes::text(std::string_view key, std::string_view text) {
    char* const out = put_number(begin(Entry::text, key, max_number_bytes + text.size()), text.size());
    end(std::copy(text.begin(), text.end(), out));
}

void FoldedNodes::open(std::string_view key, Form form) {
    end(begin(form == Form::object ? Entry::open_object : Entry::open_array, key, 0));
}

void FoldedNodes::close() {
    end(begin(Entry::close, {}, 0));
}

void FoldedNodes::part(std::uint64_t number, const NodePart& nodes) {
    const auto known = m_part_indices.find(number);
    if (known != m_part_indices.end())
        return end(put_number(begin(Entry::part, {}, max_number_bytes), known->second));
    const std::size_t num_blocks = m_blocks.size();
    const std::size_t first = m_blocks.empty() ? 0 : m_blocks.back().size;
    nodes.write_to(*this);
    if (m_blocks.empty() || m_blocks.size() != num_blocks)
        return;
    const Block& block = m_blocks.back();
    m_part_indices.emplace(number, m_parts.size());
    m_parts.push_back({number, block.bytes.get() + first, block.bytes.get() + block.size});
}

void FoldedNodes::array(std::string_view key, const ReportArray& values) {
    values.visit([&](const auto& numbers) { add_array(key, numbers); });
}

void FoldedNodes::add_floats(std::string_view key, std::span<const float> values) {
    char* const out =
        put_number(begin(Entry::floats, key, max_number_bytes + values.size_bytes()), values.size());
    std::memcpy(out, values.data(), values.size_bytes());
    end(out + values.size_bytes());
}

template <class T>
void FoldedNodes::add_integers(Entry entry, std::string_view key, std::span<const T> values) {
    const std::size_t width = bytes_needed(values.data(), values.size());
    const auto log_width = static_cast<std::size_t>(std::countr_zero(width));
    char* const out = put_number(begin(entry, key, max_number_bytes + values.size() * width),
                                 values.size() * num_widths + log_width);
    with_integer_of(width, [&](auto stored) {
        for (std::size_t i = 0; i < values.size(); ++i) {
            stored = static_cast<decltype(stored)>(values[i]);
            std::memcpy(out + i * sizeof stored, &stored, sizeof stored);
        }
    });
    end(out + values.size() * width);
}

template <class T>
void FoldedNodes::add_array(std::string_view key, std::span<const T> values) {
    if (values.size() > most_copied)
        add_array(key, list_of(values));
    else if constexpr (std::is_same_v<T, float>)
        add_floats(key, values);
    else
        add_integers(std::is_same_v<T, int> ? Entry::ints : Entry::long_longs, key, values);
}

template <class T>
void FoldedNodes::add_array(std::string_view key, const SampleList<T>& values) {
    if (values.size() <= most_copied) {
        std::array<T, most_copied> copy;
        values.read(0, values.size(), copy.data());
        add_array(key, std::span<const T>(copy.data(), values.size()));
        return;
    }
    constexpr Entry entry = std::is_same_v<T, int>     ? Entry::int_list
                            : std::is_same_v<T, float> ? Entry::float_list
                                                       : Entry::long_list;
    auto& lists = std::get<std::deque<SampleList<T>>>(m_lists);
    end(put_number(begin(entry, key, max_number_bytes), lists.size()));
    lists.push_back(values);
}

void FoldedNodes::write_part(const Part& part, ReportSink& sink) const {
    sink.part_of(part.number, [&](ReportSink& out) { write_entries({part.begin, part.end}, out); });
}

void FoldedNodes::write_entry(Entry entry, Reader& reader, ReportSink& sink) const {
    if (entry == Entry::part)
        return write_part(m_parts[reader.number()], sink);
    const std::string_view key = entry == Entry::close ? std::string_view() : m_keys[reader.number()];
    switch (entry) {
        case Entry::part:
            return;
        case Entry::close:
            return sink.close();
        case Entry::text:
            return sink.text(key, reader.text());
        case Entry::open_object:
            return sink.open(key, Form::object);
        case Entry::open_array:
            return sink.open(key, Form::array);
        case Entry::int_list:
            return sink.array(key, std::get<0>(m_lists)[reader.number()]);
        case Entry::long_list:
            return sink.array(key, std::get<1>(m_lists)[reader.number()]);
        case Entry::float_list:
            return sink.array(key, std::get<2>(m_lists)[reader.number()]);
        case Entry::ints: {
            std::array<int, most_copied> ints;
            return sink.array(key, reader.integers(ints));
        }
        case Entry::long_longs: {
            std::array<long long, most_copied> long_longs;
            return sink.array(key, reader.integers(long_longs));
        }
        case Entry::floats: {
            std::array<float, most_copied> floats;
            return sink.array(key, reader.floats(floats));
        }
    }
}

void FoldedNodes::write_entries(Reader reader, ReportSink& sink) const {
    while (reader.position != reader.end) {
        const auto entry = static_cast<Entry>(*reader.position++);
        write_entry(entry, reader, sink);
    }
}

void FoldedNodes::write_to(ReportSink& sink) const {
    for (const Block& block : m_blocks)
        write_entries({block.bytes.get(), block.bytes.get() + block.size}, sink);
}
