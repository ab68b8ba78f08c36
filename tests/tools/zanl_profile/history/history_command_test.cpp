// SPDX-License-Identifier: Apache-2.0
// `zanl-profile history` as users run it.
#include <sstream>

#include "diff_result.h"
#include "first_history.h"
#include "summary_json.h"
#include "toolbox_fixture.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;
using zan::profile::make_first_history;

class HistoryCommand : public Toolbox {
  protected:
    HistoryCommand() {
        const TwoRuns runs = slower_writer();
        write("base.json", summary_to_json(runs.before));
        write("new.json", summary_to_json(runs.after));
    }
    Outcome history(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "history");
        return run(arguments);
    }
    void add_both() const {
        ASSERT_EQ(
            history({"add", "h.db", "base.json", "--date", "2026-11-20", "--label", "commit=1f3a"}).status,
            "0");
        ASSERT_EQ(history({"add", "h.db", "new.json", "--date", "2026-11-21"}).status, "0");
    }
};

TEST_F(HistoryCommand, AddsListsShowsAndRemoves) {
    add_both();
    std::istringstream lines(history({"list", "h.db"}).out);
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(line, "RUN           DATE        INPUT      LABELS");
    std::getline(lines, line);
    EXPECT_EQ(line.substr(12), "  2026-11-20  base.json  commit=1f3a");
    std::getline(lines, line);
    EXPECT_EQ(line.substr(12), "  2026-11-21  new.json");
    EXPECT_EQ(history({"show", "h.db", "commit=1f3a", "--json"}).out, read("base.json"));
    EXPECT_THAT(history({"show", "h.db", "last"}).out, HasSubstr("date   2026-11-21\ninput  new.json\n"));
    EXPECT_THAT(history({"list", "h.db", "--json", "--where", "commit=1f3a"}).out,
                HasSubstr("\"commit\": \"1f3a\""));
    EXPECT_THAT(history({"remove", "h.db", "last"}).err, StartsWith("removed "));
    EXPECT_EQ(history({"show", "h.db", "last~1"}), not_found("h.db: there is no run 'last~1'"));
}

TEST_F(HistoryCommand, SaysWhatBecameOfEachRun) {
    EXPECT_THAT(history({"add", "h.db", "base.json"}).err, HasSubstr("  base.json: added\n"));
    EXPECT_THAT(history({"add", "h.db", "base.json"}).err, HasSubstr("  base.json: was there\n"));
    EXPECT_THAT(history({"add", "h.db", "base.json", "--label", "a=b"}).err,
                HasSubstr("  base.json: was there, and got labels\n"));
    EXPECT_EQ(history({"add", "h.db", "base.json", "-q"}), silent_success);
}

// 64 runs are added at once; the names of those after them are right, too.
TEST_F(HistoryCommand, SaysWhatBecameOfEachOfManyRuns) {
    std::string names;
    std::string expected;
    for (int i = 0; i < 66; ++i) {
        const std::string name = "run" + std::to_string(i) + ".json";
        write(name, read(i == 65 ? "new.json" : "base.json"));
        names += name + "\n";
        expected += "  " + name + (i == 0 || i == 65 ? ": added\n" : ": was there\n");
    }
    write("names", names);
    std::istringstream lines(shell("$T history add h.db --from-list - <names").err);
    std::string found;
    for (std::string line; std::getline(lines, line);)
        found += line.substr(12) + "\n"; // without the run's id
    EXPECT_EQ(found, expected);
}

TEST_F(HistoryCommand, ABadFileIsSkipped) {
    write("bad.json", "{");
    const Outcome outcome = shell("ls bad.json base.json new.json | $T history add h.db --from-list -");
    EXPECT_EQ(outcome.status, "1");
    EXPECT_THAT(outcome.err, HasSubstr("zanl-profile: bad.json: "));
    EXPECT_THAT(history({"list", "h.db"}).out, HasSubstr("new.json"));
    EXPECT_THAT(history({"list", "h.db"}).out, HasSubstr("base.json"));
}

