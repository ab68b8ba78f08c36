// SPDX-License-Identifier: Apache-2.0
// A whole run, of which each byte comes from the input.
#include <cstdint>
#include <string_view>

#include "run_files.h"
#include "run_in_process.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    with_run_files({reinterpret_cast<const char*>(data), size}, run_in_process);
    return 0;
}
