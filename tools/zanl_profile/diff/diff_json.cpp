// SPDX-License-Identifier: Apache-2.0
#include "diff_json.h"

#include "rounded_summary.h"
#include "summary_fields.h"

namespace zan::tool {

namespace {

using namespace profile;

class DiffPrinter {
  public:
    DiffPrinter(const DiffResult& result, TextTarget target)
        : m_result(result),
          m_json(diff_schema, diff_schema_version, std::move(target)),
          m_time_unit(result.comparison.after->nanoseconds.has_value()) {}

    void print() {
        m_json.member("base", comparison().before->input);
        m_json.member("new", comparison().after->input);
        m_json.member("match", m_result.match == MatchBy::name ? "name" : "source");
        m_json.member("times_compared", comparison().has_same_time_unit);
        print_list("changes", &DiffPrinter::print_changes);
        print_list("appeared", &DiffPrinter::print_appeared);
        print_list("disappeared", &DiffPrinter::print_disappeared);
        print_list("moved", &DiffPrinter::print_moved);
        print_transfers();
        print_rules();
        m_json.member("passed", !m_result.has_failures());
        m_json.finish();
    }

  private:
    const RunComparison& comparison() const { return m_result.comparison; }

    void print_list(const char* key, void (DiffPrinter::*print_of)(const SubjectComparison&)) {
        m_json.begin_array(key);
        for (const SubjectComparison& subject : comparison().subjects) {
            if (m_result.filter.takes(subject))
                (this->*print_of)(subject);
        }
        m_json.end_array();
    }

    void begin_subject(const SubjectComparison& subject) {
        m_json.begin_object();
        if (subject.scope == MetricScope::kernel || subject.scope == MetricScope::block)
            m_json.member("kernel", subject.kernel);
        if (subject.scope == MetricScope::block)
            m_json.member("block", subject.name);
        if (subject.scope == MetricScope::memory)
            m_json.member("memory", subject.name);
        if (!subject.old_kernel.empty())
            m_json.member("base_kernel", subject.old_kernel);
        if (!subject.old_name.empty())
            m_json.member("base_block", subject.old_name);
    }

    void print_value(const std::string& key, const Value& value) {
        if (value)
            m_json.member(key, *value);
        else
            m_json.member(key, nullptr);
    }

    void print_values(MetricUnit unit, const Value& before, const Value& after) {
        const std::string suffix = unit_suffix(unit, m_time_unit);
        print_value("base" + suffix, before);
        print_value("new" + suffix, after);
        const bool is_known = before && after;
        const bool is_percent = unit == MetricUnit::percent;
        print_value(is_percent ? "delta_points" : "delta" + suffix,
                    is_known ? Value(rounded_value(*after - *before)) : Value());
        if (!is_percent) {
            const bool has_share = is_known && *before != 0;
            print_value("delta_percent",
                        has_share ? Value(rounded_value((*after - *before) / *before * 100)) : Value());
        }
    }

    void print_changes(const SubjectComparison& subject) {
        constexpr const char* verdicts[] = {"worse", "better", "neither"};
        for (const MetricChange& change : subject.changes) {
            begin_subject(subject);
            m_json.member("metric", row_of(change.metric).name);
            m_json.member("verdict", verdicts[static_cast<std::size_t>(change.verdict)]);
            print_values(row_of(change.metric).unit, change.before, change.after);
            m_json.end_object();
        }
    }

    void print_place(const std::string& run, const SourcePlace& place) {
        m_json.member(run + "_file", place.file);
        m_json.member(run + "_line", place.line);
    }

    void print_in_one_run(const SubjectComparison& subject, const char* run, const SourcePlace& place) {
        begin_subject(subject);
        if (!place.file.empty())
            print_place(run, place);
        m_json.end_object();
    }
    void print_appeared(const SubjectComparison& subject) {
        if (!subject.before)
            print_in_one_run(subject, "new", subject.new_place);
    }
    void print_disappeared(const SubjectComparison& subject) {
        if (!subject.after)
            print_in_one_run(subject, "base", subject.old_place);
    }
    void print_moved(const SubjectComparison& subject) {
        if (!subject.has_moved())
            return;
        begin_subject(subject);
        print_place("base", subject.old_place);
        print_place("new", subject.new_place);
        m_json.end_object();
    }

    void print_transfers() {
        m_json.begin_array("transfers");
        for (const TransferComparison& transfer : comparison().transfers) {
            m_json.begin_object();
            m_json.member("type", transfer.type);
            m_json.member("queue", transfer.queue);
            m_json.member("base_count", transfer.before ? transfer.before->num : 0);
            m_json.member("new_count", transfer.after ? transfer.after->num : 0);
            print_values(MetricUnit::time, transfer.before ? Value(transfer.before->total) : Value(),
                         transfer.after ? Value(transfer.after->total) : Value());
            m_json.end_object();
        }
        m_json.end_array();
    }

    void print_rules() {
        m_json.begin_array("rules");
        for (std::size_t i = 0; i < m_result.rules.size(); ++i) {
            const GateResult& result = m_result.results[i];
            m_json.begin_object();
            m_json.member("rule", m_result.rules[i].text);
            m_json.member("compared", std::uint64_t{result.num_compared});
            m_json.member("not_comparable", std::uint64_t{result.num_missing});
            m_json.begin_array("failures");
            for (const GateFailure& failure : result.failures) {
                begin_subject(*failure.subject);
                print_values(row_of(m_result.rules[i].metric).unit, failure.before, failure.after);
                m_json.end_object();
            }
            m_json.end_array();
            m_json.end_object();
        }
        m_json.end_array();
    }

    const DiffResult& m_result;
    JsonOutput m_json;
    bool m_time_unit;
};

} // namespace

void print_diff_json(const DiffResult& result, TextTarget target) {
    DiffPrinter(result, std::move(target)).print();
}

} // namespace zan::tool
