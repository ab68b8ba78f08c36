// SPDX-License-Identifier: Apache-2.0
#include "rules.h"

#include <algorithm>

#include "contract.h"
#include "value_text.h"

namespace zan::profile {

namespace {

bool condition_holds(const Condition& condition, const Facts& facts) {
    const Value& value = facts.number(condition.number);
    if (!value)
        return condition.comparison == Comparison::unknown;
    switch (condition.comparison) {
        case Comparison::at_least:
            return *value >= condition.limit;
        case Comparison::above:
            return *value > condition.limit;
        case Comparison::below:
            return *value < condition.limit;
        case Comparison::equal:
            return *value == condition.limit;
        case Comparison::unknown:
            break;
    }
    return false;
}

std::string written(double value, NumberFormat format, bool time_unit_known) {
    switch (format) {
        case NumberFormat::percent:
            return percent_text(value);
        case NumberFormat::time:
            return time_unit_known ? time_text(value) : count_text(value);
        case NumberFormat::short_time:
            return time_unit_known ? short_time_text(value) : count_text(value);
        case NumberFormat::number:
            return number_text(value);
        case NumberFormat::decimal:
            return trimmed_text(value, 2);
        case NumberFormat::count:
            break;
    }
    return count_text(value);
}

std::optional<std::string> unless_empty(const std::string& text) {
    return text.empty() ? std::nullopt : std::optional(text);
}

std::optional<std::string> write_part(const Rules& rules, const SentencePart& part, const Facts& facts) {
    if (const auto* literal = std::get_if<std::string>(&part.content))
        return *literal;
    if (const auto* text = std::get_if<FactText>(&part.content))
        return unless_empty(facts[*text]);
    if (const auto* words = std::get_if<WordsPlace>(&part.content)) {
        const Words& entry = rules.words[words->place];
        return holds(entry.conditions, facts) ? entry.then_text : entry.else_text;
    }
    const auto& number = std::get<FormattedNumber>(part.content);
    const Value& value = facts.number(number.number);
    if (!value)
        return std::nullopt;
    return written(*value, number.format, facts.time_unit_known);
}

std::optional<std::string> write_sentence(const Rules& rules, const std::vector<SentencePart>& sentence,
                                          const Facts& facts) {
    std::string text;
    std::string bracketed; // of the current pair of brackets
    bool is_whole = true;  // nothing is missing in it
    std::optional<int> bracket;
    const auto close_bracket = [&] {
        if (bracket && is_whole)
            text += bracketed;
        bracketed.clear();
        is_whole = true;
    };
    for (const SentencePart& part : sentence) {
        if (part.bracket != bracket)
            close_bracket();
        bracket = part.bracket;
        const auto written_part = write_part(rules, part, facts);
        if (!written_part && !bracket)
            return std::nullopt;
        is_whole = is_whole && written_part;
        if (written_part)
            (bracket ? bracketed : text) += *written_part;
    }
    close_bracket();
    return text;
}

} // namespace

bool holds(const std::vector<Condition>& conditions, const Facts& facts) {
    return std::ranges::all_of(conditions, [&](const Condition& c) { return condition_holds(c, facts); });
}

bool is_for_kind(std::string_view rule_kind, std::string_view block_kind) {
    if (rule_kind == "all" || rule_kind == block_kind)
        return true;
    return block_kind.starts_with(rule_kind) && block_kind[rule_kind.size()] == ' ';
}

double Rules::threshold(std::string_view name) const {
    const auto found = thresholds.find(name);
    ZAN_CONTRACT(found != thresholds.end(), "threshold is in the table");
    return found->second;
}

Sentence judge(const Rules& rules, const RuleList& list, const Facts& facts, std::string_view kind,
               std::string_view culprit_rule) {
    Sentence found;
    std::string added;
    for (const Rule& rule : list) {
        const bool is_added = rule.tone == "added";
        if (!is_added && !found.rule.empty())
            continue;
        if (!is_for_kind(rule.kind, kind) || !holds(rule.conditions, facts))
            continue;
        if (!rule.culprit_rules.empty() && !std::ranges::count(rule.culprit_rules, culprit_rule))
            continue;
        const auto text = write_sentence(rules, rule.sentence, facts);
        if (!text)
            continue;
        if (is_added)
            added += "; " + *text;
        else
            found = {rule.name, rule.tone, *text};
    }
    if (!found.rule.empty())
        found.text += added;
    return found;
}

} // namespace zan::profile
