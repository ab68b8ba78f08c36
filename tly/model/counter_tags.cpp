// SPDX-License-Identifier: Apache-2.0
#include "counter_tags.h"

#include "ext_mem_tag.h"

bool is_shared_tag(std::string_view tag) {
    const CounterTag* row = find_counter_tag(tag);
    return row && row->meaning.target == TagTarget::shared_counter;
}

TagMeaning meaning_of_tag(std::string_view tag, std::string_view total_cycles_tag) {
    if (const CounterTag* row = find_counter_tag(tag))
        return row->meaning;
    // The name of a function may hold anything, so its own tag comes before the search in the text.
    if (tag == total_cycles_tag)
        return TagTarget::total_cycles;
    return is_ext_mem_tag(tag) ? TagTarget::ext_mem : TagTarget::nothing;
}

std::unordered_map<std::string, SharedCounterTypes> make_shared_mapping() {
    std::unordered_map<std::string, SharedCounterTypes> mapping;
    for (const CounterTag& row : counter_tags) {
        if (row.meaning.shared_type != SHARED_NONE)
            mapping.emplace(row.text, row.meaning.shared_type);
    }
    return mapping;
}
