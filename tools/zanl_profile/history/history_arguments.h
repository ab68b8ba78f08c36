// SPDX-License-Identifier: Apache-2.0
// What the commands of a history have in common.
#pragma once

#include <string>
#include <vector>

#include "failure.h"
#include "history_store.h"
#include "printable.h"

namespace zan::tool {

// Of texts "name=value"; `option` is named if one isn't. Throws Failure.
profile::Labels labels_from(const std::vector<std::string>& texts, const char* option);

// The labels on one line: "board=vela commit=1f3a".
std::string labels_text(const profile::Labels& labels);

// Does the work, and turns faults of the history into a Failure: status 1 if a run isn't there, else 2.
template <class Work>
auto with_history(Work work) {
    try {
        return work();
    } catch (const profile::HistoryFault& fault) {
        throw Failure(printable(fault.what()), fault.is_missing() ? status_no : status_trouble);
    }
}

} // namespace zan::tool
