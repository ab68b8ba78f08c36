// SPDX-License-Identifier: Apache-2.0
#include <malloc.h>

#include "toolbox.h"

namespace {

// Memory that is freed is used again, and not returned to the system, which would clear it for the next use:
// a summary makes and frees bins of half a megabyte some hundred times. Measured: a fifth of the processor
// time of summaries of shapes S and M (bench/README.md), and no more memory.
void keep_freed_memory() {
    constexpr int most_kept = 32 << 20;
    constexpr int least_separate = 4 << 20; // larger blocks come from the system, and go back to it
    mallopt(M_TRIM_THRESHOLD, most_kept);
    mallopt(M_MMAP_THRESHOLD, least_separate);
}

} // namespace

int main(int argc, char** argv) {
    keep_freed_memory();
    return zan::tool::run_toolbox(argc, argv);
}
