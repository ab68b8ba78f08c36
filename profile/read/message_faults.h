// SPDX-License-Identifier: Apache-2.0
// What the messages of a run mean as faults.
#pragma once

#include <optional>
#include <string>

#include "diagnostics.h"
#include "run_fault.h"

namespace zan::profile {

// Where the fault of a message stands.
enum class FaultPlace {
    capture,      // the capture as a whole
    capture_line, // its current line
    package,      // the section that the row names
};

struct MessageFault {
    FaultKind kind;
    FaultPlace place;
    const char* section; // of the package; null elsewhere
    std::string text;    // for people, without a newline
};

// Nothing for a message that says no more than one beside it.
std::optional<MessageFault> fault_of(Message message, const MessageDetails& details);

} // namespace zan::profile
