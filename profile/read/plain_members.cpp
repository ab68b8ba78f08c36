// SPDX-License-Identifier: Apache-2.0
// A member is taken whole or not at all. An array that turns out not to be plain was read in vain, so the
// size of plain ones is limited: a longer one costs little in comparison.
#include "plain_members.h"

#include <string_view>

#include "json_characters.h"

namespace zan::profile {

namespace {

constexpr std::size_t most_numbers = 64;

// The place after an array of numbers whose bracket is right before `at`; null if it isn't plain.
const char* read_array(const char* at, PackedNumbers& numbers) {
    at = skip_json_blanks(at);
    if (*at != '"')
        return nullptr;
    numbers.clear();
    at = numbers.add_number(at + 1);
    if (!at)
        return nullptr;
    at = skip_json_blanks(numbers.add_elements(at, most_numbers - 1));
    return *at == ']' ? at + 1 : nullptr;
}

// The text whose first quote is at `at`, without its quotes; one without data if it isn't plain.
std::string_view plain_text(const char* at) {
    if (*at != '"')
        return {};
    const std::size_t length = plain_length(at + 1);
    return at[1 + length] == '"' ? std::string_view(at + 1, length) : std::string_view();
}

// The place after a member whose comma is at `at`; null if it isn't plain.
const char* add_member(const char* at, PackedNumbers& numbers, ReportSink& sink) {
    if (*at != ',')
        return nullptr;
    const std::string_view key = plain_text(skip_json_blanks(at + 1));
    if (!key.data())
        return nullptr;
    at = skip_json_blanks(key.data() + key.size() + 1);
    if (*at != ':')
        return nullptr;
    at = skip_json_blanks(at + 1);
    if (*at == '[') {
        const char* const end = read_array(at + 1, numbers);
        if (end)
            numbers.write(sink, key);
        return end;
    }
    const std::string_view text = plain_text(at);
    if (!text.data())
        return nullptr;
    sink.text(key, text);
    return text.data() + text.size() + 1;
}

} // namespace

const char* add_plain_members(const char* at, PackedNumbers& numbers, ReportSink& sink) {
    while (const char* const end = add_member(at, numbers, sink))
        at = end;
    return at;
}

} // namespace zan::profile
