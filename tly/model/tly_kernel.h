// SPDX-License-Identifier: Apache-2.0
// A kernel and what one invocation of it has produced so far.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "report_tree.h" // Against the layers: callers of getJSON get a tree
#include "sample_list.h"
#include "tly_constants.h"
#include "tly_module_inst.h"
#include "unique_number.h"

// The reader adds one entry to each sample list for every monitor line of the kernel, the report makes a node
// of what has accumulated, and resetKernel makes room for the next invocation. A kernel points to its module
// instances and doesn't own them: the profile model does, or callers with containers of their own, who have
// clean_up.
class TlyKernel {
  public:
    using Samples = SampleList<long long>;

    TlyKernel(std::string name, std::string user_friendly_name, std::string original_name,
              std::string filename, int line_num, bool autorun);
    TlyKernel(std::string name, std::string user_friendly_name, std::string original_name,
              std::string filename, int line_num);
    TlyKernel(std::string name, bool autorun);
    explicit TlyKernel(std::string name);

    const std::string& get_name() const { return m_name; }
    const std::string& get_user_friendly_name() const { return m_user_friendly_name; }
    const std::string& get_filename() const { return m_filename; }
    int get_line_num() const { return m_line_num; }
    // Changes with what the getters above return, and is the number of no other kernel.
    std::uint64_t description_number() const { return m_description_number; }
    bool is_autorun_kernel() const { return m_autorun; }
    void set_autorun() { m_autorun = true; }
    // How many copies of the kernel the design has.
    unsigned int get_num_compute_units() const { return m_num_compute_units; }
    void set_num_compute_units(unsigned int count) { m_num_compute_units = count; }
    // At least one monitor line has reached the kernel.
    bool is_in_mon_file() const { return m_in_mon; }
    void set_in_mon(bool in_mon) { m_in_mon = in_mon; }
    // The shared counter type of the last line.
    SharedCounterTypes get_shared_run_type() const { return m_shared_run_type; }
    void set_shared_run_type(SharedCounterTypes type) { m_shared_run_type = type; }
    // Start time of the current invocation, -1 until the kernel's first line.
    long long get_start_time() const { return m_start_time; }
    void set_start_time(long long start_time) { m_start_time = start_time; }

    // Lists with one entry for each sample. A copy of a list shares its storage.
    void add_device_id(int id) { m_device_ids.push_back(id); }
    void add_command_queue(int queue) { m_command_queues.push_back(queue); }
    void add_sample_timestamp(long long timestamp) { m_sample_timestamps.push_back(timestamp); }
    // Replaces the whole list, in spite of the name: `cycles` is the history of the invocation.
    void add_sample_totalcycle(Samples cycles) { m_sample_totalcycles = std::move(cycles); }

    const SampleList<int>& device_ids() const { return m_device_ids; }
    const SampleList<int>& command_queues() const { return m_command_queues; }
    const Samples& sample_timestamps() const { return m_sample_timestamps; }
    const Samples& sample_totalcycles() const { return m_sample_totalcycles; }

    // In the order of adding.
    const std::vector<TlyModuleInst*>& get_module_insts() const { return m_module_insts; }
    // Appends an instance, which must not be null. One with the kernel's name and "_function_wrapper" also
    // becomes the external memory instance. (The report knows the wrapper by another suffix.)
    void add_module_inst(TlyModuleInst* inst);
    // The first instance of that name, or null.
    TlyModuleInst* check_module_exists(const std::string& name) const;

    // Empties the sample lists and resets the module instances. The start time stays: the reader sets the new
    // one right after.
    void resetKernel();

    // The rest of the public part is for callers outside the program; the program itself doesn't use it.
    // Lists are copied into vectors.

    // The report node of the current invocation. A memory that the board doesn't list is reported on standard
    // error and left out. With `reset` the kernel is reset afterwards.
    ptree getJSON(bool reset, std::unordered_map<std::string, TlyExtMem*>& ext_mems);

    void set_name(std::string name) { change(m_name, std::move(name)); }
    const std::string& get_original_name() const { return m_original_name; }
    void set_original_name(std::string name) { m_original_name = std::move(name); }
    void set_user_friendly_name(std::string name) { change(m_user_friendly_name, std::move(name)); }
    void set_filename(std::string filename) { change(m_filename, std::move(filename)); }
    void set_line_num(int line_num) { change(m_line_num, line_num); }
    void set_autorun_manual(bool autorun) { m_autorun = autorun; }
    std::vector<int> get_device_ids() const { return m_device_ids.to_vector(); }
    void set_device_ids(SampleList<int> ids) { m_device_ids = std::move(ids); }
    std::vector<int> get_command_queues() const { return m_command_queues.to_vector(); }
    void set_command_queues(SampleList<int> queues) { m_command_queues = std::move(queues); }
    std::vector<long long> get_sample_timestamps() const { return m_sample_timestamps.to_vector(); }
    void set_sample_timestamps(Samples timestamps) { m_sample_timestamps = std::move(timestamps); }
    std::vector<long long> get_sample_totalcycles() const { return m_sample_totalcycles.to_vector(); }
    void set_sample_totalcycles(Samples cycles) { m_sample_totalcycles = std::move(cycles); }
    // Replaces the list, which may hold null where an instance is gone.
    void set_module_insts(std::vector<TlyModuleInst*> insts);
    TlyModuleInst* get_extmem_module_inst() const { return m_extmem_module_inst; }
    void set_extmem_module_inst(TlyModuleInst* inst) { m_extmem_module_inst = inst; }

  private:
    template <class Member>
    void change(Member& member, Member value) {
        member = std::move(value);
        m_description_number = unique_number();
    }

    std::uint64_t m_description_number = unique_number();
    std::string m_name;
    std::string m_original_name;
    std::string m_user_friendly_name;
    bool m_autorun;
    unsigned int m_num_compute_units = 1;
    bool m_in_mon = false;
    SharedCounterTypes m_shared_run_type = SHARED_NONE;
    std::string m_filename;
    int m_line_num;
    SampleList<int> m_device_ids;
    SampleList<int> m_command_queues;
    long long m_start_time = -1;
    Samples m_sample_timestamps;
    Samples m_sample_totalcycles;
    std::vector<TlyModuleInst*> m_module_insts;
    std::unordered_map<std::string_view, TlyModuleInst*> m_first_of_name; // keys are the instances' own names
    TlyModuleInst* m_extmem_module_inst = nullptr;
};
