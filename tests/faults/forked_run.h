// SPDX-License-Identifier: Apache-2.0
// A function in a process of its own, in which memory runs out.
#pragma once

#include <functional>
#include <string>

#include "run_program.h"

struct ForkedRun {
    Outcome outcome;      // an end by a signal has the signal's name as its status: "SIGABRT"
    long allocations = 0; // how many there were; 0 if the process has not come to its end
};

// Runs `body` in `folder`, with an empty standard input; its result is the exit status, and an exception ends
// the process. The allocation of this number fails; 0 for none. Throws std::runtime_error if it takes longer
// than a minute.
ForkedRun run_short_of_memory(const std::function<int()>& body, const std::string& folder, long number);
