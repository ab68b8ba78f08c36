// SPDX-License-Identifier: Apache-2.0
// Texts that stand for a value, as tables.
#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string_view>

namespace zan::xml {

template <typename Value>
struct Word {
    std::string_view text;
    Value value;
};

// The booleans of most attributes, which take no other spelling.
inline constexpr Word<bool> booleans[] = {{"true", true}, {"false", false}};

// The booleans of attributes that also take digits.
inline constexpr Word<bool> booleans_or_digits[] = {
    {"true", true},
    {"1", true},
    {"false", false},
    {"0", false},
};

// The first word of exactly that text, or null.
template <typename Value, std::size_t num_words>
constexpr const Word<Value>* find_word(const Word<Value> (&words)[num_words], std::string_view text) {
    const auto* found = std::find_if(std::begin(words), std::end(words),
                                     [&](const Word<Value>& word) { return word.text == text; });
    return found == std::end(words) ? nullptr : found;
}

} // namespace zan::xml
