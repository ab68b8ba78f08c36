// SPDX-License-Identifier: Apache-2.0
// The counter tags: texts by which ports of the profiler description say what their counter counts. One
// table has all that the program knows about each of them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>

#include "tly_constants.h"

// The counter families of a module instance, in the order in which a sample is pushed. Several tags may feed
// one family; their values are summed.
enum class Counter {
    ostall,
    istall,
    ext_stall,
    ivalid,
    ireq,
    unaligned,
    cachehit,
    bandwidth,
    idle,
    nbursts,
    burst_words,
    total_fifo,
    max_fifo,
};

// What takes the values of a tag.
enum class TagTarget {
    nothing,
    counter,        // a family of the instance
    total_cycles,   // the cycles of the instance's function
    ext_mem,        // the port of an external memory that the tag names
    shared_counter, // nothing: other tags at the same field take the value, each in its kind of run
};

struct TagMeaning {
    // Implicit, so that a row of the table names what takes the values and nothing else.
    constexpr TagMeaning(TagTarget tag_target = TagTarget::nothing) : target(tag_target) {}
    constexpr TagMeaning(Counter family, SharedCounterTypes type = SHARED_NONE)
        : target(TagTarget::counter), counter(family), shared_type(type) {}

    TagTarget target;
    Counter counter = Counter::ostall;            // for TagTarget::counter
    SharedCounterTypes shared_type = SHARED_NONE; // the one kind of run with shared counters that measures it
};

struct CounterTag {
    std::string_view text;
    TagMeaning meaning;
};

// A new tag is a row here. Texts are compared whole, so the order of the rows makes no difference.
inline constexpr CounterTag counter_tags[] = {
    {"ostall", Counter::ostall},
    {"chread_ostall", Counter::ostall},
    {"chwrite_ostall", Counter::ostall},
    {"istall", Counter::istall},
    {"chread_istall", Counter::istall},
    {"chwrite_istall", Counter::istall},
    {"memorystalls", {Counter::ext_stall, SHARED_EXT_STALL}},
    {"chread_fifo_stall", {Counter::ext_stall, SHARED_EXT_STALL}},
    {"chwrite_fifo_stall", {Counter::ext_stall, SHARED_EXT_STALL}},
    {"ivalid", {Counter::ivalid, SHARED_IVALID}},
    {"chread_ivalid", {Counter::ivalid, SHARED_IVALID}},
    {"chwrite_ivalid", {Counter::ivalid, SHARED_IVALID}},
    {"loop_ivalid", {Counter::ivalid, SHARED_IVALID}},
    {"totalreq", {Counter::ireq, SHARED_TOTAL_REQ}},
    {"chread_total_req", {Counter::ireq, SHARED_TOTAL_REQ}},
    {"chwrite_total_req", {Counter::ireq, SHARED_TOTAL_REQ}},
    {"unalignedrequests", Counter::unaligned},
    {"cachehit", Counter::cachehit},
    {"bandwidth", Counter::bandwidth},
    {"idle", {Counter::idle, SHARED_IDLE}},
    {"chread_idle", {Counter::idle, SHARED_IDLE}},
    {"chwrite_idle", {Counter::idle, SHARED_IDLE}},
    {"readwritecount", Counter::nbursts},
    {"burstcount", Counter::burst_words},
    {"chread_total_fifo_size", Counter::total_fifo},
    {"chwrite_total_fifo_size", Counter::total_fifo},
    {"chread_max_fifo_size", Counter::max_fifo},
    {"chwrite_max_fifo_size", Counter::max_fifo},
    {"clock", TagTarget::total_cycles},
    {"shared", TagTarget::shared_counter},
    {"chread_shared", TagTarget::shared_counter},
    {"chwrite_shared", TagTarget::shared_counter},
};

// How many families there are. Each has a tag, so the greatest one in the table is the last.
inline constexpr std::size_t num_counters = [] {
    std::size_t count = 0;
    for (const CounterTag& row : counter_tags)
        count = std::max(count, static_cast<std::size_t>(row.meaning.counter) + 1);
    return count;
}();

// The row of a tag, or null. Nearly all rows differ from a tag in length, so few texts are compared.
constexpr const CounterTag* find_counter_tag(std::string_view text) {
    for (const CounterTag& row : counter_tags) {
        if (row.text == text)
            return &row;
    }
    return nullptr;
}

// The text of a row, for constants. A text that no row has doesn't compile.
consteval std::string_view counter_tag(std::string_view text) {
    return find_counter_tag(text)->text;
}

// Whether the tag is that of a physical counter that several logical ones share.
bool is_shared_tag(std::string_view tag);

// What any tag means, in the table or not. `total_cycles_tag` is the tag that names the cycles of the
// instance's own function.
TagMeaning meaning_of_tag(std::string_view tag, std::string_view total_cycles_tag);

// For each tag that only one kind of run with shared counters measures, that kind.
std::unordered_map<std::string, SharedCounterTypes> make_shared_mapping();
