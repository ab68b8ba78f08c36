// SPDX-License-Identifier: Apache-2.0
// Any text as a saved summary, or two with a zero byte between. What was read is written so that it is read
// again as the same, has an id, and can be shown and compared with itself and with the other.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

#include "comparison.h"
#include "gate_rule.h"
#include "plain_summary.h"
#include "run_id.h"
#include "summary_json.h"
#include "summary_tables.h"

namespace {

using namespace zan::profile;

std::optional<ProfileSummary> read_summary(std::string_view text) {
    auto read = summary_from_json(std::string(text));
    if (auto* const summary = std::get_if<ProfileSummary>(&read))
        return std::move(*summary);
    const auto& fault = std::get<SummaryFault>(read);
    if (fault.offset > text.size() || fault.text.empty())
        std::abort();
    return std::nullopt;
}

void check_copy(const ProfileSummary& summary) {
    const std::string written = summary_to_json(summary);
    const auto same = read_summary(written);
    if (!same || *same != summary || summary_to_json(*same) != written ||
        run_id_of(*same) != run_id_of(summary))
        std::abort();
    for (const SubjectComparison& subject : compare(summary, *same).subjects) {
        if (!subject.changes.empty())
            std::abort();
    }
}

// No control character but the end of a line reaches a terminal.
void check_text(std::string_view text) {
    for (const char c : text) {
        if (static_cast<unsigned char>(c) < 0x20 && c != '\n')
            std::abort();
    }
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
    check_text(zan::tool::summary_text(*first, {}));
    zan::tool::plain_summary_text(*first, {});
    if (const auto second = read_summary(input.substr(std::min(end + 1, size))))
        compare_both(*first, *second);
    return 0;
}
