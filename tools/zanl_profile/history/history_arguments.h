// SPDX-License-Identifier: Apache-2.0
// What the commands of a history have in common.
#pragma once

#include <string>
#include <vector>

#include "console.h"
#include "failure.h"
#include "history_store.h"
#include "printable.h"

namespace zan::tool {

// Of texts "name=value"; `option` is named if one isn't. Throws Failure.
profile::Labels labels_from(const std::vector<std::string>& texts, const char* option);

// The labels on one line: "board=vela commit=1f3a".
std::string labels_text(const profile::Labels& labels);

// Keeps the copy of a history that is about to be brought up to date, whole or not at all, with the
// permissions of the history, and says so. A file of that name is never replaced: Failure, unless it is that
// copy.
profile::CopyKeeper copy_keeper(const std::string& database, const Console& console);

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
