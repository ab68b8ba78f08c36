// SPDX-License-Identifier: Apache-2.0
// Where numbers end in 64 characters at once, and what they are.
//
// A loop that looks for the end of one number after the other waits for each of them, and mispredicts a
// branch for about every fifth number of random length. Here the ends are known before the numbers are read,
// which takes no branch that depends on their length.
//
// What must hold: only characters of the window, and 16 before the end of a number, are touched; callers see
// to both being in the line. Processors without SSE2 don't have it: there numbers are read one by one.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#ifdef __SSE2__
#include <emmintrin.h>
inline constexpr bool has_digit_marks = true;
#else
inline constexpr bool has_digit_marks = false;
#endif

inline constexpr std::ptrdiff_t marks_size = 64;
inline constexpr std::ptrdiff_t most_marked_digits = 16;

// A bit for each of 64 characters that is no digit, the lowest one for the first of them.
inline std::uint64_t marks_of_others([[maybe_unused]] const char* characters) {
#ifdef __SSE2__
    const auto digits = [characters](int block) {
        const __m128i text = _mm_loadu_si128(reinterpret_cast<const __m128i*>(characters) + block);
        const __m128i values = _mm_sub_epi8(text, _mm_set1_epi8('0')); // of others more than 9, unsigned
        const __m128i are_digits = _mm_cmpeq_epi8(_mm_min_epu8(values, _mm_set1_epi8(9)), values);
        return std::uint64_t{static_cast<unsigned>(_mm_movemask_epi8(are_digits))} << (16 * block);
    };
    return ~(digits(0) | digits(1) | digits(2) | digits(3));
#else
    return 0;
#endif
}

// The number of 1 to 16 digits before `end`.
inline long long marked_number([[maybe_unused]] const char* end, [[maybe_unused]] std::size_t length) {
#ifdef __SSE2__
    // The low halves of the last bytes of 16, which are the values of digits.
    struct alignas(16) Mask {
        std::array<std::uint8_t, 16> bytes;
    };
    static constexpr std::array<Mask, 17> last_digits = [] {
        std::array<Mask, 17> masks{};
        for (std::size_t i = 0; i < masks.size(); ++i) {
            for (std::size_t k = 0; k < 16; ++k)
                masks[i].bytes[k] = k + i < 16 ? 0 : 0x0F;
        }
        return masks;
    }();
    const __m128i digits =
        _mm_and_si128(_mm_loadu_si128(reinterpret_cast<const __m128i*>(end - 16)),
                      _mm_load_si128(reinterpret_cast<const __m128i*>(last_digits[length].bytes.data())));
    // Neighbours are joined: digits to pairs, those to fours, and those to eights.
    const __m128i zero = _mm_setzero_si128();
    const __m128i tens = _mm_set1_epi32(10 | 1 << 16);
    const __m128i pairs = _mm_packs_epi32(_mm_madd_epi16(_mm_unpacklo_epi8(digits, zero), tens),
                                          _mm_madd_epi16(_mm_unpackhi_epi8(digits, zero), tens));
    const __m128i fours = _mm_madd_epi16(pairs, _mm_set1_epi32(100 | 1 << 16));
    const __m128i eights = _mm_madd_epi16(_mm_packs_epi32(fours, zero), _mm_set1_epi32(10'000 | 1 << 16));
    const auto both = static_cast<std::uint64_t>(_mm_cvtsi128_si64(eights));
    const std::uint64_t number = (both & 0xFFFF'FFFF) * 100'000'000 + (both >> 32);
    return static_cast<long long>(number);
#else
    return 0;
#endif
}
