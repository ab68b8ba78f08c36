// SPDX-License-Identifier: Apache-2.0
// Memory that runs out on demand, for programs that link failing_memory.cpp: in the process itself, since
// tracing doesn't show what is allocated.
#pragma once

namespace failing_memory {

// From now on allocations are counted, and the one of this number fails; the first is 1, and 0 fails none.
void begin(long number);
// No allocation fails any more. Returns how many there were.
long end();
// Blocks that were allocated and not freed.
long live_blocks();

} // namespace failing_memory
