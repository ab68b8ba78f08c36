// SPDX-License-Identifier: Apache-2.0
// The decimal digits of eight numbers at once.
//
// What must hold: they are those of digits_of(), whose steps they take: halves of four digits, quarters of
// two, single ones. Processors without SSE2 take them one by one.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "decimal_digits.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

inline constexpr std::size_t group_size = 8;

// Of each number the first of nine digits, and the eight others as digits_of() has them.
struct DigitGroup {
    alignas(16) std::array<std::uint64_t, group_size> top;
    alignas(16) std::array<std::uint64_t, group_size> low;
};

#ifdef __SSE2__
// The digits of two numbers below 10^8. Divisions are multiplications by rounded reciprocals, exact for what
// stands in the lanes: 2^45 / 10^4 for 32 bits, 2^19 / 100 and 2^16 / 10 for 16.
inline __m128i digits_of_two(__m128i numbers) {
    const __m128i first = _mm_srli_epi64(_mm_mul_epu32(numbers, _mm_set1_epi64x(3'518'437'209)), 45);
    const __m128i last = _mm_sub_epi32(numbers, _mm_mul_epu32(first, _mm_set1_epi64x(10'000)));
    const __m128i halves = _mm_or_si128(first, _mm_slli_epi64(last, 32));
    const __m128i hundreds = _mm_srli_epi16(_mm_mulhi_epu16(halves, _mm_set1_epi16(5'243)), 3);
    const __m128i rests = _mm_sub_epi16(halves, _mm_madd_epi16(hundreds, _mm_set1_epi32(100)));
    const __m128i pairs = _mm_or_si128(hundreds, _mm_slli_epi32(rests, 16));
    const __m128i tens = _mm_mulhi_epu16(pairs, _mm_set1_epi16(6'554));
    const __m128i ones = _mm_sub_epi16(pairs, _mm_mullo_epi16(tens, _mm_set1_epi16(10)));
    return _mm_or_si128(tens, _mm_slli_epi16(ones, 8));
}
#endif

// False if one of the numbers has more than nine digits, or is below 0; then the digits are no use.
inline bool digits_of_group(const std::array<long long, group_size>& numbers, DigitGroup& digits) {
#ifdef __SSE2__
    const __m128i by_block = _mm_set1_epi64x(1'441'151'881); // 2^57 / 10^8, rounded
    const __m128i block = _mm_set1_epi64x(100'000'000);
    __m128i too_large = _mm_setzero_si128();
    for (std::size_t i = 0; i < group_size; i += 2) {
        const __m128i number = _mm_loadu_si128(reinterpret_cast<const __m128i*>(&numbers[i]));
        const __m128i top = _mm_srli_epi64(_mm_mul_epu32(number, by_block), 57);
        too_large = _mm_or_si128(
            too_large, _mm_or_si128(_mm_cmpgt_epi32(top, _mm_set1_epi32(9)), _mm_srli_epi64(number, 32)));
        const __m128i low = _mm_sub_epi32(number, _mm_mul_epu32(top, block));
        _mm_store_si128(reinterpret_cast<__m128i*>(&digits.top[i]), top);
        _mm_store_si128(reinterpret_cast<__m128i*>(&digits.low[i]), digits_of_two(low));
    }
    return _mm_movemask_epi8(_mm_cmpeq_epi8(too_large, _mm_setzero_si128())) == 0xFFFF;
#else
    constexpr std::uint64_t limit = 1'000'000'000;
    constexpr std::uint32_t block = 100'000'000;
    bool are_small = true;
    for (std::size_t i = 0; i < group_size; ++i) {
        are_small = are_small && static_cast<std::uint64_t>(numbers[i]) < limit;
        const auto number = static_cast<std::uint32_t>(numbers[i]);
        digits.top[i] = number / block;
        digits.low[i] = digits_of(number % block);
    }
    return are_small;
#endif
}

// The same of numbers below 10^8, which stand in the place of their digits.
inline void digits_in_place(std::array<std::uint64_t, group_size>& numbers) {
#ifdef __SSE2__
    for (std::size_t i = 0; i < group_size; i += 2) {
        auto* const two = reinterpret_cast<__m128i*>(&numbers[i]);
        _mm_storeu_si128(two, digits_of_two(_mm_loadu_si128(two)));
    }
#else
    for (std::uint64_t& number : numbers)
        number = digits_of(static_cast<std::uint32_t>(number));
#endif
}
