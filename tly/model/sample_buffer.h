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
// Values of 64 bits take one, two, four or eight bytes, as many as the widest of the list needs: counters
// rarely need more than four. Growth is left to realloc, not to a std::vector: large arrays move by their
// pages, without a copy and without the old and the new array side by side. The pages after the last value
// are never written to, so they take no memory, and doubling the capacity is free.
//
// Measured (bench/README.md): with one and two bytes besides four and eight the pipeline workload holds 2.8
// bytes a value in place of 3.4, and a run takes 0.2 to 1.5% more instructions. Lists of random counters of
// up to 9 digits stay at four bytes. Not tried: 30 bits for those, in blocks.
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
        T value;
        with_type([&](auto stored) { value = at<decltype(stored)>(index); });
        return value;
    }
    // Copies `count` values from `begin` on, all of which must be there.
    void read(std::size_t begin, std::size_t count, T* out) const {
        if (count == 0)
            return;
        with_type([&](auto stored) {
            if constexpr (sizeof(stored) == sizeof(T)) {
                std::memcpy(out, m_bytes + begin * sizeof(T), count * sizeof(T));
            } else {
                for (std::size_t i = 0; i < count; ++i)
                    out[i] = at<decltype(stored)>(begin + i);
            }
        });
    }

    void push_back(T value) { append(&value, 1); }
    void append(const T* values, std::size_t count) {
        if constexpr (can_be_narrow) {
            if (m_value_size != sizeof(T)) {
                const std::size_t needed = value_size_of(values, count);
                if (needed > m_value_size)
                    widen(needed, count);
            }
        }
        if (count == 0)
            return;
        reserve(count);
        with_type([&](auto stored) {
            if constexpr (sizeof(stored) == sizeof(T)) {
                std::memcpy(m_bytes + m_size * sizeof(T), values, count * sizeof(T));
            } else {
                for (std::size_t i = 0; i < count; ++i)
                    put(m_size + i, static_cast<decltype(stored)>(values[i]));
            }
        });
        m_size += count;
    }
    void append_zeros(std::size_t count) {
        reserve(count);
        if (count != 0)
            std::memset(m_bytes + m_size * m_value_size, 0, count * m_value_size);
        m_size += count;
    }
    // Leaves the first `size` values, of which there are as many or more. The memory is kept.
    void cut(std::size_t size) { m_size = size; }

  private:
    static constexpr bool can_be_narrow = std::is_same_v<T, long long>;

    // Calls `function` with a zero of the type that values are stored in.
    template <class Function>
    void with_type(Function function) const {
        if constexpr (can_be_narrow) {
            switch (m_value_size) {
                case sizeof(std::int8_t):
                    return function(std::int8_t{});
                case sizeof(std::int16_t):
                    return function(std::int16_t{});
                case sizeof(std::int32_t):
                    return function(std::int32_t{});
                default:
                    break;
            }
        }
        function(T{});
    }
    // The bytes that each of these values fits.
    static std::size_t value_size_of(const long long* values, std::size_t count) {
        std::uint64_t bits = 0; // all those that differ from the sign
        for (std::size_t i = 0; i < count; ++i)
            bits |= static_cast<std::uint64_t>(values[i] ^ (values[i] >> 63));
        return bits < 1u << 7 ? 1 : bits < 1u << 15 ? 2 : bits < 1u << 31 ? 4 : 8;
    }

    template <class Stored>
    T at(std::size_t index) const {
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
            grow(std::max({m_size + count, 2 * m_capacity, std::size_t{4}}), m_value_size);
    }
    void grow(std::size_t capacity, std::size_t value_size) {
        auto* const bytes = capacity > std::numeric_limits<std::size_t>::max() / sizeof(T)
                                ? nullptr
                                : static_cast<char*>(std::realloc(m_bytes, capacity * value_size));
        if (!bytes)
            throw std::bad_alloc();
        m_bytes = bytes;
        m_capacity = capacity;
        m_value_size = value_size;
    }
    // Makes every value take `value_size` bytes, more than before. Values move from the last to the first,
    // since each one's new place covers the old place of later ones.
    void widen(std::size_t value_size, std::size_t count) {
        const std::size_t old_size = m_value_size;
        grow(std::max({m_size + count, m_capacity, std::size_t{4}}), value_size);
        for (std::size_t i = m_size; i-- > 0;) {
            const T value = old_size == 1   ? at<std::int8_t>(i)
                            : old_size == 2 ? at<std::int16_t>(i)
                                            : at<std::int32_t>(i);
            with_type([&](auto stored) { put(i, static_cast<decltype(stored)>(value)); });
        }
    }

    char* m_bytes = nullptr;
    std::size_t m_size = 0;
    std::size_t m_capacity = 0; // in values of the current width
    std::size_t m_value_size = can_be_narrow ? 1 : sizeof(T);
};
