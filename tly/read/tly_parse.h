// SPDX-License-Identifier: Apache-2.0
// The stages of a run for callers that have a path and the profile model's containers: package sections and
// the monitor file go into the profile model and the report.
#pragma once

#include <map>
#include <string>
#include <unordered_map>

#include "report_tree.h"
#include "tly_ext_mem.h"
#include "tly_kernel.h"

// Copies a section of the package at `package_path` into a new text, ended by a NUL, in `*buffer`. The caller
// sets `*buffer` to null first and frees it with delete[]. Returns 0, or 1 if the package has no such
// section, or 2 if it can't be opened; then no text was made.
int get_zanx_sect(const char* section, const char* package_path, char** buffer);

// Puts the first line of the package's version section at "versions.zanx_version". Returns 0, or 1 with a
// message if there is none.
int parseVersionFile(ptree* tree, const char* package_path);

// Makes the external memories that the package's board description lists, into `ext_mems`, whose owner
// deletes them, and appends the board's node to "boards.nodes". Returns 0, or 1 with a message if the package
// has no description. One that can't be loaded ends the process by SIGSEGV, with no message.
int parseBoardXMLFile(ptree* tree, const char* package_path,
                      std::unordered_map<std::string, TlyExtMem*>& ext_mems);

// Puts the clock frequency that the timing report names, or "0.0", under "fmax" of the run information node.
// Returns 0, or 1 with a message if the package has no timing report.
int parseVelmoraReport(ptree* tree, const char* package_path);

// Builds the profile model from the package's profiler description: a kernel for each function, a module
// instance for each one that is connected, and for each connection a counter with the index of its field on a
// monitor line. The clock is read back from `tree`. The caller owns the kernels and their instances;
// `original_names` gets the kernel name for each original name. Returns 0, or 2 with a message if the package
// has no description, or 1 with a message if there is one that can't be loaded.
int parseProfilerXMLFile(std::map<std::string, TlyKernel*>* kernels, ptree* tree, const char* package_path,
                         std::map<std::string, std::string>* original_names);

// Reads a monitor file into the kernels and appends to the report a node for each transfer and for each
// kernel invocation that has ended. `original_names` maps names that the file may use to kernel names. With
// `no_profiler` there is no profiler description: unknown kernels are made (in `kernels`, whose owner deletes
// them), and counters are not read. Lines with faults have a message on standard error and are left out.
// Returns 0, or 1 with a message if the file can't be opened, or if the design and the run differ about
// shared counters. Throws std::out_of_range for a line of digits and commas alone.
int parseProfilerMONFile(std::map<std::string, TlyKernel*>* kernels, ptree* tree, std::string mon_path,
                         const std::map<std::string, std::string>& original_names,
                         std::unordered_map<std::string, TlyExtMem*>& ext_mems, bool no_profiler);

// Appends the node of the kernel's current invocation to "kernels.nodes", and resets the kernel if `reset` is
// set. Does nothing for the kernel that stands for all autorun kernels. Returns 1.
int pullKernelInfo(TlyKernel* kernel, ptree* tree, bool reset,
                   std::unordered_map<std::string, TlyExtMem*>& ext_mems);
