// SPDX-License-Identifier: Apache-2.0
#include "rules_reader.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <utility>

#include <rapidjson/document.h>
#include <rapidjson/error/en.h>

#include "contract.h"

namespace zan::profile {

// cmake/embed_text.cmake makes its source from profile/rules.json.
extern const std::string_view embedded_rules;

namespace {

using JsonNode = rapidjson::Value;

// Ends the reading of a table; read_rules() returns its text.
struct RulesFault : std::runtime_error {
    using std::runtime_error::runtime_error;
};

template <class Meaning>
struct NamedMeaning {
    std::string_view name;
    Meaning meaning;
};

constexpr NamedMeaning<Comparison> comparison_names[] = {{">=", Comparison::at_least},
                                                         {">", Comparison::above},
                                                         {"<", Comparison::below},
                                                         {"=", Comparison::equal},
                                                         {"unknown", Comparison::unknown}};
constexpr NamedMeaning<NumberFormat> format_names[] = {
    {"percent", NumberFormat::percent},       {"time", NumberFormat::time},
    {"short_time", NumberFormat::short_time}, {"number", NumberFormat::number},
    {"decimal", NumberFormat::decimal},       {"count", NumberFormat::count}};

// The meaning of a name; a fault that says what the name was meant to be if there is none.
template <class Table>
auto meaning_of(const Table& table, std::string_view name, const char* what) {
    const auto* found = std::ranges::find_if(table, [&](const auto& row) { return row.name == name; });
    if (found == std::end(table))
        throw RulesFault("'" + std::string(name) + "' is no " + what);
    return found->meaning;
}

std::string_view text_of(const JsonNode& node) {
    if (!node.IsString())
        throw RulesFault("a text is missing");
    return {node.GetString(), node.GetStringLength()};
}

const JsonNode& child_of(const JsonNode& node, const char* key) {
    if (!node.IsObject() || !node.HasMember(key))
        throw RulesFault("the key '" + std::string(key) + "' is missing");
    return node[key];
}

std::string text_at(const JsonNode& node, const char* key) {
    return std::string(text_of(child_of(node, key)));
}

std::string text_or(const JsonNode& node, const char* key, std::string fallback) {
    return node.HasMember(key) ? text_at(node, key) : fallback;
}

auto list_of(const JsonNode& node) {
    if (!node.IsArray())
        throw RulesFault("a list is missing");
    return node.GetArray();
}

auto members_of(const JsonNode& node) {
    if (!node.IsObject())
        throw RulesFault("an object is missing");
    return node.GetObject();
}

std::size_t number_named(std::string_view name) {
    const auto place = find_number(name);
    if (!place)
        throw RulesFault("'" + std::string(name) + "' is no metric or fact");
    return *place;
}

} // namespace

class RulesReader {
  public:
    Rules read(const JsonNode& root) {
        if (text_at(root, "schema") != "zanl-profile/rules")
            throw RulesFault("the schema is another one");
        for (const auto& entry : members_of(child_of(root, "thresholds")))
            m_rules.thresholds.emplace(text_of(entry.name), number_of(entry.value));
        for (const auto& entry : members_of(child_of(root, "formats")))
            m_formats.emplace_back(number_named(text_of(entry.name)),
                                   meaning_of(format_names, text_of(entry.value), "format"));
        for (const JsonNode& entry : list_of(child_of(root, "words")))
            m_rules.words.push_back({text_at(entry, "name"), conditions_of(child_of(entry, "when")),
                                     text_at(entry, "then"), text_at(entry, "else")});
        m_rules.blocks = rules_of(child_of(root, "rules"));
        for (const auto& entry : members_of(child_of(root, "answers")))
            m_rules.answers.emplace(text_of(entry.name), rules_of(entry.value));
        for (const char* question : {"kernel", "block", "source", "memory"}) {
            if (!m_rules.answers.contains(question))
                throw RulesFault("the answers to '" + std::string(question) + "' are missing");
        }
        return std::move(m_rules);
    }

  private:
    static double number_of(const JsonNode& node) {
        if (!node.IsNumber())
            throw RulesFault("a number is missing");
        return node.GetDouble();
    }

    // A number, or the name of a threshold.
    double limit_of(const JsonNode& node) const {
        if (node.IsNumber())
            return node.GetDouble();
        const auto found = m_rules.thresholds.find(text_of(node));
        if (found == m_rules.thresholds.end())
            throw RulesFault("'" + std::string(text_of(node)) + "' is no threshold");
        return found->second;
    }

