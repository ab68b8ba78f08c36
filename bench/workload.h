// SPDX-License-Identifier: Apache-2.0
// Designs and monitor files of known sizes, the same bytes on every machine.
#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "make_package.h"

// How large a run is. Each kernel has one instance that counts its clock, and others that access global
// memory (8 counters), a channel (6), or are loops (1): three counters an instance on average.
struct Shape {
    int kernels;
    int insts_per_kernel;
    int lines;
    int samples;        // lines of each invocation; 0: each kernel has one invocation
    bool autorun;       // all kernels report on the lines of one pseudo-kernel
    int memories;       // external memories, of which each kernel counts `ports` ports with their bursts
    int ports;          // of each kernel, spread over the memories
    int num_lines_each; // lines of one kernel in a row
};

// The shapes that stand in bench/README.md: S, L, M, W, A and X. Nothing for other names.
std::optional<Shape> shape_of(std::string_view name);

// Sets one of the numbers of a shape by its name: kernels, insts_per_kernel, lines, samples. False if there
// is no such number.
bool set_number(Shape& shape, std::string_view name, int value);

PackageSections sections_of(const Shape& shape);

// Writes the monitor file that fits the design. The counter values have 1 to 9 digits.
void write_monitor(const Shape& shape, std::ostream& out);
