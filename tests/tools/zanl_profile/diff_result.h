// SPDX-License-Identifier: Apache-2.0
// A comparison of two runs made by hand, and the texts that it has.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "diff_view.h"
#include "two_runs.h"

// Both runs, and what `diff` finds; the summaries outlive the result.
struct TwoRuns {
    zan::profile::ProfileSummary before;
    zan::profile::ProfileSummary after;

    zan::tool::DiffResult result(const std::vector<std::string>& rules = {},
                                 zan::profile::SubjectFilter filter = {}) const {
        using namespace zan::profile;
        zan::tool::DiffResult made;
        made.filter = std::move(filter);
        for (const std::string& rule : rules)
            made.rules.push_back(std::get<GateRule>(parse_gate_rule(rule)));
        made.comparison = compare(before, after);
        for (const GateRule& rule : made.rules)
            made.results.push_back(check_rule(rule, made.comparison, made.filter));
        return made;
    }
};

// The writer is slower and stalls more; it reads its input better. A block is new, and one has moved.
inline TwoRuns slower_writer() {
    using namespace zan::profile;
    TwoRuns runs;
    runs.before =
        run_of({kernel_of("writer", {{Metric::kernel_time, 8'000}, {Metric::busy, 50}},
                          {block_of("store", {{Metric::stall, 28}, {Metric::bandwidth, 12'000}}, 34),
                           block_of("load", {{Metric::stall, 20}}, 9)})},
               {memory_of("DDR", {{Metric::memory_full, 5}})}, {{Metric::span, 10'000}});
    runs.after =
        run_of({kernel_of("writer", {{Metric::kernel_time, 9'200}, {Metric::busy, 60}},
                          {block_of("store", {{Metric::stall, 35.1}, {Metric::bandwidth, 12'000}}, 36),
                           block_of("load", {{Metric::stall, 10}}, 9), block_of("log", {}, 40)})},
               {memory_of("DDR", {{Metric::memory_full, 5}})}, {{Metric::span, 10'000}});
    runs.before.input = "base.json";
    runs.after.input = "new.json";
    return runs;
}
