// SPDX-License-Identifier: Apache-2.0
// Integers in as few bytes as their values need.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

// The bytes that each of `count` values fits with its sign: 1, 2, 4 or 8. Without values it is 1.
template <class T>
std::size_t bytes_needed(const T* values, std::size_t count) {
    std::uint64_t bits = 0; // all those that differ from the sign
    for (std::size_t i = 0; i < count; ++i)
        bits |= static_cast<std::uint64_t>(values[i] ^ (values[i] >> std::numeric_limits<T>::digits));
    return bits < 1u << 7 ? 1 : bits < 1u << 15 ? 2 : bits < 1u << 31 ? 4 : 8;
}

// Calls `function` with a zero of the signed integer of 1, 2, 4 or 8 bytes.
template <class Function>
[[gnu::always_inline]] inline void with_integer_of(std::size_t num_bytes, Function&& function) {
    switch (num_bytes) {
        case sizeof(std::int8_t):
            return function(std::int8_t{});
        case sizeof(std::int16_t):
            return function(std::int16_t{});
        case sizeof(std::int32_t):
            return function(std::int32_t{});
        default:
            return function(std::int64_t{});
    }
}
