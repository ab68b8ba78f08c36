// SPDX-License-Identifier: Apache-2.0
// The table of rules: conditions on facts, and the sentence that follows from them. It is data,
// profile/rules.json, which the page reads too, so both say the same of the same profile.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "facts.h"
#include "profile_summary.h"

namespace zan::profile {

enum class Comparison { at_least, above, below, equal, unknown };

// Holds if the number compares so; for a missing number only `unknown` holds.
struct Condition {
    std::size_t number; // as find_number() returns it
    Comparison comparison;
    double limit = 0;
    bool operator==(const Condition&) const = default;
};
bool holds(const std::vector<Condition>& conditions, const Facts& facts);

enum class NumberFormat { percent, time, short_time, number, decimal, count };

// A part of a sentence: a literal text, a number in its format, a text of the facts, or words that depend on
// conditions (by their place in the table of words).
struct FormattedNumber {
    std::size_t number;
    NumberFormat format;
};
struct WordsPlace {
    std::size_t place;
};
struct SentencePart {
    std::variant<std::string, FormattedNumber, FactText, WordsPlace> content;
    // Parts of one pair of brackets have one number, and are left out together if a value in them is missing.
    std::optional<int> bracket;
};

struct Words {
    std::string name;
    std::vector<Condition> conditions;
    std::string then_text;
    std::string else_text;
};

struct Rule {
    std::string name;
    std::string kind; // of the blocks that it is for: "all", "global", "global read", "channel write", ...
    std::string tone;
    std::vector<std::string> culprit_rules; // of an answer: rules that the culprit's sentence may come from
    std::vector<Condition> conditions;
    std::vector<SentencePart> sentence;
};
using RuleList = std::vector<Rule>;

// Whether a rule of that kind is for blocks of this one: "global" is for "global read".
bool is_for_kind(std::string_view rule_kind, std::string_view block_kind);

struct Rules {
    std::map<std::string, double, std::less<>> thresholds;
    std::vector<Words> words;
    RuleList blocks;
    std::map<std::string, RuleList, std::less<>> answers; // to kernel, block, source, memory

    // The number of a threshold. The name must be one of the table.
    double threshold(std::string_view name) const;
};

// The sentence of the first rule of the list whose conditions hold and whose sentence has all its values, and
// of those of the tone "added" that hold. `kind` is that of the block. `culprit_rule` is the rule that holds
// for the culprit, where a question is answered.
Sentence judge(const Rules& rules, const RuleList& list, const Facts& facts, std::string_view kind,
               std::string_view culprit_rule = {});

} // namespace zan::profile
