// SPDX-License-Identifier: Apache-2.0
// Runs of a process in which system calls fail on demand, whichever library makes them: the process is traced
// as by a debugger.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "run_program.h"
#include "traced_calls.h"

// Which call of a traced process fails, and how. Only calls on its own files count: those in its folder,
// temporary ones, and the standard streams except standard error, where faults are reported.
struct Fault {
    static constexpr int none = 0;

    Calls calls = Calls::reads;
    int number = none;     // which of these calls, from 1 on
    int error = 0;         // the errno it fails with; 0: it returns 0, as a read at the end of a file does
    bool lasting = false;  // so do all of these calls after it
    bool is_lost = false;  // it isn't made, and returns all the same that it has moved every byte
    std::string file = {}; // only calls on this file count; empty for all files
    std::string call = {}; // only calls of this name count; empty for all of the kind
    // Each of the calls that don't fail moves this many bytes at most; 0 for all that it is asked for.
    std::uint64_t piece = 0;
};

struct TracedRun {
    Outcome outcome; // an end by a signal has the signal's name as its status: "SIGABRT"
    int calls = 0;   // how many calls counted
    // The first one that has failed, with its file: "pread64 design.zanx". Random
    // letters of a name are X.
    std::string struck;
};

// Why nothing can be traced here; empty if all is well.
std::string tracing_fault();

// Runs `body` in a process of its own, in `folder`, with an empty standard input; its result is the exit
// status. Throws std::runtime_error if it takes longer than a minute.
TracedRun run_traced(const std::function<int()>& body, const std::string& folder, const Fault& fault);

// A body that becomes the program.
std::function<int()> program_body(const std::string& program, const std::vector<std::string>& arguments);
