// Kernel lines that are read in blocks, since nearly all lines of a monitor file are alike.
#pragma once

#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "line_block.h"
#include "tly_kernel.h"

// What the fixed fields of a line say.
struct LineHead {
    int device_id = 0;
    int queue_id = 0;
    long long start_time = 0;
    long long sample_time = 0;
    SharedCounterTypes shared_type = SHARED_NONE;
    int num_counters = 0;
};

// The counters of other compute units are not read.
inline constexpr int read_compute_unit = 0;

// The shared counter type that a line's number stands for.
SharedCounterTypes shared_type_of(long long number);

// The kernel of a line, and the instances and kernels that its counters go to.
struct Receiver {
    TlyKernel* kernel = nullptr;
    const std::vector<TlyModuleInst*>* insts = nullptr;
    // Those whose samples the line brings, if it is one of the pseudo-kernel; else null.
    const std::vector<TlyKernel*>* autorun_kernels = nullptr;

    // The kernels that a line is a sample of.
    std::span<TlyKernel* const> targets() const {
        if (autorun_kernels && !autorun_kernels->empty())
            return *autorun_kernels;
        return {&kernel, 1};
    }
};

// Notes a line's times and ids. Its counters come separately.
void record_head(TlyKernel& kernel, const LineHead& head);

// Gives the kernels the cycles of their instances' functions, behind a line's counters.
void update_total_cycles(const Receiver& receiver);

// The lines of each kernel that wait to be decoded together. A line is taken if it is all numbers and is the
// next sample of an invocation that is open; then nothing has to be told about it, and it makes no difference
// when it is decoded. Whoever looks at a kernel's samples has to decode first.
class MonitorBlocks {
  public:
    // `kernels` are all kernels of the run.
    explicit MonitorBlocks(const std::map<std::string, TlyKernel*>& kernels) : m_kernels(kernels) {}

    // Takes a line, or gives false if it has to be read on its own.
    bool add(std::string_view line);
    // Tells that a line of a kernel has been read on its own: further ones, with as many counters, may be
    // taken. `name` is that of the line.
    void open(std::string_view name, const Receiver& receiver, std::size_t num_counters);

    // Decodes the lines that go to any of the receiver's kernels.
    void decode(const Receiver& receiver);
    void decode_all();

  private:
    struct Block {
        Receiver receiver;
        bool is_shared = false;
        bool has_shared_counters = false;
        SharedCounterTypes type = SHARED_NONE; // of the lines at hand
        LineBlock lines;
    };
    struct TextHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
    };

    bool can_decode_together(const Receiver& receiver, std::size_t num_counters);
    void find_shared_functions();
    void enter(Block& block);
    static void decode_lines(Block& block);

    const std::map<std::string, TlyKernel*>& m_kernels;
    static bool shares_instances(const Receiver& receiver);

    // Null for kernels whose lines are read on their own.
    std::unordered_map<const TlyKernel*, std::unique_ptr<Block>> m_blocks;
    // By the names on lines, of which a kernel may have two.
    std::unordered_map<std::string, Block*, TextHash, std::equal_to<>> m_names;
    Block* m_last_shared = nullptr; // the only shared block that may have lines
    bool m_functions_known = false;
    std::unordered_set<std::string_view> m_shared_functions;
};
