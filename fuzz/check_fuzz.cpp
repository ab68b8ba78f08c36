// SPDX-License-Identifier: Apache-2.0
// A check of a run of which each byte comes from the input. No input ends it, and each finding has a text.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "memory_file.h"
#include "run_check.h"
#include "run_files.h"

namespace {

using namespace zan::profile;

void check_files(const std::string& package, std::string_view monitor_lines) {
    const MemoryFile capture(monitor_lines);
    const CheckResult result = check_run(package, capture.path(), {});
    for (const Finding& finding : result.log.findings()) {
        if (!finding.row || finding.count == 0 || finding.lines.size() > FindingLog::shown)
            std::abort();
        for (const std::uint64_t line : finding.lines) {
            if (line > result.num_lines)
                std::abort();
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    with_run_files({reinterpret_cast<const char*>(data), size}, check_files);
    return 0;
}
