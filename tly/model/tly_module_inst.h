// SPDX-License-Identifier: Apache-2.0
// A profiled hardware block of a kernel and its samples.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "counter_samples.h"
#include "counter_tags.h"
#include "ext_mem_tag.h"
#include "function_cycles.h"
#include "line_block.h"
#include "mon_line.h"
#include "sample_list.h"
#include "tly_constants.h"
#include "tly_ext_mem.h"
#include "unique_number.h"

// One module instance: a load-store unit, a channel access, a loop, a kernel's function wrapper. It has
// - static attributes from the profiler description;
// - a table of counters: tag, field index in a monitor line, compute unit;
// - samples of each counter family, one for each line that reached the instance, so that a sample index means
//   the same in all lists and in the kernel's timestamps;
// - samples of the ports of external memories.
// The owner adds tags first, then hands over lines (updateCounters), reads the samples, and resets.
// Total cycles are kept for each function, shared by all instances of it. Not for several threads.
class TlyModuleInst {
  public:
    using Samples = SampleList<long long>;

    // `byte_width` is the text of a width in bits. `compiled_shared_counters`: the design has shared
    // counters.
    TlyModuleInst(std::string name, std::string module, std::string function, std::string memory_type,
                  std::string rw, std::string lsu_type, std::string global_mem_name, std::string byte_width,
                  std::string memory_opt, bool autorun, int num_compute_units, bool compiled_shared_counters);
    TlyModuleInst(const TlyModuleInst&) = delete;
    TlyModuleInst& operator=(const TlyModuleInst&) = delete;

    const std::string& getName() const { return m_name; }
    const std::string& getModule() const { return m_module; }
    const std::string& getAttrMemoryType() const { return m_attr_memory_type; }
    const std::string& getAttrRw() const { return m_attr_rw; }
    const std::string& getAttrLsuType() const { return m_attr_lsu_type; }
    const std::string& getAttrGlobalMemName() const { return m_attr_global_mem_name; }
    const std::string& getAttrByteWidth() const { return m_attr_byte_width; }
    const std::string& getAttrMemoryOpt() const { return m_attr_memory_opt; }
    const std::string& getFunction() const { return m_function; }
    bool isAutorun() const { return m_autorun; }
    bool compiledSharedCounters() const { return m_compiled_shared_counters; }
    // The kernel clock in MHz; 0 until it is set.
    float getFmax() const { return m_fmax; }
    void setFmax(float fmax) { m_fmax = fmax; }

    // Source locations: for each debug record one entry that is no call site, followed by its call sites.
    void addFilename(std::string filename);
    void addLine(int line);
    void addColNum(int column);
    void addIsCallsite(bool is_callsite);
    int getNumFilenames() const;
    int getNumLines() const;
    int getNumCols() const;
    // Changes with the name, the attributes and the locations, and is the number of no other instance.
    std::uint64_t description_number() const { return m_description_number; }
    // The entry at i. For an index outside the list: an empty text, and -1 for the others. getIsCallsite
    // returns 0 or 1.
    const std::string& getFileName(int i) const;
    int getLine(int i) const;
    int getColNum(int i) const;
    int getIsCallsite(int i) const;

    // Adds a counter: its tag, the 0-based index of its field in a monitor line, its compute unit.
    void addPortTag(std::string tag, int offset, int comp_unit);
    // Moves the counters of an autorun instance past those of other kernels on the same line.
    void updateAutorunOffsets(int delta);
    int getNTags() const;

    // Physical counters that several logical ones share. The first entry for a tag stays.
    void addSharedTag(std::string tag, int offset);
    // The tag's offset, or -1.
    int getSharedOffset(const std::string& tag) const;
    void addHasShared(int count) { m_num_has_shared += count; }
    int getNumHasShared() const { return m_num_has_shared; }

    // Takes the instance's counters out of a line. `comp_unit` -1 reads the counters of all compute units.
    // With `push` the values make a sample of their own. `type` is what a run with shared counters measured.
    // A value that is no number, or a field that the line doesn't have, is reported on standard error,
    // remembered in getInvalidValues() and counted as -1. Returns -1 if there was one, else 0.
    int updateCounters(const MonFields& fields, int comp_unit, bool push, SharedCounterTypes type,
                       int line_number);
    // The same, with `push`, for a block of lines, whose counters start at the field `first_counter`. The
    // instance must be able to take the block, and `type` be the same on all lines.
    void updateCounters(const LineBlock& lines, int first_counter, int comp_unit, SharedCounterTypes type);
    // Whether decoding a block has the same effect as decoding its lines one after the other: each counter is
    // on the line, no tag has a fault to report, and no two of them make samples of one list.
    bool can_take_blocks(int first_counter, std::size_t counters_on_line, int comp_unit) const;