std::string utc_text(std::time_t time) {
    char text[32];
    return {text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", std::gmtime(&time))};
}

// By default it is that of the file that the run has written, in universal time; '-' is no file, even if
// there is one of that name.
TEST_F(HistoryCommand, ARunHasTheDateOfItsFile) {
    const std::string before = utc_text(std::time(nullptr));
    ASSERT_EQ(shell("touch -d 2026-11-19T07:08:09Z base.json ./-; export TZ=Asia/Tokyo; "
                    "$T history add h.db base.json -q; $T history add h.db - -q <new.json"),
              silent_success);
    const std::string after = utc_text(std::time(nullptr));
    EXPECT_THAT(history({"show", "h.db", "last~1"}).out, HasSubstr("\ndate   2026-11-19T07:08:09\n"));
    const std::string piped = history({"show", "h.db", "last"}).out;
    const std::string date = piped.substr(piped.find("\ndate   ") + 8, before.size());
    EXPECT_LE(before, date);
    EXPECT_LE(date, after);
}

PackageSections sections_of_sample(const std::string& name) {
    PackageSections sections;
    const auto folder = std::filesystem::path(ZAN_SAMPLES_FOLDER) / name / "sections";
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        sections.emplace_back(".zan." + entry.path().filename().string(), read_file(entry.path()));
    return sections;
}

// A report, its summary and its package with its capture are one run. A package with several compute units
// makes known that sums over a memory are lower bounds, and shares of them are missing.
TEST_F(HistoryCommand, ARunIsTheSameHoweverItIsRead) {
    const auto add = [&](const std::string& name, const PackageSections& sections, bool has_bounds) {
        make("d.zanx", sections);
        write("d.mon", read_file(std::filesystem::path(ZAN_SAMPLES_FOLDER) / name / "profile.mon"));
        ASSERT_EQ(run({"run", "d.zanx", "d.mon", "d.json", "-q"}).status, "0");
        write("s.json", run({"summary", "d.zanx", "d.mon", "--json"}).out);
        EXPECT_EQ(read("s.json").find("\"lower-bound\"") != std::string::npos, has_bounds);
        EXPECT_EQ(run({"summary", "d.json", "--json"}).out.find("\"lower-bound\""), std::string::npos);
        std::filesystem::remove(dir.path("h.db"));
        EXPECT_THAT(history({"add", "h.db", "d.json"}).err, HasSubstr(": added\n")) << name;
        EXPECT_THAT(history({"add", "h.db", "d.zanx", "d.mon"}).err, HasSubstr(": was there\n")) << name;
        EXPECT_THAT(history({"add", "h.db", "s.json"}).err, HasSubstr(": was there\n")) << name;
    };
    for (const std::string name : {"vector_add", "autorun", "inlined_calls"})
        add(name, sections_of_sample(name), false);
    PackageSections sections = sections_of_sample("image_pipeline");
    for (auto& [section, bytes] : sections) {
        const std::string one = "num_compute_units=\"1\"";
        for (std::size_t at = bytes.find(one); at != std::string::npos; at = bytes.find(one, at))
            bytes.replace(at, one.size(), "num_compute_units=\"2\"");
    }
    add("image_pipeline", sections, true);
}

// An empty line is skipped; a package has its capture after a tab. The date is that of the capture.
TEST_F(HistoryCommand, LinesOfAListAreInputs) {
    make("d.zanx", sections_of_sample("vector_add"));
    write("d.mon", read_file(std::filesystem::path(ZAN_SAMPLES_FOLDER) / "vector_add/profile.mon"));
    const Outcome outcome = shell(
        "touch -d 2026-11-18Z d.zanx; touch -d 2026-11-19T07:08:09Z d.mon; "
        "printf 'base.json\\n\\nd.zanx\\td.mon\\n' | $T history add h.db --from-list -");
    EXPECT_THAT(outcome.err, testing::MatchesRegex("[0-9a-f]{12}  base.json: added\n"
                                                   "[0-9a-f]{12}  d.zanx: added\n"));
    EXPECT_EQ(outcome.status, "0");
    EXPECT_THAT(history({"list", "h.db"}).out, HasSubstr("  2026-11-19T07:08:09  d.zanx"));
}

// To SQLite ":memory:" is no file.
TEST_F(HistoryCommand, AHistoryMayHaveAnyName) {
    ASSERT_EQ(history({"add", ":memory:", "base.json", "-q"}), silent_success);
    EXPECT_TRUE(exists(":memory:"));
    EXPECT_THAT(history({"list", ":memory:"}).out, HasSubstr("base.json"));
    EXPECT_EQ(history({"list", ":memory:", "--where", "commit=none"}), silent_success);
}

TEST_F(HistoryCommand, DiffIsThatOfTheFiles) {
    add_both();
    const Outcome outcome =
        history({"diff", "h.db", "commit=1f3a", "last", "--fail-on", "stall:+5", "--format", "markdown"});
    EXPECT_EQ(outcome.status, "1");
    EXPECT_EQ(outcome.err, "zanl-profile: the rule 'stall:+5' fails for 'writer/store': 28.0%, now 35.1%\n");
    EXPECT_THAT(outcome.out, StartsWith("## Profile"));
    const std::string of_files = run({"diff", "base.json", "new.json"}).out;
    const std::string of_runs = history({"diff", "h.db", "last~1", "last"}).out;
    EXPECT_EQ(of_runs.substr(of_runs.find("\n\n")), of_files.substr(of_files.find("\n\n")));
    EXPECT_EQ(history({"diff", "h.db", "last", "last~2"}), not_found("h.db: there is no run 'last~2'"));
}

TEST_F(HistoryCommand, WrongUseIsTrouble) {
    EXPECT_EQ(history({"add", "h.db"}), trouble("name the runs to be added, or --from-list -"));
    EXPECT_EQ(history({"add", "h.db", "base.json", "--date", "today"}),
              trouble("--date: a date is YYYY-MM-DD, or YYYY-MM-DDTHH:MM:SS"));
    EXPECT_EQ(history({"add", "h.db", "base.json", "--label", "x"}),
              trouble("--label takes NAME=VALUE, not 'x'"));
    EXPECT_EQ(history({"add", "h.db", "base.json", "d.zanx"}),
              trouble("d.zanx: a package needs its capture after it"));
    EXPECT_EQ(history({"add", "h.db", "--from-list", "names"}),
              trouble("--from-list takes '-', standard input, not 'names'"));
    EXPECT_EQ(history({"list", "base.json"}), trouble("base.json: it is no history"));
    EXPECT_FALSE(exists("h.db"));
}

TEST_F(HistoryCommand, AFullDiskChangesNothing) {
    add_both();
    const Tree before = tree();
    const std::string name(60'000, 'n');
    TwoRuns runs = slower_writer();
    runs.after.kernels[0].name = name;
    write("big.json", summary_to_json(runs.after));
    const Outcome outcome = shell("ulimit -f 40; $T history add h.db big.json"); // 40 KiB
    EXPECT_EQ(outcome.status, "2");
    EXPECT_THAT(outcome.err, HasSubstr("zanl-profile: h.db: "));
    EXPECT_EQ(tree().at("h.db"), before.at("h.db"));
    EXPECT_FALSE(exists("h.db-journal"));
}

TEST_F(HistoryCommand, AnOlderVersionIsBroughtUpToDateAfterACopy) {
    make_first_history(dir.path("h.db"), {slower_writer().before});
    const std::string bytes = read("h.db");
    std::filesystem::permissions(dir.path("h.db"), std::filesystem::perms(0600));
    EXPECT_EQ(history({"show", "h.db", "last", "--json"}).status, "0");
    EXPECT_FALSE(exists("h.db.bak"));
    EXPECT_THAT(history({"add", "h.db", "new.json"}).err,
                StartsWith("brought h.db up to date; a copy is h.db.bak\n"));
    EXPECT_EQ(read("h.db.bak"), bytes);
    EXPECT_EQ(std::filesystem::status(dir.path("h.db.bak")).permissions(), std::filesystem::perms(0600));
    EXPECT_NE(read("h.db"), bytes);
    EXPECT_THAT(history({"diff", "h.db", "last~1", "last"}).out, HasSubstr("kernel_time"));
}

TEST_F(HistoryCommand, AFileWhereTheCopyBelongsIsKept) {
    zan::profile::ProfileSummary long_run = slower_writer().before;
    long_run.zanx_version.assign(600'000, 'v'); // so that the copy is compared in several pieces
    make_first_history(dir.path("h.db"), {long_run});
    const std::string bytes = read("h.db");
    std::string other = bytes;
    other.back() ^= 1;
    for (const std::string& taken : {std::string("mine"), bytes + "x", other}) {
        write("h.db.bak", taken);
        EXPECT_EQ(
            history({"remove", "h.db", "last"}),
            trouble("'h.db' is of an older version, and 'h.db.bak', where a copy of it is kept, is taken; "
                    "move that file away"));
        EXPECT_EQ(read("h.db"), bytes);
        EXPECT_EQ(read("h.db.bak"), taken);
    }
    write("h.db.bak", bytes); // of a change that was interrupted
    EXPECT_EQ(history({"remove", "h.db", "last"}).status, "0");
    EXPECT_EQ(read("h.db.bak"), bytes);
}

TEST_F(HistoryCommand, HostileNamesAreShownByTheirNumbers) {
    ASSERT_EQ(history({"add", "h.db", "base.json", "--label", "a=\x1b[31m"}).status, "0");
    EXPECT_THAT(history({"list", "h.db"}).out, HasSubstr("a=⟨U+001B⟩[31m"));
    EXPECT_THAT(history({"show", "h.db", "last"}).out, HasSubstr("a=⟨U+001B⟩[31m"));
    EXPECT_EQ(history({"show", "h.db", "'; DROP TABLE run; --"}).status, "1");
    EXPECT_EQ(history({"list", "h.db"}).status, "0");
}

} // namespace
