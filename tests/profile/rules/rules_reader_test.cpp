// SPDX-License-Identifier: Apache-2.0
#include "rules_reader.h"

#include <fstream>
#include <iterator>
#include <set>
#include <string>

#include "gmock/gmock.h"
#include "gtest/gtest.h"

using namespace zan::profile;
using testing::HasSubstr;

namespace {

// A table with one rule of this text and these conditions.
std::string table(const std::string& text, const std::string& when = "[]") {
    return R"({"schema": "zanl-profile/rules", "schema_version": 1, "thresholds": {"worth": 10},
               "formats": {"stall": "percent"},
               "words": [{"name": "much", "when": [["stall", ">", 50]], "then": "much", "else": "little"}],
               "rules": [{"name": "r", "kind": "all", "when": )" +
           when + R"(, "tone": "none", "text": ")" + text +
           R"("}], "answers": {"kernel": [], "block": [], "source": [], "memory": []}})";
}

std::string fault(const std::string& json) {
    const auto read = read_rules(json);
    return std::holds_alternative<std::string>(read) ? std::get<std::string>(read) : "no fault";
}

std::string said(const std::string& json, Value stall) {
    const auto read = read_rules(json);
    if (std::holds_alternative<std::string>(read))
        return std::get<std::string>(read);
    const auto& rules = std::get<Rules>(read);
    Facts facts;
    facts[Metric::stall] = stall;
    return judge(rules, rules.blocks, facts, "loop").text;
}

} // namespace

TEST(RulesReader, ValuesWordsAndBracketsAreFilledIn) {
    EXPECT_EQ(said(table("Stalls {stall}"), 61), "Stalls 61%");
    EXPECT_EQ(said(table("Stalls {much}"), 61), "Stalls much");
    EXPECT_EQ(said(table("Stalls {much}"), 50), "Stalls little");
    EXPECT_EQ(said(table("a[ b {stall}][ c] d"), 9.4), "a b 9.4% c d");
    EXPECT_EQ(said(table("a[ b {stall}][ c] d"), {}), "a c d");
    EXPECT_EQ(said(table("[x {stall}]"), {}), "");
}

TEST(RulesReader, ARuleWithoutAValueOfItsSentenceDoesNotHold) {
    EXPECT_EQ(said(table("Stalls {stall}"), {}), "");
    EXPECT_EQ(said(table("Waits for {memory}"), 61), "");
}

TEST(RulesReader, LimitsAreNumbersOrThresholds) {
    EXPECT_EQ(said(table("x", R"([["stall", ">=", "worth"]])"), 10), "x");
    EXPECT_EQ(said(table("x", R"([["stall", ">=", "worth"]])"), 9.9), "");
    EXPECT_EQ(said(table("x", R"([["stall", "=", 7.5]])"), 7.5), "x");
    EXPECT_EQ(said(table("x", R"([["stall", "unknown"]])"), {}), "x");
}

TEST(RulesReader, FaultsOfATableAreNamed) {
    EXPECT_THAT(fault("{\"schema\": "), HasSubstr("byte 11: "));
    EXPECT_EQ(fault(""), "byte 0: The document is empty.");
    EXPECT_EQ(fault("[]"), "the key 'schema' is missing");
    EXPECT_EQ(fault(R"({"schema": "other"})"), "the schema is another one");
    EXPECT_EQ(fault(R"({"schema": "zanl-profile/rules"})"), "the key 'thresholds' is missing");
    EXPECT_EQ(fault(R"({"schema": "zanl-profile/rules", "thresholds": {"a": "b"}})"), "a number is missing");
    EXPECT_EQ(fault(table("x", R"([["stal", ">", 1]])")), "'stal' is no metric or fact");
    EXPECT_EQ(fault(table("x", R"([["stall", "!=", 1]])")), "'!=' is no comparison");
    EXPECT_EQ(fault(table("x", R"([["stall", ">", "worthy"]])")), "'worthy' is no threshold");
    EXPECT_EQ(fault(table("x", R"([["stall", ">"]])")), "a condition has a wrong number of parts");
    EXPECT_EQ(fault(table("x", R"([["stall", "unknown", 1]])")), "a condition has a wrong number of parts");
    EXPECT_EQ(fault(table("x", R"([["stall"]])")), "a condition is too short");
    EXPECT_EQ(fault(table("x", "3")), "a list is missing");
    EXPECT_EQ(fault(table("{valid}")), "'valid' has no format");
    EXPECT_EQ(fault(table("{nothing}")), "'nothing' is no metric or fact");
    EXPECT_EQ(fault(table("{stall")), "a brace isn't closed");
    for (const char* text : {"[", "]", "[[a]]", "[a]]"})
        EXPECT_EQ(fault(table(text)), "brackets don't match") << text;
    std::string without_answers = table("x");
    without_answers.replace(without_answers.find("\"source\""), 8, "\"other\"");
    EXPECT_EQ(fault(without_answers), "the answers to 'source' are missing");
}

