// SPDX-License-Identifier: Apache-2.0
// How a stage of a run ends.
#pragma once

// The numbers are those that the public functions of the stages return.
enum class StageResult {
    done = 0,
    failed = 1,         // with a message; the run ends
    no_description = 2, // the package has no profiler description; the run goes on without one
    not_loadable = 3,   // a section breaks the rules of its format, which has no message
};
