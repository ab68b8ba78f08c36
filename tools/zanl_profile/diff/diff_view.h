// SPDX-License-Identifier: Apache-2.0
// A comparison as people read it: rows of texts, which each output lays out in its own way.
#pragma once

#include <string>
#include <vector>

#include "comparison.h"
#include "gate_rule.h"

namespace zan::tool {

// What `diff` shows.
struct DiffResult {
    profile::RunComparison comparison;
    profile::MatchBy match = profile::MatchBy::name;
    profile::SubjectFilter filter;
    std::vector<profile::GateRule> rules;
    std::vector<profile::GateResult> results; // of each rule

    bool has_failures() const;
};

struct ChangeRow {
    std::string subject; // "writer/store_pixels"
    std::string metric;  // "stall"
    std::string before;  // "28.0%"
    std::string after;
    std::string delta; // "+7.1 points"
    bool operator==(const ChangeRow&) const = default;
};

struct DiffView {
    std::string base; // names of the inputs
    std::string new_run;
    std::vector<ChangeRow> worse;
    std::vector<ChangeRow> better;
    std::vector<ChangeRow> other;          // neither worse nor better, or measured by one run alone
    std::vector<std::string> appeared;     // "kernel writer", "block writer/store_pixels (image.cl:34)"
    std::vector<std::string> disappeared;  //
    std::vector<std::string> moved;        // "writer/store_pixels: image.cl:34, now image.cl:36"
    std::vector<std::string> notes;        // what makes the comparison doubtful
    std::vector<ChangeRow> failures;       // of rules; the metric is the rule
    std::vector<std::string> rule_results; // "stall:+5 fails for 2 of 12 blocks"

    bool has_changes() const;
};

// Texts are as they came from files and users: outputs have to make them printable.
DiffView make_view(const DiffResult& result);

} // namespace zan::tool