    std::vector<Condition> conditions_of(const JsonNode& node) const {
        std::vector<Condition> conditions;
        for (const JsonNode& entry : list_of(node)) {
            const auto parts = list_of(entry);
            if (parts.Size() < 2)
                throw RulesFault("a condition is too short");
            const auto comparison = meaning_of(comparison_names, text_of(parts[1]), "comparison");
            const bool has_limit = comparison != Comparison::unknown;
            if (parts.Size() != (has_limit ? 3u : 2u))
                throw RulesFault("a condition has a wrong number of parts");
            conditions.push_back(
                {number_named(text_of(parts[0])), comparison, has_limit ? limit_of(parts[2]) : 0});
        }
        return conditions;
    }

    RuleList rules_of(const JsonNode& node) const {
        RuleList rules;
        for (const JsonNode& entry : list_of(node)) {
            Rule rule;
            rule.name = text_at(entry, "name");
            rule.kind = text_or(entry, "kind", "all");
            rule.tone = text_or(entry, "tone", "none");
            if (entry.HasMember("rules")) {
                for (const JsonNode& name : list_of(entry["rules"]))
                    rule.culprit_rules.emplace_back(text_of(name));
            }
            rule.conditions = conditions_of(child_of(entry, "when"));
            rule.sentence = sentence_of(text_at(entry, "text"));
            rules.push_back(std::move(rule));
        }
        return rules;
    }

    // What stands between braces: words, a text of the facts, or a number.
    decltype(SentencePart::content) value_named(std::string_view name) const {
        const auto words = std::ranges::find(m_rules.words, name, &Words::name);
        if (words != m_rules.words.end())
            return WordsPlace{static_cast<std::size_t>(words - m_rules.words.begin())};
        if (const auto text = find_text(name))
            return *text;
        const std::size_t number = number_named(name);
        const auto format =
            std::ranges::find(m_formats, number, &std::pair<std::size_t, NumberFormat>::first);
        if (format == m_formats.end())
            throw RulesFault("'" + std::string(name) + "' has no format");
        return FormattedNumber{number, format->second};
    }

    // Made in its place: g++ 12 warns of a part that is moved, as if a variant had members not yet set.
    static void add_part(std::vector<SentencePart>& parts, decltype(SentencePart::content) content,
                         std::optional<int> bracket) {
        SentencePart& part = parts.emplace_back();
        part.content = std::move(content);
        part.bracket = bracket;
    }

    std::vector<SentencePart> sentence_of(std::string_view text) const {
        std::vector<SentencePart> parts;
        std::optional<int> bracket;
        int num_brackets = 0;
        while (!text.empty()) {
            const char first = text.front();
            if (first == '[' || first == ']') {
                if ((first == '[') == bracket.has_value())
                    throw RulesFault("brackets don't match");
                bracket = first == '[' ? std::optional(num_brackets++) : std::nullopt;
                text.remove_prefix(1);
                continue;
            }
            const bool is_value = first == '{';
            const std::size_t end = text.find_first_of(is_value ? "}" : "{[]");
            if (is_value && end == std::string_view::npos)
                throw RulesFault("a brace isn't closed");
            const std::string_view content = text.substr(0, end);
            if (is_value)
                add_part(parts, value_named(content.substr(1)), bracket);
            else
                add_part(parts, std::string(content), bracket);
            text.remove_prefix(std::min(text.size(), content.size() + (is_value ? 1 : 0)));
        }
        if (bracket)
            throw RulesFault("brackets don't match");
        return parts;
    }

    Rules m_rules;
    std::vector<std::pair<std::size_t, NumberFormat>> m_formats;
};

std::variant<Rules, std::string> read_rules(std::string_view json) {
    rapidjson::Document document;
    document.Parse(json.data(), json.size());
    if (document.HasParseError())
        return "byte " + std::to_string(document.GetErrorOffset()) + ": " +
               rapidjson::GetParseError_En(document.GetParseError());
    try {
        return RulesReader().read(document);
    } catch (const RulesFault& fault) {
        return std::string(fault.what());
    }
}

const Rules& built_in_rules() {
    static const Rules rules = [] {
        auto read = read_rules(embedded_rules);
        ZAN_CONTRACT(std::holds_alternative<Rules>(read), "the built-in rules can be read");
        return std::get<Rules>(std::move(read));
    }();
    return rules;
}

std::string_view built_in_rules_text() {
    return embedded_rules;
}

} // namespace zan::profile