    // The life of a sample: sums of the line to zero; all of them onto the sample lists. reset() also empties
    // the lists and flags, the function's total cycles, and the external memories; tags and attributes stay.
    void partialReset();
    void pushValuesOnVectors();
    void reset();

    // Frees the samples of all families, which are empty then. For an instance that no line comes for any
    // more.
    void release_samples() { m_counters.release(); }

    // All samples of a family. A copy of the list shares its storage.
    const Samples& samples(Counter counter) const { return m_counters[counter]; }

    // A request count, or in a run with shared counters any that could have been one, has been seen.
    bool getIReqCountValid() const { return m_ireq_count_valid; }
    bool getHasTotalFifoSize() const { return m_has_total_fifo_size; }
    bool getHasMaxFifoSize() const { return m_has_max_fifo_size; }

    // The cycles of each sample of the instance's function. A function without any is reported on standard
    // error, and the list is empty.
    Samples total_cycles() const;
    // There is such a list, empty or not; once there, it stays.
    bool has_total_cycles() const { return find_function_cycles() != nullptr; }
    // One of its counters in the compute unit counts cycles of the function.
    bool counts_total_cycles(int comp_unit) const;

    // External memories that were recorded since the last reset, in the iteration order of the map that holds
    // them, and the samples of a port, empty if there are none.
    std::vector<std::string> getExtMemNames() const;
    Samples ext_mem_samples(ExtMemOpType op, const std::string& mem_name, int bank, int port) const;

    // The rest of the public part is for callers outside the program; the program itself uses nothing of it
    // but INV_COUNTER. Lists are copied into vectors.

    // Names for rows of the table of counter tags.
    inline static const std::string CNT_BURSTCOUNT{counter_tag("burstcount")};
    inline static const std::string CNT_COUNT_FUNCTION_VFABRIC{counter_tag("clock")};
    inline static const std::string CNT_ISTALL{counter_tag("istall")};
    inline static const std::string CNT_CHREAD_ISTALL{counter_tag("chread_istall")};
    inline static const std::string CNT_CHWRITE_ISTALL{counter_tag("chwrite_istall")};
    inline static const std::string CNT_EXT_STALL{counter_tag("memorystalls")};
    inline static const std::string CNT_CHREAD_EXT_STALL{counter_tag("chread_fifo_stall")};
    inline static const std::string CNT_CHWRITE_EXT_STALL{counter_tag("chwrite_fifo_stall")};
    inline static const std::string CNT_OSTALL{counter_tag("ostall")};
    inline static const std::string CNT_CHREAD_OSTALL{counter_tag("chread_ostall")};
    inline static const std::string CNT_CHWRITE_OSTALL{counter_tag("chwrite_ostall")};
    inline static const std::string CNT_IVALID{counter_tag("ivalid")};
    inline static const std::string CNT_CHREAD_IVALID{counter_tag("chread_ivalid")};
    inline static const std::string CNT_CHWRITE_IVALID{counter_tag("chwrite_ivalid")};
    inline static const std::string CNT_LOOP_IVALID{counter_tag("loop_ivalid")};
    inline static const std::string CNT_TOTAL_REQ{counter_tag("totalreq")};
    inline static const std::string CNT_CHREAD_TOTAL_REQ{counter_tag("chread_total_req")};
    inline static const std::string CNT_CHWRITE_TOTAL_REQ{counter_tag("chwrite_total_req")};
    inline static const std::string CNT_BANDWIDTH{counter_tag("bandwidth")};
    inline static const std::string CNT_UNALIGNED_REQ{counter_tag("unalignedrequests")};
    inline static const std::string CNT_CACHEHIT{counter_tag("cachehit")};
    inline static const std::string CNT_READWRITECOUNT{counter_tag("readwritecount")};
    inline static const std::string CNT_IDLE{counter_tag("idle")};
    inline static const std::string CNT_IDLE_CHREAD{counter_tag("chread_idle")};
    inline static const std::string CNT_IDLE_CHWRITE{counter_tag("chwrite_idle")};
    inline static const std::string CNT_SHARED{counter_tag("shared")};
    inline static const std::string CNT_SHARED_CHWRITE{counter_tag("chwrite_shared")};
    inline static const std::string CNT_SHARED_CHREAD{counter_tag("chread_shared")};
    inline static const std::string CNT_CHREAD_TOTAL_FIFO_SIZE{counter_tag("chread_total_fifo_size")};
    inline static const std::string CNT_CHREAD_MAX_FIFO_SIZE{counter_tag("chread_max_fifo_size")};
    inline static const std::string CNT_CHWRITE_TOTAL_FIFO_SIZE{counter_tag("chwrite_total_fifo_size")};
    inline static const std::string CNT_CHWRITE_MAX_FIFO_SIZE{counter_tag("chwrite_max_fifo_size")};
    inline static const std::string INV_CYCLE = "cycle";
    inline static const std::string INV_COUNTER = "counter";

