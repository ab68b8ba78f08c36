// SPDX-License-Identifier: Apache-2.0
// What `history` and `export` print, held against files in golden/. The first line of a file is a line of the
// shell; after it stand standard output, standard error, and "(status N)" if N isn't 0.
//
// runs.db has six runs of a kernel that became slower, hostile.db one whose names try to do harm, and r.json
// is the report of the sample vector_add. With ZAN_WRITE_GOLDEN in the environment the files are written in
// place of being compared. Look at each change.
#include <algorithm>
#include <cstdlib>

#include "history_store.h"
#include "toolbox_fixture.h"
#include "two_runs.h"

namespace {

namespace fs = std::filesystem;
using namespace zan::profile;

std::vector<std::string> names_of_golden_commands() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(ZAN_COMMANDS_GOLDEN))
        names.push_back(entry.path().stem().string());
    std::ranges::sort(names);
    return names;
}

// 4.29 to 4.32 ms for five days, and 5.07 ms after them.
std::vector<HistoryEntry> slower_runs() {
    struct Row {
        const char* date;
        const char* build;
        double milliseconds;
        double stall;
    };
    constexpr Row rows[] = {{"2026-11-16", "Build 113", 4.29, 10.1}, {"2026-11-17", "Build 114", 4.31, 9.8},
                            {"2026-11-18", "Build 115", 4.30, 10.0}, {"2026-11-19", "Build 116", 4.32, 10.4},
                            {"2026-11-20", "Build 117", 4.30, 9.9},  {"2026-11-21", "Build 121", 5.07, 25.2}};
    std::vector<HistoryEntry> entries;
    for (const Row& row : rows) {
        ProfileSummary summary =
            run_of({kernel_of("aggregate", {{Metric::kernel_time, row.milliseconds * 1e6}},
                              {block_of("load", {{Metric::stall, row.stall}}, 12)})});
        summary.zanx_version = row.build;
        summary.board = "vela_pcie";
        summary.input = std::string(row.date) + ".json";
        entries.push_back({summary, row.date, {{"commit", std::string("c") + row.date[9]}}});
    }
    return entries;
}

// Names that end a table cell, a tag or a statement, or change what a terminal shows.
std::vector<HistoryEntry> hostile_runs() {
    const std::string name = "k\x1b[2J\u202e</script><img src=x>'; DROP TABLE run; --";
    ProfileSummary summary = run_of({kernel_of(name, {{Metric::kernel_time, 1e6}})});
    summary.zanx_version = "<b>\xff\"&amp;\t|";
    summary.input = "a\nb.json";
    std::vector<HistoryEntry> entries;
    entries.push_back({summary, "2026-11-20", {{"x\x07", "\u2028y"}}});
    summary.kernels[0].metrics[Metric::kernel_time] = 2e6;
    entries.push_back({summary, "2026-11-21", {}});
    return entries;
}

} // namespace

class GoldenCommands : public Toolbox, public testing::WithParamInterface<std::string> {};

TEST_P(GoldenCommands, ArePrinted) {
    const fs::path file = fs::path(ZAN_COMMANDS_GOLDEN) / (GetParam() + ".txt");
    const std::string golden = read_file(file);
    const std::string command = golden.substr(0, golden.find('\n'));
    ASSERT_TRUE(command.starts_with("$ "));
    HistoryStore(dir.path("runs.db"), OpenMode::create).add(slower_runs());
    HistoryStore(dir.path("hostile.db"), OpenMode::create).add(hostile_runs());
    write("r.json", read_file(fs::path(ZAN_SAMPLES_FOLDER) / "vector_add/expected_report.json"));
    const Outcome outcome = shell(
        "unset NO_COLOR LANG LC_CTYPE; export LC_ALL=C; zanl-profile() { $T \"$@\"; }; " + command.substr(2));
    std::string printed = command + "\n" + outcome.out + outcome.err;
    if (outcome.status != "0")
        printed += "(status " + outcome.status + ")\n";
    if (std::getenv("ZAN_WRITE_GOLDEN") != nullptr)
        write_file(file, printed);
    else
        EXPECT_EQ(printed, golden);
}

INSTANTIATE_TEST_SUITE_P(Files, GoldenCommands, testing::ValuesIn(names_of_golden_commands()),
                         [](const auto& info) { return info.param; });
