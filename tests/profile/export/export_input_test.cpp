// SPDX-License-Identifier: Apache-2.0
#include "export_input.h"

#include <gtest/gtest.h>

#include "export_records.h"
#include "made_export.h"
#include "summary_json.h"

namespace {

using namespace zan::profile;

TEST(ExportInput, EndsWithTheWholeRun) {
    RecordedExport writer;
    export_text(odd_report, writer);
    EXPECT_EQ(writer.lines.front(), "sample 1 0 cycles: 0@110=10 1@130=20");
    EXPECT_EQ(writer.lines.back(), "end");
}

TEST(ExportInput, ASavedSummaryHasNoSamples) {
    const TempDir dir;
    write_file(dir.path("s.json"), summary_to_json({}));
    RecordedExport writer;
    const auto fault = export_input({dir.path("s.json"), ""}, {}, writer);
    ASSERT_TRUE(fault);
    EXPECT_EQ(fault->text, dir.path("s.json") + ": a saved summary has no samples; name the report");
    EXPECT_TRUE(writer.lines.empty());
}

TEST(ExportInput, ACutReportHasNoEnd) {
    RecordedExport writer;
    EXPECT_THROW(export_text(std::string(odd_report).substr(0, 700), writer), std::runtime_error);
    EXPECT_TRUE(writer.lines.empty() || writer.lines.back() != "end");
}

} // namespace
