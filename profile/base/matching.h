// SPDX-License-Identifier: Apache-2.0
// Which items of two lists stand for the same thing.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace zan::profile {

// A pair has an item of the old list and one of the new; null where the other has no partner.
template <class Item>
using Pairs = std::vector<std::pair<const Item*, const Item*>>;

// Matches items by keys: first all that agree in the first key, then the rest by the next one. Equal keys are
// matched in the order of the lists; an empty key matches nothing. The result has the new list's order, and
// what only the old one has at the end. The lists must outlive it.
template <class Item>
Pairs<Item> match_items(const std::vector<Item>& before, const std::vector<Item>& after,
                        const std::vector<std::function<std::string(const Item&)>>& keys) {
    std::vector<const Item*> partners(after.size());
    std::vector<bool> is_used(before.size());
    for (const auto& key_of : keys) {
        std::multimap<std::string, std::size_t> places; // equal keys keep their order
        for (std::size_t i = 0; i < before.size(); ++i) {
            if (!is_used[i])
                places.emplace(key_of(before[i]), i);
        }
        for (std::size_t i = 0; i < after.size(); ++i) {
            const std::string key = partners[i] ? std::string() : key_of(after[i]);
            const auto place = places.lower_bound(key); // the first of equal keys
            if (key.empty() || place == places.end() || place->first != key)
                continue;
            partners[i] = &before[place->second];
            is_used[place->second] = true;
            places.erase(place);
        }
    }
    Pairs<Item> pairs;
    for (std::size_t i = 0; i < after.size(); ++i)
        pairs.emplace_back(partners[i], &after[i]);
    for (std::size_t i = 0; i < before.size(); ++i) {
        if (!is_used[i])
            pairs.emplace_back(&before[i], nullptr);
    }
    return pairs;
}

} // namespace zan::profile
