// SPDX-License-Identifier: Apache-2.0
// A run as real ones are: a pipeline of seven kernels that stabilizes a video, frame by frame.
#pragma once

#include <ostream>

#include "make_package.h"

// In each frame `track` finds out how the camera moved, then `fetch`, `warp`, `merge`, `grade` and `emit`
// work at the same time, joined by channels, then `meter` counts how bright the frame is. `warp` and `grade`
// run by themselves. The pipeline fills the memory DDR; `track` reads HBM in short bursts that aren't
// aligned, from code that was inlined twice, and its counts fit no other cause; `meter` begins an iteration
// every 6.4 cycles.
//
// Each block's valid, stalled and idle cycles make up all cycles, and cycles at the clock of 300 MHz fit the
// time stamps, which are nanoseconds.
struct Pipeline {
    int num_frames = 12;
    bool aligned =
        false; // the next version of the design, of which `track` reads aligned, in half of the time
};

PackageSections sections_of(const Pipeline& pipeline);

// Writes the monitor file that fits the design: the same bytes on every machine.
void write_monitor(const Pipeline& pipeline, std::ostream& out);
