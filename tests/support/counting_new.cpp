#include "counting_new.h"

#include <cstdlib>
#include <new>

namespace {

std::size_t num_allocations = 0;

} // namespace

std::size_t allocation_count() {
    return num_allocations;
}

void* operator new(std::size_t size) {
    ++num_allocations;
    if (void* memory = std::malloc(size == 0 ? 1 : size))
        return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