TEST(RulesReader, TheBuiltInTableIsTheFileOfTheSources) {
    std::ifstream file(ZAN_RULES_FILE);
    const std::string text(std::istreambuf_iterator<char>(file), {});
    EXPECT_EQ(built_in_rules_text(), text);
    EXPECT_GT(text.size(), 5000u);
    EXPECT_EQ(built_in_rules().threshold("memory_full"), 70);
}

TEST(RulesReader, NamesOfRulesAndTonesAreThoseThatAreKnown) {
    const std::set<std::string> tones = {"cause", "symptom", "note", "none", "good", "added"};
    std::set<std::string> names;
    for (const Rule& rule : built_in_rules().blocks) {
        EXPECT_TRUE(names.insert(rule.name).second) << rule.name << " twice";
        EXPECT_TRUE(tones.contains(rule.tone)) << rule.name;
    }
    for (const auto& [question, rules] : built_in_rules().answers) {
        for (const Rule& rule : rules) {
            for (const std::string& name : rule.culprit_rules)
                EXPECT_TRUE(names.contains(name)) << question << ": " << name;
        }
    }
}

TEST(RulesReader, WhatStandsForSomethingElseIsNamed) {
    const std::string good = table("x");
    const auto fault_with = [&](const std::string& from, const std::string& to) {
        std::string changed = good;
        const std::size_t at = changed.find(from);
        EXPECT_NE(at, std::string::npos) << from;
        return fault(changed.replace(at, from.size(), to));
    };
    EXPECT_EQ(fault(good), "no fault");
    EXPECT_EQ(fault_with(R"("percent")", R"("percents")"), "'percents' is no format");
    EXPECT_EQ(fault_with(R"("percent")", "5"), "a text is missing");
    EXPECT_EQ(fault_with(R"({"worth": 10})", "[10]"), "an object is missing");
    EXPECT_EQ(fault_with(R"({"stall": "percent"})", R"("percent")"), "an object is missing");
    EXPECT_EQ(fault_with(R"({"stall": "percent"})", R"({"stal": "percent"})"), "'stal' is no metric or fact");
    EXPECT_EQ(fault_with(R"("then": "much")", R"("then": ["much"])"), "a text is missing");
    EXPECT_EQ(fault_with(R"("then": "much", )", ""), "the key 'then' is missing");
    EXPECT_EQ(fault_with(R"("kernel": [])", R"("kernel": {})"), "a list is missing");
    EXPECT_EQ(fault_with(R"("kernel": [])", R"("kernel": ["x"])"), "the key 'name' is missing");
    EXPECT_EQ(fault(table("x", R"([["stall", 1, 2]])")), "a text is missing");
    EXPECT_EQ(fault(table("x", R"([["stall", ">", []]])")), "a text is missing");
}

// 1,234,567 ns are 1.23 ms in three digits, and 1.2 ms in two.
TEST(RulesReader, TimesAreWrittenInTheirUnitIfThatIsKnown) {
    const std::pair<const char*, const char*> rows[] = {{"time", "1.23 ms"}, {"short_time", "1.2 ms"}};
    for (const auto& [format, text] : rows) {
        std::string json = table("Lost {stall}");
        json.replace(json.find("percent"), 7, format);
        const auto read = read_rules(json);
        ASSERT_TRUE(std::holds_alternative<Rules>(read));
        const auto& rules = std::get<Rules>(read);
        Facts facts;
        facts[Metric::stall] = 1'234'567;
        facts.time_unit_known = true;
        EXPECT_EQ(judge(rules, rules.blocks, facts, "loop").text, std::string("Lost ") + text);
        facts.time_unit_known = false;
        EXPECT_EQ(judge(rules, rules.blocks, facts, "loop").text, "Lost 1,234,567");
    }
}
