// SPDX-License-Identifier: Apache-2.0
#include "failing_memory.h"

#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstddef>

// The C library's own, which the functions below stand in front of.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}

namespace {

bool counting = false;
long num_allocations = 0;
long failing = 0;
long num_live = 0;

// Whether this allocation has to fail, with errno as the system sets it.
bool fails() {
    if (!counting || ++num_allocations != failing)
        return false;
    errno = ENOMEM;
    return true;
}

void* counted(void* block) {
    if (block)
        ++num_live;
    return block;
}

} // namespace

namespace failing_memory {

void begin(long number) {
    num_allocations = 0;
    failing = number;
    counting = true;
}

long end() {
    counting = false;
    return num_allocations;
}

long live_blocks() {
    return num_live;
}

} // namespace failing_memory

extern "C" {

void* malloc(std::size_t size) noexcept {
    return fails() ? nullptr : counted(__libc_malloc(size));
}

void* calloc(std::size_t count, std::size_t size) noexcept {
    return fails() ? nullptr : counted(__libc_calloc(count, size));
}

void* realloc(void* block, std::size_t size) noexcept {
    if (fails())
        return nullptr;
    void* const moved = __libc_realloc(block, size);
    return block ? moved : counted(moved);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    return fails() ? nullptr : counted(__libc_memalign(alignment, size));
}

void free(void* block) noexcept {
    if (block)
        --num_live;
    __libc_free(block);
}

// Whole pages, which the toolbox asks of the system itself.
void* mmap(void* address, std::size_t size, int protection, int flags, int file, off_t offset) noexcept {
    if ((flags & MAP_ANONYMOUS) != 0 && fails())
        return MAP_FAILED;
    return reinterpret_cast<void*>(::syscall(SYS_mmap, address, size, protection, flags, file, offset));
}

void* mremap(void* block, std::size_t old_size, std::size_t size, int flags, ...) noexcept {
    if (fails())
        return MAP_FAILED;
    return reinterpret_cast<void*>(::syscall(SYS_mremap, block, old_size, size, flags));
}

} // extern "C"
