// SPDX-License-Identifier: Apache-2.0
// An operator new that counts, for the programs that link counting_new.cpp.
#pragma once

#include <cstddef>

// Allocations of the program so far.
std::size_t allocation_count();

// The most bytes that the program has held at a time since the last call of restart_most_bytes(), less those
// that it held then.
std::size_t most_bytes();
void restart_most_bytes();
