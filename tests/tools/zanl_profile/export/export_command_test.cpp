// SPDX-License-Identifier: Apache-2.0
// `zanl-profile export` as users run it, on all samples.
#include <algorithm>
#include <sstream>

#include "export_schema.h"
#include "sqlite_database.h"
#include "toolbox_fixture.h"

namespace {

namespace fs = std::filesystem;
using namespace zan::profile;
using testing::HasSubstr;

std::vector<std::string> sample_names() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(ZAN_SAMPLES_FOLDER)) {
        if (fs::exists(entry.path() / "expected_report.json"))
            names.push_back(entry.path().filename().string());
    }
    std::ranges::sort(names);
    return names;
}

class ExportCommand : public Toolbox {
  protected:
    void copy_sample(const std::string& name) const {
        write("r.json", read_file(fs::path(ZAN_SAMPLES_FOLDER) / name / "expected_report.json"));
    }
    Outcome write_export(const std::string& format, const std::string& out) const {
        return run({"export", "r.json", "--to", format, "-o", out});
    }
};

class ExportedSample : public ExportCommand, public testing::WithParamInterface<std::string> {};

// The sum of a column of numbers, in the order of the rows, and how many there are. Samples have no quotes.
std::pair<double, std::int64_t> csv_sum(const std::string& table, std::size_t column) {
    std::istringstream lines(table);
    std::string line;
    std::getline(lines, line);
    std::pair<double, std::int64_t> sum;
    while (std::getline(lines, line)) {
        std::istringstream fields(line.substr(0, line.size() - 1)); // without CR
        std::string field;
        for (std::size_t i = 0; i <= column; ++i) {
            field.clear();
            std::getline(fields, field, ',');
        }
        if (field.empty())
            continue;
        sum.first += std::stod(field);
        ++sum.second;
    }
    return sum;
}

// The same numbers in the same order, so the sums are the same to the last bit.
TEST_P(ExportedSample, HasTheSameSumsInBothFormats) {
    copy_sample(GetParam());
    ASSERT_EQ(write_export("csv", "out"), silent_success);
    ASSERT_EQ(write_export("sqlite", "out.db"), silent_success);
    Database database(dir.path("out.db"), OpenMode::read);
    for (const ExportTable table : {ExportTable::sample, ExportTable::port_sample, ExportTable::invocation}) {
        const zan::profile::TableLayout& layout = layout_of(table);
        const std::string text = read("out/" + layout.name + ".csv");
        for (std::size_t column = 0; column < layout.columns.size(); ++column) {
            if (layout.columns[column].type == ColumnType::text)
                continue;
            Statement query(database, "SELECT " + layout.columns[column].name + " FROM " + layout.name +
                                          " WHERE " + layout.columns[column].name + " IS NOT NULL");
            std::pair<double, std::int64_t> sum;
            while (query.step()) {
                sum.first += query.real(0);
                ++sum.second;
            }
            EXPECT_EQ(csv_sum(text, column), sum) << layout.name << "." << layout.columns[column].name;
        }
    }
    EXPECT_GT(database.number("SELECT count(value) FROM sample"), 0);
}

// The table of `summary --plain` that begins with this heading: its rows, by the names of the columns.
std::vector<std::map<std::string, std::string>> plain_rows(const std::string& text, const std::string& head) {
    std::istringstream lines(text);
    std::vector<std::string> names;
    std::vector<std::map<std::string, std::string>> rows;
    for (std::string line; std::getline(lines, line) && (names.empty() || !line.empty());) {
        if (names.empty() && !line.starts_with(head))
            continue;
        std::istringstream fields(line);
        std::vector<std::string> texts;
        for (std::string field; std::getline(fields, field, '\t');)
            texts.push_back(field);
        if (names.empty()) {
            names = texts;
            continue;
        }
        std::map<std::string, std::string>& row = rows.emplace_back();
        for (std::size_t i = 0; i < names.size(); ++i)
            row[names[i]] = texts.at(i);
    }
    return rows;
}

struct ViewColumn {
    const char* view;
    const char* head;    // of the table of the summary
    const char* columns; // that both have
};

