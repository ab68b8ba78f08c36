// SPDX-License-Identifier: Apache-2.0
// Growing storage of numbers, each as narrow as all of them allow.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <type_traits>

// An array that is appended to and cut at its end. It is where the memory of a run goes.
//
// Values of 64 bits take 32 until one comes that doesn't fit, since counters rarely do: a capture of 300
// million values is held in 4.8 bytes a value, metrics and all. Growth is left to realloc, not to a
// std::vector: large arrays move by their pages, without a copy and without the old and the new array side by
// side. The pages after the last value are never written to, so they take no memory, and doubling the
// capacity is free.
template <class T>
class SampleBuffer {
  public:
    SampleBuffer() = default;
    SampleBuffer(const SampleBuffer&) = delete;
    SampleBuffer& operator=(const SampleBuffer&) = delete;
    ~SampleBuffer() { std::free(m_bytes); }

    std::size_t size() const { return m_size; }
    const void* data() const { return m_bytes; }
    // The value at `index`, which is below the size.
    T operator[](std::size_t index) const {
        if constexpr (can_be_narrow) {
            if (!m_wide)
                return at<Narrow>(index);
        }
        return at<T>(index);
    }
    // Copies `count` values from `begin` on, all of which must be there.
    void read(std::size_t begin, std::size_t count, T* out) const {
        if constexpr (can_be_narrow) {
            if (!m_wide) {
                for (std::size_t i = 0; i < count; ++i)
                    out[i] = at<Narrow>(begin + i);
                return;
            }
        }
        if (count != 0)
            std::memcpy(out, m_bytes + begin * sizeof(T), count * sizeof(T));
    }

    void push_back(T value) { append(&value, 1); }
    void append(const T* values, std::size_t count) {
        if constexpr (can_be_narrow) {
            if (!m_wide && !all_narrow(values, count))
                widen(count);
        }
        reserve(count);
        if constexpr (can_be_narrow) {
            if (!m_wide) {
                for (std::size_t i = 0; i < count; ++i)
                    put(m_size + i, static_cast<Narrow>(values[i]));
                m_size += count;
                return;
            }
        }
        if (count != 0)
            std::memcpy(m_bytes + m_size * sizeof(T), values, count * sizeof(T));
        m_size += count;
    }
    void append_zeros(std::size_t count) {
        reserve(count);
        if (count != 0)
            std::memset(m_bytes + m_size * value_size(), 0, count * value_size());
        m_size += count;
    }
    // Leaves the first `size` values, of which there are as many or more. The memory is kept.
    void cut(std::size_t size) { m_size = size; }

  private:
    static constexpr bool can_be_narrow = std::is_same_v<T, long long>;
    using Narrow = std::int32_t;

    static bool is_narrow(T value) { return static_cast<T>(static_cast<Narrow>(value)) == value; }
    static bool all_narrow(const T* values, std::size_t count) {
        unsigned different = 0;
        for (std::size_t i = 0; i < count; ++i)
            different |= is_narrow(values[i]) ? 0u : 1u;
        return different == 0;
    }

    std::size_t value_size() const { return can_be_narrow && !m_wide ? sizeof(Narrow) : sizeof(T); }
    template <class Stored>
    Stored at(std::size_t index) const {
        Stored value;
        std::memcpy(&value, m_bytes + index * sizeof(Stored), sizeof(Stored));
        return value;
    }
    template <class Stored>
    void put(std::size_t index, Stored value) {
        std::memcpy(m_bytes + index * sizeof(Stored), &value, sizeof(Stored));
    }

    void reserve(std::size_t count) {
        if (m_capacity - m_size < count)
            grow(std::max({m_size + count, 2 * m_capacity, std::size_t{4}}));
    }
    void grow(std::size_t capacity) {
        auto* const bytes = capacity > std::numeric_limits<std::size_t>::max() / sizeof(T)
                                ? nullptr
                                : static_cast<char*>(std::realloc(m_bytes, capacity * value_size()));
        if (!bytes)
            throw std::bad_alloc();
        m_bytes = bytes;
        m_capacity = capacity;
    }
    // Makes every value take its full width. Values move from the last to the first, since each one's new
    // place covers the old place of later ones.
    void widen(std::size_t count) {
        m_wide = true;
        grow(std::max({m_size + count, m_capacity, std::size_t{4}}));
        for (std::size_t i = m_size; i-- > 0;)
            put(i, static_cast<T>(at<Narrow>(i)));
    }

    char* m_bytes = nullptr;
    std::size_t m_size = 0;
    std::size_t m_capacity = 0; // in values of the current width
    bool m_wide = false;
};
