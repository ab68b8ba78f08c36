// SPDX-License-Identifier: Apache-2.0
// Writing an ELF file so that it is certain to be on the disk.
#pragma once

#include <libelf.h>

#include <cstdint>
#include <string>

namespace zan::pkg {

// Largest file: offsets in a package have 32 bits.
constexpr std::uint64_t max_package_size = 0xFFFFFFFF;

// Writes what was made or changed to the file `to`, which it belongs to, and waits for the disk. Returns an
// empty text, or why that failed; nothing is printed. A file of more than `max_size` bytes is not begun.
std::string write_elf(Elf* elf, int to, std::uint64_t max_size);

// Why a file of `size` bytes is not to be written: empty if it is. `max_size` is the caller's limit, and
// packages have one of their own.
std::string size_fault(std::uint64_t size, std::uint64_t max_size);

} // namespace zan::pkg
