// SPDX-License-Identifier: Apache-2.0
// The samples of one counter: one value for each monitor line of an invocation.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include "sample_buffer.h"

// The values that a list stores, in the width that they are stored in.
template <class T>
class StoredSamples {
  public:
    StoredSamples(const SampleBuffer<T>* buffer, std::size_t size) : m_buffer(buffer), m_size(size) {}
    std::size_t size() const { return m_size; }
    bool empty() const { return m_size == 0; }
    T operator[](std::size_t index) const { return (*m_buffer)[index]; }
    // Which storage holds them: the same for lists that share it.
    const void* storage() const { return m_buffer; }

  private:
    const SampleBuffer<T>* m_buffer;
    std::size_t m_size;
};

// A list of numbers that is cheap for what profiles are full of. Zeros at its end are only counted: most
// counters of a design never count, and a list of zeros stores nothing. A copy shares the stored values: a
// report node takes the samples of an invocation without copying them, and the cycles of a function are
// handed to its kernel after every block of lines.
//
// What must hold: a list behaves as a vector of its own would, whatever shares its storage. Appending to one
// copy never shows in another. It costs as much as appending to a vector for the copy that has grown last;
// another copy takes storage of its own first. So a list has one owner who appends, and copies are snapshots.
// In a report tree of one node for each value a sample took about 300 bytes. Not for several threads.
template <class T>
class SampleList {
  public:
    SampleList() = default;
    SampleList(const T* values, std::size_t count) { append(values, count); }
    SampleList(const std::vector<T>& values) : SampleList(values.data(), values.size()) {}
    SampleList(std::initializer_list<T> values) : SampleList(std::vector<T>(values)) {}

    std::size_t size() const { return m_size; }
    bool empty() const { return m_size == 0; }
    // The value at `index`, which must be below the size.
    T operator[](std::size_t index) const { return index < m_stored ? (*m_values)[index] : T{}; }
    // The last value of a list that is not empty.
    T back() const { return (*this)[m_size - 1]; }
    // The values up to the last that is not zero; all after them, up to the size, are zeros.
    StoredSamples<T> stored() const { return {m_values.get(), m_stored}; }
    // Copies `count` values from `begin` on. What the list doesn't have is zeros.
    void read(std::size_t begin, std::size_t count, T* out) const {
        const std::size_t num_stored = begin < m_stored ? std::min(count, m_stored - begin) : 0;
        if (num_stored != 0)
            m_values->read(begin, num_stored, out);
        std::fill(out + num_stored, out + count, T{});
    }
    std::vector<T> to_vector() const {
        std::vector<T> result(m_size);
        read(0, m_size, result.data());
        return result;
    }

    // The first `count` values, sharing the storage; `count` is at most the size.
    SampleList first(std::size_t count) const {
        SampleList result = *this;
        result.m_stored = std::min(m_stored, count);
        result.m_size = count;
        return result;
    }

    void push_back(T value) {
        if (is_zero(value))
            ++m_size;
        else
            store(&value, 1);
    }
    void append(const T* values, std::size_t count) {
        std::size_t num_stored = count;
        while (num_stored != 0 && is_zero(values[num_stored - 1]))
            --num_stored;
        if (num_stored != 0)
            store(values, num_stored);
        m_size += count - num_stored;
    }
    void append_zeros(std::size_t count) { m_size += count; }
    // Replaces the last value of a list that is not empty.
    void set_back(T value) {
        --m_size;
        if (m_size < m_stored) {
            --m_stored;
            own_values();
        }
        push_back(value);
    }
    // Empties the list. Storage that no copy shares is kept for the next values.
    void clear() {
        if (m_values && m_values.use_count() == 1)
            m_values->cut(0);
        else
            m_values.reset();
        m_stored = 0;
        m_size = 0;
    }

    friend bool operator==(const SampleList& a, const SampleList& b) {
        return a.to_vector() == b.to_vector();
    }

  private:
    // A negative zero is written as "-0", so it is no zero here.
    static bool is_zero(T value) {
        if constexpr (std::is_same_v<T, float>)
            return std::bit_cast<std::uint32_t>(value) == 0;
        else
            return value == 0;
    }

    void store(const T* values, std::size_t count) {
        if (!m_values)
            m_values = std::make_shared<SampleBuffer<T>>();
        else if (m_values->size() != m_stored) // a copy has grown since: leave its values alone
            own_values();
        if (m_stored != m_size)
            m_values->append_zeros(m_size - m_stored);
        m_values->append(values, count);
        m_size += count;
        m_stored = m_size;
    }

    // Leaves just the stored values in the storage, which is one of its own where others share it.
    void own_values() {
        if (m_values.use_count() == 1) {
            m_values->cut(m_stored);
            return;
        }
        auto own = std::make_shared<SampleBuffer<T>>();
        constexpr std::size_t block_size = 256;
        T block[block_size];
        for (std::size_t begin = 0; begin < m_stored; begin += block_size) {
            const std::size_t count = std::min(block_size, m_stored - begin);
            m_values->read(begin, count, block);
            own->append(block, count);
        }
        m_values = std::move(own);
    }

    std::shared_ptr<SampleBuffer<T>> m_values; // may be longer than m_stored where a copy has grown
    std::size_t m_stored = 0;
    std::size_t m_size = 0;
};

// Goes over a list from its front, a block of values at a time. Past the list's end there are zeros.
template <class T>
class SampleCursor {
  public:
    explicit SampleCursor(const SampleList<T>& list) : m_list(list) {}

    T next() {
        if (m_position == m_block.size()) {
            m_list.read(m_begin, m_block.size(), m_block.data());
            m_begin += m_block.size();
            m_position = 0;
        }
        return m_block[m_position++];
    }

  private:
    const SampleList<T>& m_list;
    std::size_t m_begin = 0; // of the next block
    std::array<T, 64> m_block;
    std::size_t m_position = 64;
};
