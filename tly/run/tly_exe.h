// SPDX-License-Identifier: Apache-2.0
// The command line and the fixed order of a run's stages.
#pragma once

#include <map>
#include <string>
#include <unordered_map>

#include "report_tree.h"
#include "tly_ext_mem.h"
#include "tly_kernel.h"

// What `main` does: checks the arguments and runs. Returns the process's exit status; wrong arguments are no
// error for the shell.
int tly_main(int argc, char** argv);

// The file type that the path ends in, with or without a dot: "zanx", "mon" or "json". An empty text
// if it is none of these.
std::string checkArgType(std::string path);

// Writes one line about the arguments to standard output.
void printUsage();

// Joins the package at `zanx_path` and the monitor file at `mon_path` into a report at `json_path`. Returns
// the status of the last stage that ran: 0, or that of the failing stage, whose message is on standard error;
// then there is no report. A report that can't be written is thrown as a json_parser_error.
int runTLY(char* zanx_path, char* mon_path, char* json_path);

// Deletes the tree, the kernels with their module instances and the map itself, and the memories. The entries
// of `ext_mems` stay and dangle.
void clean_up(ptree* tree, std::map<std::string, TlyKernel*>* kernels,
              std::unordered_map<std::string, TlyExtMem*>& ext_mems);
