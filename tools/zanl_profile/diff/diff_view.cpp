// SPDX-License-Identifier: Apache-2.0
#include "diff_view.h"

#include <algorithm>
#include <cmath>

#include "metric_text.h"
#include "source_place.h"
#include "value_text.h"

namespace zan::tool {

namespace {

using namespace profile;

const char* word_of(MetricScope scope) {
    switch (scope) {
        case MetricScope::block:
            return "block";
        case MetricScope::kernel:
            return "kernel";
        case MetricScope::memory:
            return "memory";
        case MetricScope::run:
            break;
    }
    return "run";
}

std::string plural_of(MetricScope scope, std::size_t count) {
    std::string word = word_of(scope);
    if (count == 1)
        return word;
    return scope == MetricScope::memory ? "memories" : word + "s";
}

class ViewMaker {
  public:
    explicit ViewMaker(const DiffResult& result)
        : m_result(result), m_time_unit(result.comparison.after->nanoseconds.has_value()) {}

    DiffView make() {
        m_view.base = comparison().before->input;
        m_view.new_run = comparison().after->input;
        add_notes();
        for (const SubjectComparison& subject : comparison().subjects) {
            if (m_result.filter.takes(subject))
                add_subject(subject);
        }
        if (m_result.filter.kernels.empty() && m_result.filter.blocks.empty()) {
            for (const TransferComparison& transfer : comparison().transfers)
                add_transfer(transfer);
        }
        for (std::size_t i = 0; i < m_result.rules.size(); ++i)
            add_rule(m_result.rules[i], m_result.results[i]);
        return std::move(m_view);
    }

  private:
    const RunComparison& comparison() const { return m_result.comparison; }

    void add_notes() {
        const ProfileSummary& before = *comparison().before;
        const ProfileSummary& after = *comparison().after;
        if (before.board != after.board)
            m_view.notes.push_back("the boards differ: " + before.board + ", now " + after.board);
        if (before.clock_text != after.clock_text)
            m_view.notes.push_back("the clocks differ: " + before.clock_text + " MHz, now " +
                                   after.clock_text + " MHz");
        if (!comparison().has_same_time_unit)
            m_view.notes.emplace_back("times aren't compared: the unit of time is known of one run alone");
        for (const Note& note : before.notes)
            m_view.notes.push_back("base: " + note.text);
        for (const Note& note : after.notes)
            m_view.notes.push_back("new: " + note.text);
    }

    void add_subject(const SubjectComparison& subject) {
        if (!subject.is_in_both()) {
            add_to_one_run(subject.after != nullptr,
                           word_of(subject.scope) + std::string(" ") + label_of(subject),
                           subject.after ? subject.new_place : subject.old_place);
            return;
        }
        if (subject.has_moved())
            m_view.moved.push_back(label_of(subject) + ": " + source_place_text(subject.old_place) +
                                   ", now " + source_place_text(subject.new_place));
        for (const MetricChange& change : subject.changes)
            add_change(label_of(subject), row_of(change.metric), change);
    }

    void add_to_one_run(bool is_new, const std::string& what, const SourcePlace& place) {
        auto& list = is_new ? m_view.appeared : m_view.disappeared;
        list.push_back(place.file.empty() ? what : what + " (" + source_place_text(place) + ")");
    }

    void add_change(const std::string& subject, const MetricRow& row, const MetricChange& change) {
        ChangeRow texts = texts_of(subject, std::string(row.name), row.unit, change.before, change.after);
        rows_of(change.verdict).push_back(std::move(texts));
    }

    ChangeRow texts_of(const std::string& subject, const std::string& metric, MetricUnit unit,
                       const Value& before, const Value& after) const {
        return {subject, metric, metric_text(unit, before, m_time_unit),
                metric_text(unit, after, m_time_unit), delta_text(unit, before, after, m_time_unit)};
    }

    std::vector<ChangeRow>& rows_of(Verdict verdict) {
        if (verdict == Verdict::neither)
            return m_view.other;
        return verdict == Verdict::worse ? m_view.worse : m_view.better;
    }

    void add_transfer(const TransferComparison& transfer) {
        const std::string subject = transfer.type + ", queue " + std::to_string(transfer.queue);
        if (!transfer.before || !transfer.after) {
            add_to_one_run(transfer.after != nullptr, "transfers " + subject, {});
            return;
        }
        const auto before = static_cast<double>(transfer.before->num);
        const auto after = static_cast<double>(transfer.after->num);
        if (before != after)
            m_view.other.push_back({subject, "count", count_text(before), count_text(after),
                                    (after > before ? "+" : "") + count_text(after - before)});
        const double old_time = transfer.before->total;
        const double new_time = transfer.after->total;
        if (comparison().has_same_time_unit && is_listed_change(MetricUnit::time, old_time, new_time))
            rows_of(new_time > old_time ? Verdict::worse : Verdict::better)
                .push_back(texts_of(subject, "total time", MetricUnit::time, old_time, new_time));
    }

    void add_rule(const GateRule& rule, const GateResult& result) {
        const MetricRow& row = row_of(rule.metric);
        const auto counted = [](std::size_t count) { return count_text(static_cast<double>(count)); };
        for (const GateFailure& failure : result.failures)
            m_view.failures.push_back(
                texts_of(label_of(*failure.subject), rule.text, row.unit, failure.before, failure.after));
        std::string text = rule.text;
        if (result.failures.empty())
            text += " holds for " + counted(result.num_compared);
        else
            text += " fails for " + counted(result.failures.size()) + " of " + counted(result.num_compared);
        text += " " + plural_of(row.scope, result.num_compared);
        if (result.num_missing != 0)
            text += "; " + counted(result.num_missing) + " can't be compared";
        m_view.rule_results.push_back(std::move(text));
    }

    const DiffResult& m_result;
    bool m_time_unit;
    DiffView m_view;
};

} // namespace

bool DiffResult::has_failures() const {
    return std::ranges::any_of(results, [](const GateResult& result) { return !result.failures.empty(); });
}

bool DiffView::has_changes() const {
    return !(worse.empty() && better.empty() && other.empty() && appeared.empty() && disappeared.empty() &&
             moved.empty());
}

DiffView make_view(const DiffResult& result) {
    return ViewMaker(result).make();
}

} // namespace zan::tool
