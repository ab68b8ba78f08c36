// SPDX-License-Identifier: Apache-2.0
#include "counting_new.h"

#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <new>

namespace {

std::size_t num_allocations = 0;
std::size_t num_bytes = 0; // held, as the allocator counts them
std::size_t num_most_bytes = 0;
std::size_t num_bytes_at_restart = 0;

void* allocate(std::size_t size) {
    ++num_allocations;
    void* const memory = std::malloc(size == 0 ? 1 : size);
    if (!memory)
        throw std::bad_alloc();
    num_bytes += ::malloc_usable_size(memory);
    num_most_bytes = std::max(num_most_bytes, num_bytes);
    return memory;
}

void release(void* memory) {
    if (memory)
        num_bytes -= ::malloc_usable_size(memory);
    std::free(memory);
}

} // namespace

std::size_t allocation_count() {
    return num_allocations;
}

std::size_t most_bytes() {
    return num_most_bytes - num_bytes_at_restart;
}

void restart_most_bytes() {
    num_most_bytes = num_bytes_at_restart = num_bytes;
}

void* operator new(std::size_t size) {
    return allocate(size);
}

void* operator new[](std::size_t size) {
    return allocate(size);
}

void operator delete(void* memory) noexcept {
    release(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    release(memory);
}

void operator delete[](void* memory) noexcept {
    release(memory);
}

void operator delete[](void* memory, std::size_t) noexcept {
    release(memory);
}
