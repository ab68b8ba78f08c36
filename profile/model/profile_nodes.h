// SPDX-License-Identifier: Apache-2.0
// The nodes of a report as records, one at a time.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "profile_summary.h"
#include "sample_list.h"

namespace zan::profile {

// Arrays of whole numbers. Those of a kernel come first, then those of its blocks.
enum class Counts {
    devices,
    queues,
    timestamps,
    cycles,
    valid,
    stall,
    idle,
    max_fill,
    requests,
    hits,
    unaligned,
    count
};
// Arrays of decimal numbers, of blocks and ports.
enum class Rates { fill, bandwidth, efficiency, burst, write_burst, read_burst, count };

// The arrays of a node; an array that the report doesn't have is empty. What is no number there is -1, or
// NaN.
struct NodeArrays {
    std::array<SampleList<long long>, static_cast<std::size_t>(Counts::count)> counts;
    std::array<SampleList<float>, static_cast<std::size_t>(Rates::count)> rates;

    SampleList<long long>& operator[](Counts which) { return counts[static_cast<std::size_t>(which)]; }
    const SampleList<long long>& operator[](Counts which) const {
        return counts[static_cast<std::size_t>(which)];
    }
    SampleList<float>& operator[](Rates which) { return rates[static_cast<std::size_t>(which)]; }
    const SampleList<float>& operator[](Rates which) const { return rates[static_cast<std::size_t>(which)]; }
    // Keeps the storage of lists that aren't shared and have no more than some ten thousand numbers.
    void clear();
};

// What measured the shared counters of a run; `none` if it has no shared counters.
enum class SharedType { none = -1, valid, stall, idle, requests };

// What stands in a kernel node before its children.
struct KernelNode {
    std::string name;
    int compute_unit = 0;
    SourcePlace source;
    std::optional<std::int64_t> start;
    SharedType shared = SharedType::none;
    bool autorun = false;
    NodeArrays arrays;
};

struct BlockNode {
    std::string name;
    std::string memory_type; // "__global", "__loop" or empty
    std::string operation;   // "read", "write" or empty
    std::string memory;
    bool coalesced = false;
    std::vector<CallChain> sources; // empty where the taker doesn't need them
    NodeArrays arrays;
};

struct PortNode {
    std::string memory;
    std::string interface;
    std::string port;
    bool read_only = false;
    bool write_only = false;
    NodeArrays arrays;
};

struct TransferNode {
    std::string type;
    int device = 0;
    int queue = 0;
    std::int64_t start = 0;
    std::int64_t end = 0;
};

struct BoardMemoryNode {
    std::string name;
    Value peak;      // MB/s
    Value max_burst; // words
};

// Takes the nodes in the order of the report. References hold until the call returns.
class NodeTaker {
  public:
    virtual ~NodeTaker() = default;
    // A kernel node begins; its blocks and ports follow, then its end.
    virtual void begin_kernel(const KernelNode& kernel) = 0;
    // Whether a block of that name in the current node needs its source locations. They are many.
    virtual bool needs_sources(std::string_view block) = 0;
    // Whether the devices and queues of all samples are needed. If not, only the first of each is there.
    virtual bool needs_queues() const { return true; }
    virtual void block(const BlockNode& block) = 0;
    virtual void port(const PortNode& port) = 0;
    virtual void end_kernel() = 0;
    virtual void transfer(const TransferNode& transfer) = 0;
    virtual void board(const std::string& type) = 0;
    virtual void board_memory(const BoardMemoryNode& memory) = 0;
    virtual void clock(const std::string& text) = 0;
    virtual void versions(const std::string& program, const std::string& zanx) = 0;
};

} // namespace zan::profile