TEST_P(ExportedSample, ViewsHaveTheNumbersOfTheSummary) {
    copy_sample(GetParam());
    ASSERT_EQ(write_export("sqlite", "out.db"), silent_success);
    const std::string plain = run({"summary", "r.json", "--plain"}).out;
    Database database(dir.path("out.db"), OpenMode::read);
    const ViewColumn views[] = {
        {"worst_blocks", "kernel\tdevice\tblock",
         "kernel block lost_ns lost_ticks stall_percent valid_percent idle_percent bandwidth_mb_per_s "
         "efficiency_percent rule"},
        {"memory_use", "memory\t",
         "memory memory_mean_mb_per_s memory_max_mb_per_s peak_mb_per_s memory_full_percent"}};
    for (const ViewColumn& view : views) {
        const auto rows = plain_rows(plain, view.head);
        std::istringstream columns(view.columns);
        for (std::string column; columns >> column;) {
            Statement query(database, std::string("SELECT ") + column + " FROM " + view.view);
            std::size_t i = 0;
            for (; query.step(); ++i) {
                ASSERT_LT(i, rows.size());
                if (!rows[i].contains(column)) { // the unit of times is one of two
                    EXPECT_TRUE(query.is_null(0)) << column;
                    continue;
                }
                const std::string expected = rows[i].at(column);
                ASSERT_EQ(query.is_null(0), expected == "-") << column;
                if (expected == "-")
                    continue;
                const bool is_text = column == "block" || column == "rule" || column == "memory";
                if (column == "kernel") {
                    EXPECT_EQ(query.text(0), expected.substr(0, expected.find('#')));
                } else if (is_text) {
                    EXPECT_EQ(query.text(0), expected);
                } else {
                    EXPECT_EQ(query.real(0), std::stod(expected)) << column;
                }
            }
            EXPECT_EQ(i, rows.size()) << view.view;
        }
    }
    for (const auto& row : plain_rows(plain, "kernel\tdevice\tautorun")) {
        const std::string name = row.at("kernel");
        Statement query(database,
                        "SELECT kernel_time_ns, kernel_total_ns, busy_percent FROM kernel_times "
                        "WHERE kernel = ?");
        query.bind(1, std::string_view(name));
        ASSERT_TRUE(query.step()) << name;
        if (row.contains("kernel_time_ns")) {
            EXPECT_EQ(query.real(0), std::stod(row.at("kernel_time_ns")));
            EXPECT_EQ(query.real(1), std::stod(row.at("kernel_total_ns")));
        }
        EXPECT_EQ(query.real(2), std::stod(row.at("busy_percent")));
    }
}

INSTANTIATE_TEST_SUITE_P(Samples, ExportedSample, testing::ValuesIn(sample_names()),
                         [](const auto& info) { return info.param; });

TEST_F(ExportCommand, RefusesWhatHasNoSamples) {
    copy_sample("vector_add");
    ASSERT_EQ(shell("$T summary --json r.json > s.json").status, "0");
    EXPECT_EQ(run({"export", "s.json", "--to", "csv", "-o", "out"}),
              trouble("s.json: a saved summary has no samples; name the report"));
    EXPECT_EQ(run({"export", "r.json", "r.json", "--to", "csv", "-o", "out"}),
              trouble("export takes one run, not 2"));
    EXPECT_EQ(run({"export", "none.json", "--to", "sqlite", "-o", "out"}),
              trouble("none.json: No such file or directory"));
    EXPECT_EQ(run({"export", "d.zanx", "--to", "csv", "-o", "out"}),
              trouble("d.zanx: a package needs its capture after it"));
    EXPECT_FALSE(exists("out"));
}

TEST_F(ExportCommand, WrongOptionsAreNamed) {
    copy_sample("vector_add");
    EXPECT_THAT(write_export("sqlit", "out").err, HasSubstr("not 'sqlit'; did you mean 'sqlite'?"));
    EXPECT_EQ(run({"export", "r.json", "--to", "sqlite", "--raw", "-o", "out"}),
              trouble("--raw is for csv alone"));
    EXPECT_EQ(run({"export", "r.json", "--to", "csv", "--time-unit", "h", "-o", "out"}),
              trouble("--time-unit takes ns, us, ms or s, not 'h'"));
    EXPECT_FALSE(exists("out"));
}

TEST_F(ExportCommand, ReadsStandardInputAndNumbersItsRun) {
    copy_sample("vector_add");
    ASSERT_EQ(shell("$T export - --to csv --run-id 12 -o out < r.json"), silent_success);
    EXPECT_THAT(read("out/run.csv"), HasSubstr("\r\n12,1,'-,")); // guarded, as any text
    EXPECT_THAT(read("out/kernel.csv"), HasSubstr("\r\n12,1,"));
    ASSERT_EQ(shell("$T export - --to csv --raw -o raw < r.json"), silent_success);
    EXPECT_THAT(read("raw/run.csv"), HasSubstr("\r\n1,1,-,"));
}

TEST_F(ExportCommand, AFullDiskLeavesNothing) {
    copy_sample("vector_add");
    write("old.db", "as it was");
    const Outcome outcome =
        shell("ulimit -f 8; trap '' XFSZ; $T export r.json --to sqlite -o old.db"); // 8 KiB
    EXPECT_EQ(outcome.status, "2");
    EXPECT_THAT(outcome.err, HasSubstr("zanl-profile: can't write 'old.db': "));
    EXPECT_EQ(tree(), (Tree{{"old.db", "as it was"}, {"r.json", read("r.json")}}));
}

} // namespace
