// SPDX-License-Identifier: Apache-2.0
// Rules that a new run must keep: "kernel_time:+3%" fails if a kernel's time has grown by more than that.
#pragma once

#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "comparison.h"

namespace zan::profile {

struct GateRule {
    std::string text; // as the user wrote it
    Metric metric = Metric::count;
    bool is_rise = true;   // fails if the value rises by more than the limit; else if it falls by more
    double limit = 0;      // not negative; times in nanoseconds
    bool is_share = false; // the limit is in percent of the old value
};

// Why a text is no rule.
struct GateRuleFault {
    std::string text;
    std::string unknown_metric; // what stands where the name of a metric should; empty if that is right
};

// METRIC:+LIMIT or METRIC:-LIMIT. The limit is a number of points for metrics in percent; for times a number
// with ns, us, ms or s; for all others a plain number. "%" after it makes it a share of the old value, except
// for metrics in percent, where it could mean either.
std::variant<GateRule, GateRuleFault> parse_gate_rule(std::string_view text);

// Which subjects people ask for; an empty list means all.
struct SubjectFilter {
    std::vector<std::string> kernels; // "writer", "writer#1"
    std::vector<std::string> blocks;  // "store_pixels", "writer/store_pixels"

    // Kernels and blocks of other kernels are left out, and blocks of other names. A run and memories stay.
    // Names of the old run count, too.
    bool takes(const SubjectComparison& subject) const;
};

struct GateFailure {
    const GateRule* rule;
    const SubjectComparison* subject;
    double before;
    double after;
};

struct GateResult {
    std::vector<GateFailure> failures;
    std::size_t num_compared = 0; // subjects with the metric in both runs
    std::size_t num_missing = 0;  // subjects with the metric in one of them
};

// Checks one rule, which must outlive the result, as must the comparison. A change that the test of a
// kernel's times doesn't find is none.
GateResult check_rule(const GateRule& rule, const RunComparison& comparison, const SubjectFilter& filter);

} // namespace zan::profile