    // The shape of external memory port tags. Nothing evaluates these texts: decode_ext_mem_tag takes tags
    // apart by substring searches, which accept more than the expressions do.
    inline static const std::string CNT_EXT_MEM_READ_VALID_REGEX =
        "profile_extmem_\\w+_function[_]?(\\w*)_bank(\\d+)_port(\\d+)_read_data_inc_en_\\w+";
    inline static const std::string CNT_EXT_MEM_WRITE_VALID_REGEX =
        "profile_extmem_\\w+_function[_]?(\\w*)_bank(\\d+)_port(\\d+)_write_data_inc_en_\\w+";
    inline static const std::string CNT_EXT_MEM_READ_BURST_REQ_REGEX =
        "profile_extmem_\\w+_function[_]?(\\w*)_bank(\\d+)_port(\\d+)_read_burst_count_en_\\w+";
    inline static const std::string CNT_EXT_MEM_WRITE_BURST_REQ_REGEX =
        "profile_extmem_\\w+_function[_]?(\\w*)_bank(\\d+)_port(\\d+)_write_burst_count_en_\\w+";

    // Which kind of run with shared counters measures a tag. Tags that aren't here are measured in every run.
    inline static const std::unordered_map<std::string, SharedCounterTypes> CNT_SHARED_MAPPING =
        make_shared_mapping();

    // Forgets the cycles of all functions, as at the start of the process. There must be no instances.
    static void forget_functions() { m_functions = FunctionCycles(); }

    int getNumComputeUnits() const { return m_num_compute_units; }
    // All three: the number of counters.
    int getNPorts() const { return getNTags(); }
    int getPortTagSize() const { return getNTags(); }
    std::vector<int> getPortTagOffsets() const;
    std::vector<std::string> getPortTagList() const;
    // Throws std::out_of_range beyond the end.
    int getPortCompUnit(int i) const;
    bool hasSharedPorts() const { return !m_shared_tags.empty(); }

    // updateCounters for a list of texts. `line_length` is not used.
    int updateCounters(std::vector<std::string> tokens, int comp_unit, int line_length, bool push,
                       SharedCounterTypes type, int line_number);
    // Applies one value to the line in progress. Unknown tags are ignored, faulty external memory tags
    // reported on standard error.
    void updateSingleCounter(const std::string& tag, long long value, bool push);
    // Records a value of an external memory port. A negative number is reported on standard error and records
    // nothing.
    void updateExtMemCounter(const std::string& mem_name, ExtMemOpType op, int bank, int port,
                             long long value, bool push);

    std::vector<long long> getOStallCount() const { return samples(Counter::ostall).to_vector(); }
    std::vector<long long> getIStallCount() const { return samples(Counter::istall).to_vector(); }
    std::vector<long long> getExtStallCount() const { return samples(Counter::ext_stall).to_vector(); }
    std::vector<long long> getIValidCount() const { return samples(Counter::ivalid).to_vector(); }
    std::vector<long long> getIReqCount() const { return samples(Counter::ireq).to_vector(); }
    std::vector<long long> getUnalignedAccesses() const { return samples(Counter::unaligned).to_vector(); }
    std::vector<long long> getCacheHits() const { return samples(Counter::cachehit).to_vector(); }
    std::vector<long long> getBandwidth() const { return samples(Counter::bandwidth).to_vector(); }
    std::vector<long long> getIdleCount() const { return samples(Counter::idle).to_vector(); }
    std::vector<long long> getNBursts() const { return samples(Counter::nbursts).to_vector(); }
    std::vector<long long> getTotalBurstWords() const { return samples(Counter::burst_words).to_vector(); }
    std::vector<long long> getTotalFifoSize() const { return samples(Counter::total_fifo).to_vector(); }
    std::vector<long long> getMaxFifoSize() const { return samples(Counter::max_fifo).to_vector(); }
    // One sample, or -1 for an index outside the list.
    long long getIValidCountSample(int i) const { return sample(Counter::ivalid, i); }
    long long getIReqCountSample(int i) const { return sample(Counter::ireq, i); }
    long long getCacheHitsSample(int i) const { return sample(Counter::cachehit, i); }
    long long getBandwidthSample(int i) const { return sample(Counter::bandwidth, i); }
    long long getIdleSample(int i) const { return sample(Counter::idle, i); }
    long long getNBurstsSample(int i) const { return sample(Counter::nbursts, i); }
    long long getTotalBurstWordsSample(int i) const { return sample(Counter::burst_words, i); }

