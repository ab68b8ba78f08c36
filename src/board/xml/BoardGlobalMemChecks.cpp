// SPDX-License-Identifier: Apache-2.0
#include "BoardGlobalMemChecks.h"

#include <algorithm>

namespace zan::board::xml {

namespace {

using Memory = GlobalMemConfig;

bool is_secondary_of(const Memory& memory, const Memory& other) {
    return memory.get_has_primary_interface() && memory.get_primary_interface() == other.get_name();
}

const char* find_pair_conflict(const Memory& secondary, const Memory& primary) {
    if (secondary.get_min_byte_address() != primary.get_min_byte_address() ||
        secondary.get_max_byte_address() != primary.get_max_byte_address())
        return "Primary and secondary memory interfaces have different address ranges.";
    if (secondary.get_type() != primary.get_type())
        return "Primary and secondary memory interfaces have different interface types.";
    const auto& accessible = primary.get_can_access();
    if (std::find(accessible.begin(), accessible.end(), secondary.get_name()) == accessible.end())
        return "Primary interface must list secondary interface in its \"can_access\" list";
    return nullptr;
}

// The last addresses are inclusive and the comparisons strict: one byte in common doesn't count.
const char* find_overlap(const Memory& a, const Memory& b) {
    const bool overlap = a.get_min_byte_address() < b.get_max_byte_address() &&
                         a.get_max_byte_address() > b.get_min_byte_address();
    return overlap ? "Global memory regions overlap." : nullptr;
}

const char* find_conflict(const Memory& a, const Memory& b) {
    if (is_secondary_of(a, b)) {
        if (b.get_has_primary_interface())
            return "Interface cannot be a primary and a secondary interface.";
        return find_pair_conflict(a, b);
    }
    if (b.get_has_primary_interface()) {
        // It is the memories' own names that are compared.
        if (a.get_has_primary_interface() && a.get_name() == b.get_name())
            return "Two secondary memory interfaces to the same primary interface is not allowed.";
        if (is_secondary_of(b, a))
            return find_pair_conflict(b, a);
    }
    return find_overlap(a, b);
}

} // namespace

const char* find_global_mem_conflict(const BoardSpec& spec) {
    const auto& memories = spec.get_global_mem_configs();
    for (const auto& a : memories) {
        bool found_primary = !a->get_has_primary_interface();
        for (const auto& b : memories) {
            if (a == b)
                continue;
            if (const char* conflict = find_conflict(*a, *b))
                return conflict;
            found_primary |= is_secondary_of(*a, *b);
        }
        if (!found_primary)
            return "Global memory named in primary_interface does not exist.";
    }
    return nullptr;
}

const std::string* find_unknown_can_access(const BoardSpec& spec) {
    for (const auto& memory : spec.get_global_mem_configs()) {
        for (const std::string& name : memory->get_can_access()) {
            if (!spec.is_valid_global_mem_interface(name))
                return &name;
        }
    }
    return nullptr;
}

} // namespace zan::board::xml
