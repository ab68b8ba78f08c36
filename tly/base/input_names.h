// SPDX-License-Identifier: Apache-2.0
// What a run finds in its inputs by name or place. Unlike tly_constants.h this is for the project's own
// sources.
#pragma once

// Package sections that a run reads.
inline constexpr const char* version_section = ".zan.version";
inline constexpr const char* board_section = ".zan.board_spec.xml";
inline constexpr const char* timing_report_section = ".zan.velmora_report";
inline constexpr const char* profiler_section = ".zan.profiler.xml";

// Index of the first counter among the fields of a kernel's line; the fields before it are the line's head.
inline constexpr int first_counter_field = 7;

// What follows a kernel's name in the names of instances that aren't blocks of the kernel: that of its
// function and that of its wrapper, both without a node in the report, and that of the instance that the
// kernel keeps for its external memories.
inline constexpr const char* function_inst_suffix = "_function_inst";
inline constexpr const char* wrapper_inst_suffix = "_function_wrapper_inst";
inline constexpr const char* ext_mem_inst_suffix = "_function_wrapper";