    std::vector<long long> getTotalCycles() const { return total_cycles().to_vector(); }
    // The share of the last sample's cycles that were stalls, in percent, rounded up at two decimals. There
    // must be a sample.
    float getStallPercentage() const;
    // The cycle counter of a line given as `count` texts; -1 if the instance has none there, -2 if the text
    // is no number.
    long long getCsvTotalCycles(std::string* fields, int count);

    const std::vector<std::string>& getInvalidValues() const { return m_invalid_values; }
    void clearInvalidValues() { m_invalid_values.clear(); }

    // Sample times of the instance's function. A function without any is reported on standard error, and the
    // list is empty. A reset of any instance empties the lists of all functions.
    void addSampleTimestamp(long long timestamp);
    std::vector<long long> getSampleTimestamps() const;

    int getNumExtMems() const;
    std::vector<long long> getNumExtReads(const std::string& mem_name, int bank, int port) const;
    std::vector<long long> getNumExtWrites(const std::string& mem_name, int bank, int port) const;
    std::vector<long long> getNumExtReadBurstStarts(const std::string& mem_name, int bank, int port) const;
    std::vector<long long> getNumExtWriteBurstStarts(const std::string& mem_name, int bank, int port) const;

  private:
    // An external memory tag and the list that its values go to, looked up with the first value since a
    // reset.
    struct ExtMemPort {
        ExtMemTag tag;
        Samples* samples = nullptr;
    };
    struct PortCounter {
        std::string tag;
        int offset;
        int comp_unit;
        TagMeaning meaning;
        std::size_t ext_mem_port; // index into m_ext_mem_ports, for external memory tags
    };

    long long sample(Counter counter, int i) const;
    void mark_invalid(std::string_view text, int line_number);
    void add_value(const TagMeaning& meaning, long long value);
    void note_counter(Counter counter);
    void decode_column(const PortCounter& port, const LineBlock& lines, std::size_t field,
                       CounterColumns& columns);
    void record_ext_mem(ExtMemPort& port, long long value, bool push);
    Samples& ext_mem_list(ExtMemPort& port);
    Samples& function_cycles();
    Samples* find_function_cycles() const;

    // Shared by all instances of the process.
    inline static FunctionCycles m_functions;

    std::string m_name;
    std::string m_module;
    std::vector<int> m_lines;
    std::vector<int> m_col_nums;
    std::vector<bool> m_is_callsite;
    std::uint64_t m_description_number = unique_number();
    std::vector<std::string> m_filenames;
    std::string m_attr_memory_type;
    std::string m_attr_rw;
    std::string m_attr_lsu_type;
    std::string m_attr_global_mem_name;
    std::string m_attr_byte_width;
    std::string m_attr_memory_opt;
    std::string m_function;
    bool m_autorun;
    int m_num_compute_units;
    bool m_compiled_shared_counters;
    float m_fmax = 0.0f;

    std::vector<PortCounter> m_ports;
    std::vector<ExtMemPort> m_ext_mem_ports;
    std::string m_total_cycles_tag;
    int m_total_cycles_offset = -1; // field of the cycle counter, -1 if the instance has none
    std::unordered_map<std::string, int> m_shared_tags;
    int m_num_has_shared = 0;

    CounterSamples m_counters;
    Samples* m_function_cycles = nullptr; // the list of m_functions, once one was needed
    bool m_has_total_cycles = false;
    bool m_ireq_count_valid = false;
    bool m_has_total_fifo_size = false;
    bool m_has_max_fifo_size = false;
    std::vector<std::string> m_invalid_values;
    // By name. Never reserve here: the report follows the map's iteration order.
    std::unordered_map<std::string, ExtMemCounts> m_ext_mem_counts;
};
