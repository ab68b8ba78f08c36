// SPDX-License-Identifier: Apache-2.0
#include "gate_rule.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>

namespace zan::profile {

namespace {

struct LimitUnit {
    std::string_view text;
    double factor;
};
constexpr LimitUnit times[] = {{"ns", 1}, {"us", 1e3}, {"ms", 1e6}, {"s", 1e9}};

GateRuleFault fault(std::string_view rule, const std::string& why) {
    return {"'" + std::string(rule) + "' is no rule: " + why, {}};
}

// What the limit is multiplied with; nothing if the metric doesn't go with the unit.
std::optional<double> factor_of(MetricUnit unit, std::string_view text) {
    if (unit != MetricUnit::time)
        return text.empty() ? std::optional<double>(1) : std::nullopt;
    const auto* const found = std::ranges::find(times, text, &LimitUnit::text);
    return found == std::end(times) ? std::nullopt : std::optional<double>(found->factor);
}

const char* expected_limit(MetricUnit unit) {
    switch (unit) {
        case MetricUnit::percent:
            return "the limit is a number of points, as in '+5'";
        case MetricUnit::time:
            return "the limit is a time or a share, as in '+2us' or '+3%'";
        default:
            return "the limit is a number or a share, as in '+5' or '+3%'";
    }
}

// Sums of doubles are off by some of the last digits.
bool exceeds(double change, double limit) {
    return change > 0 && change > limit * (1 + 1e-9);
}

bool is_failure(const GateRule& rule, double before, double after) {
    const double change = rule.is_rise ? after - before : before - after;
    return exceeds(change, rule.is_share ? std::abs(before) * rule.limit / 100 : rule.limit);
}

bool is_among(const std::vector<std::string>& names, const std::string& name) {
    return std::ranges::find(names, name) != names.end();
}

bool is_kernel_among(const std::vector<std::string>& names, const std::string& label) {
    return is_among(names, label) || is_among(names, label.substr(0, label.rfind('#')));
}

} // namespace

std::variant<GateRule, GateRuleFault> parse_gate_rule(std::string_view text) {
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos)
        return fault(text, "write METRIC:+LIMIT or METRIC:-LIMIT");
    const std::string_view name = text.substr(0, colon);
    const MetricRow* const row = find_metric(name);
    if (!row)
        return GateRuleFault{"there is no metric '" + std::string(name) + "'", std::string(name)};
    std::string_view limit = text.substr(colon + 1);
    if (limit.empty() || (limit[0] != '+' && limit[0] != '-'))
        return fault(text, "'+' or '-' must stand before the limit");
    GateRule rule{std::string(text), row->metric, limit[0] == '+', 0, false};
    limit.remove_prefix(1);
    const auto [end, error] = std::from_chars(limit.data(), limit.data() + limit.size(), rule.limit);
    const std::string_view unit(end, static_cast<std::size_t>(limit.data() + limit.size() - end));
    if (error != std::errc() || !std::isfinite(rule.limit) || std::signbit(rule.limit))
        return fault(text, expected_limit(row->unit));
    rule.is_share = unit == "%" && row->unit != MetricUnit::percent;
    if (rule.is_share)
        return rule;
    const std::optional<double> factor = factor_of(row->unit, unit);
    if (!factor)
        return fault(text, expected_limit(row->unit));
    rule.limit *= *factor;
    return rule;
}

bool SubjectFilter::takes(const SubjectComparison& subject) const {
    if (subject.scope != MetricScope::kernel && subject.scope != MetricScope::block)
        return true;
    const bool is_kernel = kernels.empty() || is_kernel_among(kernels, subject.kernel) ||
                           (!subject.old_kernel.empty() && is_kernel_among(kernels, subject.old_kernel));
    if (!is_kernel || subject.scope == MetricScope::kernel || blocks.empty())
        return is_kernel;
    const std::string& old_name = subject.old_name.empty() ? subject.name : subject.old_name;
    const std::string& old_kernel = subject.old_kernel.empty() ? subject.kernel : subject.old_kernel;
    return is_among(blocks, subject.name) || is_among(blocks, old_name) ||
           is_among(blocks, subject.kernel + "/" + subject.name) ||
           is_among(blocks, old_kernel + "/" + old_name);
}

GateResult check_rule(const GateRule& rule, const RunComparison& comparison, const SubjectFilter& filter) {
    const MetricRow& row = row_of(rule.metric);
    GateResult result;
    for (const SubjectComparison& subject : comparison.subjects) {
        if (subject.scope != row.scope || !filter.takes(subject))
            continue;
        const Value before = subject.before ? (*subject.before)[rule.metric] : Value();
        const Value after = subject.after ? (*subject.after)[rule.metric] : Value();
        if (!before && !after)
            continue;
        if (!before || !after || !comparison.can_compare(row.unit, rule.is_share)) {
            ++result.num_missing;
            continue;
        }
        ++result.num_compared;
        if (subject.may_differ(rule.metric) && is_failure(rule, *before, *after))
            result.failures.push_back({&rule, &subject, *before, *after});
    }
    return result;
}

} // namespace zan::profile
