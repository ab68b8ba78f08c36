// SPDX-License-Identifier: Apache-2.0
// The metrics of a run as rows, so that a trend or a query of another program reads no summaries.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "profile_summary.h"
#include "sqlite_database.h"

namespace zan::profile {

// What a scope is called in the table `series`.
std::string_view name_of_scope(MetricScope scope);

// Writes values within a transaction, which must not outlive it: it knows numbers of series by then.
class RunValues {
  public:
    explicit RunValues(Database& database);

    // Each metric that was measured, and the peaks of memories. Of kernels and blocks with equal names the
    // first counts.
    void add(std::int64_t run, const ProfileSummary& summary);

  private:
    void add_metrics(MetricScope scope, const std::string& kernel, const std::string& name,
                     const MetricValues& metrics);
    void add_value(MetricScope scope, const std::string& kernel, const std::string& name,
                   const std::string& metric, double value);
    std::int64_t series_of(const std::string& scope, const std::string& kernel, const std::string& name,
                           const std::string& metric);

    Statement m_find;
    Statement m_make;
    Statement m_insert;
    std::map<std::string, std::int64_t> m_numbers; // of series, by all their texts
    std::int64_t m_run = 0;
    bool m_time_unit_known = false;
};

} // namespace zan::profile
