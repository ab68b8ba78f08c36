// SPDX-License-Identifier: Apache-2.0
// The constant texts and enumerations that the post-processor's units share.
#pragma once

#include <string>

// The build's version: a four-digit year, two small numbers and a commit of 40 hexadecimal digits, joined
// by dots. The report carries it as `profiler_json_version`.
extern const std::string tly_version;

// What the shared counters of a run measured. The monitor file carries the number, a kernel keeps it, and
// the report writes it.
enum SharedCounterTypes : int {
    SHARED_NONE = -1,
    SHARED_IVALID = 0,
    SHARED_EXT_STALL = 1,
    SHARED_IDLE = 2,
    SHARED_TOTAL_REQ = 3,
};

// Kinds of external memory counters; the number is the first index of `ExtMemCounts`.
enum ExtMemOpType : int {
    EXT_MEM_READ = 0,
    EXT_MEM_WRITE = 1,
    EXT_MEM_READ_BURST = 2,
    EXT_MEM_WRITE_BURST = 3,
};

// Package sections that compilers write and that the run itself never reads.
inline const std::string opt_rpt_elf_section = ".zan.opt.rpt.xml";
inline const std::string kernel_source_elf_section_prefix = ".zan.source";
inline const std::string file_name_elf_section = ".zan.file.";

// Names of transfers in a monitor file.
inline const std::string mem_transfer_read = ".mem_transfer_read";
inline const std::string mem_transfer_write = ".mem_transfer_write";
inline const std::string mem_transfer_copy = ".mem_transfer_copy";
inline const std::string reprogram = ".reprogram";
inline const std::string mem_mirror_from_device = ".mem_mirror_from_device";
inline const std::string mem_mirror_to_device = ".mem_mirror_to_device";
inline const std::string mem_transfer = ".mem_transfer";
inline const std::string mem_migration = ".mem_migration";
inline const std::string usm_memcopy = ".usm_memcpy";
// All of these. A line with a name of the list is a transfer; with any other, a kernel's sample.
inline constexpr const std::string* transfer_names[] = {
    &mem_transfer_read,    &mem_transfer_write, &mem_transfer_copy, &reprogram,   &mem_mirror_from_device,
    &mem_mirror_to_device, &mem_transfer,       &mem_migration,     &usm_memcopy,
};

// Attribute texts and names of the profiler description.
inline const std::string addrspace_global = "__global";
inline const std::string loop_module = "__loop";
inline const std::string memoryopt_coalesced = "_coalesced";
inline const std::string opt_type_read = "read";
inline const std::string write_channel = "kdl_iowr";
inline const std::string read_channel = "kdl_iord";
inline const std::string autorun_profile_dummy_kernel = "Corvane_Internal_Collect_Autorun_Profiling";
inline const std::string BURST_NON_ALIGNED = "BURST-NON-ALIGNED";
inline const std::string BURST_COALESCED = "BURST-COALESCED";
inline const std::string SEMI_STREAMING = "SEMI-STREAMING";
