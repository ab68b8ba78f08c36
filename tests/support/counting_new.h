// An operator new that counts, for the programs that link counting_new.cpp.
#pragma once

#include <cstddef>

// Allocations of the program so far.
std::size_t allocation_count();
