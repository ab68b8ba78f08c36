// SPDX-License-Identifier: Apache-2.0
// Any text as a saved summary. What was read is written so that it is read again as the same, has an id, and
// can be shown and compared with itself.
#include <cstdlib>
#include <string>

#include "comparison.h"
#include "run_id.h"
#include "summary_json.h"
#include "summary_tables.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zan::profile;
    const auto read = summary_from_json(std::string(reinterpret_cast<const char*>(data), size));
    if (const auto* const fault = std::get_if<SummaryFault>(&read)) {
        if (fault->offset > size || fault->text.empty())
            std::abort();
        return 0;
    }
    const ProfileSummary& summary = std::get<ProfileSummary>(read);
    const std::string written = summary_to_json(summary);
    const auto again = summary_from_json(written);
    const auto* const same = std::get_if<ProfileSummary>(&again);
    if (!same || *same != summary || summary_to_json(*same) != written ||
        run_id_of(*same) != run_id_of(summary))
        std::abort();
    // No control character but the end of a line reaches a terminal.
    for (const char c : zan::tool::summary_text(summary, {})) {
        if (static_cast<unsigned char>(c) < 0x20 && c != '\n')
            std::abort();
    }
    for (const SubjectComparison& subject : compare(summary, *same).subjects) {
        if (!subject.changes.empty())
            std::abort();
    }
    return 0;
}
