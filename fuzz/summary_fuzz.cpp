// SPDX-License-Identifier: Apache-2.0
// Any text as a saved summary, or two of them with a zero byte between. What is read is written so that it is
// read again as the same, and it can be shown and compared.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "comparison.h"
#include "diagnosis.h"
#include "gate_rule.h"
#include "plain_summary.h"
#include "rules_reader.h"
#include "summary_json.h"
#include "summary_tables.h"

namespace {

using namespace zan::profile;

std::optional<ProfileSummary> read_summary(std::string_view text) {
    auto read = summary_from_json(std::string(text));
    if (auto* summary = std::get_if<ProfileSummary>(&read))
        return std::move(*summary);
    const auto& fault = std::get<SummaryFault>(read);
    if (fault.offset > text.size() || fault.text.empty())
        std::abort();
    return {};
}

void check_copy(const ProfileSummary& summary) {
    const std::string text = summary_to_json(summary);
    const auto copy = read_summary(text);
    if (!copy || summary_to_json(*copy) != text)
        std::abort();
}

void show(ProfileSummary summary) {
    const zan::tool::SummaryView view;
    const zan::tool::SummaryView first = {.top = 1, .short_sources = true, .width = 40, .colors = true};
    zan::tool::summary_text(summary, view);
    zan::tool::plain_summary_text(summary, view);
    diagnose(summary, built_in_rules());
    zan::tool::summary_text(summary, first);
}

void compare_both(const ProfileSummary& before, const ProfileSummary& after) {
    for (const MatchBy match : {MatchBy::name, MatchBy::source}) {
        const RunComparison comparison = compare(before, after, match);
        for (const SubjectComparison& subject : comparison.subjects)
            label_of(subject);
        for (const std::string_view text : {"kernel_time:+3%", "stall:+5"}) {
            const auto rule = parse_gate_rule(text);
            check_rule(std::get<GateRule>(rule), comparison, {});
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::size_t end = std::min(input.find('\0'), size);
    const auto first = read_summary(input.substr(0, end));
    if (!first)
        return 0;
    check_copy(*first);
    show(*first);
    const auto second = end < size ? read_summary(input.substr(end + 1)) : first;
    if (second)
        compare_both(*first, *second);
    return 0;
}
