// SPDX-License-Identifier: Apache-2.0
// What commands take for a profile: a report, a saved summary, or a package with its capture.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "profile_summary.h"
#include "totals.h"

namespace zan::profile {

// Names of files; "-" is standard input.
struct Input {
    std::string name;    // of a report, a saved summary, or a package
    std::string capture; // of a package; empty else
    bool operator==(const Input&) const = default;
};

// Why inputs can't be used. Names of files in it are as they came, so outputs for people have to escape it.
struct InputFault {
    std::string text;
};

// The inputs of a command's words: one word each, but a word that ends in "zanx" takes the next one as its
// capture. Faults: a package without a capture, "-" more than once.
std::variant<std::vector<Input>, InputFault> inputs_of(std::span<const std::string> words);

// Reads all bytes of an input, or of its capture, and reports how far it is.
using InputProgress = std::function<void(std::uint64_t done)>;

struct InputOptions {
    Value nanoseconds;    // of the unit of time, if the user states it
    int compute_unit = 0; // of a package; all_compute_units for each in turn
    InputProgress progress;
    // For those who need more than sums. The sink that takes the nodes in place of that of the totals, and
    // hands them on to these; and what is called with the totals of an input when it has been read.
    std::function<ReportSink&(Totals& totals)> sink_of;
    std::function<void(const Totals& totals)> done;
    // Called with the summary of inputs that are no saved summary, and with the totals of the last one.
    std::function<void(const ProfileSummary& summary, const Totals& totals)> summarized;
};

// The size of what is read of an input, in bytes; 0 if it isn't known.
std::uint64_t size_of(const Input& input);

// The summary of the inputs, with its diagnosis. Several are runs of one design, and are merged; a saved
// summary has to be the only one, and keeps the diagnosis that it was saved with. There must be at least one
// input. What a package and its capture lack becomes a note of the summary.
std::variant<ProfileSummary, InputFault> summarize_inputs(std::span<const Input> inputs,
                                                          const InputOptions& options);

} // namespace zan::profile
