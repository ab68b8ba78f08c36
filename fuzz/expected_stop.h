// SPDX-License-Identifier: Apache-2.0
// Ends that input may bring about on purpose, as something that a fuzz target can go on from.
#pragma once

// Thrown where the process would have ended: by a contract that input can break, or by a board description
// that can't be loaded. Any other contract ends the fuzzer, which then keeps the input.
struct ExpectedStop {};
