// SPDX-License-Identifier: Apache-2.0
// Kernel lines that wait to be decoded together.
//
// What must hold: decoding lines together leaves in the profile model exactly what decoding one after the
// other leaves, and no message is lost or comes at another time. So a line is taken only if nothing about it
// can be reported (it is all numbers, of a kernel whose design raises no message for a line) and if it
// changes nothing but the ends of sample lists that no line of another block adds to (it is a further sample
// of an invocation that has begun). All other lines are read one by one, by the reader, which first decodes
// what waits for the same kernels.
//
// Why: a line touches every sample list of its kernel, and the lists of a kernel are more than the nearer
// caches hold. A block of up to 64 lines touches each list once. The counters decode 4 to 5 times as fast as
// line by line (decode_blocks and decode_counters in bench/README.md).
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "line_block.h"
#include "line_target.h"

// The waiting lines of all kernels. Callers that look at a kernel's samples have to decode first.
class LineBlocks {
  public:
    // `kernels` are all kernels of the run, and `compute_unit` is the one whose counters are read.
    LineBlocks(const std::map<std::string, TlyKernel*>& kernels, int compute_unit)
        : m_kernels(kernels), m_compute_unit(compute_unit) {}

    // Takes a line; false if it has to be read on its own.
    bool add(std::string_view line);
    // Has to be called when a line of a kernel has been read on its own: further lines with as many counters
    // may then be taken. `name` is the name on the line.
    void open(std::string_view name, const LineTarget& target, std::size_t num_counters);

    // Decodes the lines that go to any of the target's kernels.
    void decode(const LineTarget& target);
    void decode_all();

  private:
    struct Block {
        LineTarget target;
        bool is_shared = false; // shares instances with other blocks
        bool has_shared_counters = false;
        SharedCounterTypes type = SHARED_NONE; // of the waiting lines
        LineBlock lines;
    };
    struct TextHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
    };

    bool can_decode_together(const LineTarget& target, std::size_t num_counters);
    void find_shared_functions();
    void enter(Block& block);
    void decode_lines(Block& block) const;

    const std::map<std::string, TlyKernel*>& m_kernels;
    const int m_compute_unit;

    // Null for kernels whose lines are read on their own.
    std::unordered_map<const TlyKernel*, std::unique_ptr<Block>> m_blocks;
    // By the names on lines, of which a kernel may have two.
    std::unordered_map<std::string, Block*, TextHash, std::equal_to<>> m_names;
    Block* m_last_shared = nullptr; // the only shared block that may have lines
    bool m_functions_known = false;
    std::unordered_set<std::string_view> m_shared_functions;
};
