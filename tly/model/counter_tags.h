// What a counter's tag means, worked out once when the tag is added to a module instance.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "tly_constants.h"

// The counter families of a module instance, in the order in which a sample is pushed.
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
inline constexpr std::size_t num_counters = 13;

// The port of an external memory that a tag names, or what is wrong with the tag.
struct ExtMemTag {
    enum class Fault { none, properties, bank, port };

    std::string memory;
    ExtMemOpType op = EXT_MEM_READ_BURST;
    bool names_op = true; // a tag that names no operation is recorded all the same
    int bank = 0;
    int port = 0;
    Fault fault = Fault::none;
    std::string fault_text; // the text that the message about the fault shows
};

// Takes apart a tag that holds "profile_extmem_".
ExtMemTag decode_ext_mem_tag(std::string_view tag);

// Where the value of a tag goes.
struct TagMeaning {
    enum class Target { counter, total_cycles, ext_mem, nothing };

    Target target = Target::nothing;
    Counter counter = Counter::ostall;            // for Target::counter
    SharedCounterTypes shared_type = SHARED_NONE; // the one kind of run with shared counters that has it
};

// `total_cycles_tag` is the tag that names the cycles of the instance's own function.
TagMeaning meaning_of_tag(std::string_view tag, std::string_view total_cycles_tag);
