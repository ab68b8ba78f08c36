// SPDX-License-Identifier: Apache-2.0
// `zanl-profile view` as users run it.
#include <sys/stat.h>

#include "page_reader.h"
#include "toolbox_fixture.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// A kernel with a loop of two samples, and a transfer. %NAME% is each name.
constexpr std::string_view report_with_names = R"({
    "json_type": "Corvane Profiler JSON",
    "versions": {"profiler_json_version": "%NAME%", "zanx_version": "%NAME%"},
    "kernels": {"nodes": [{
        "type": "kernel", "name": "%NAME%", "compute_unit": "0",
        "sourcefile": {"filename": "%NAME%", "line": "2"},
        "device_ids": ["0", "0"], "command_queue_id": ["1", "1"],
        "start_time": "1000", "end_time": "3000", "num_samples": "2", "shared_counter_run_type": "-1",
        "sample_timestamps": ["2000", "3000"], "total_cycles_between_samples": ["200", "200"],
        "is_autorun": "false",
        "children": [{
            "type": "extmem", "name": "%NAME%", "interface": "%NAME%", "port": "%NAME%",
            "read_only": "true", "write_only": "false",
            "global_used_bw": ["100", "200"], "avg_read_burst": ["1", "2"], "avg_write_burst": ""}, {
            "type": "moduleinst", "name": "%NAME%",
            "sourcefiles": [{"filename": "%NAME%", "line": "4", "column_num": "3"}],
            "module_inst_details": {
                "mem_type": "__global", "global_mem_name": "%NAME%", "operation_type": "read",
                "occupancy_samples": ["100", "150"], "stall_samples": [%STALLS%], "idle_samples": ["50", "0"],
                "activity_samples": ["100", "150"], "bandwidth_samples": [%RATES%],
                "coalesced_memory": "false"}}]}]},
    "memtransfers": {"nodes": [{
        "type": "memtransfer", "name": "%NAME%", "type_transfer": "%NAME%", "device_id": "0",
        "command_queue_id": "1", "start_time": "0", "end_time": "500"}]},
    "boards": {"nodes": [{
        "type": "board", "board_type": "%NAME%",
        "children": [{"type": "globalmem", "global_memory_name": "%NAME%",
                      "max_theoretical_globalmem_bw": "1000", "max_burst_count": "16"}]}]},
    "run_info": {"nodes": [{"fmax": "%CLOCK%"}]}
})";

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

struct Report {
    std::string name = "k"; // as it stands in JSON
    std::string stalls = R"("50", "50")";
    std::string rates = R"("100", "200")";
    std::string clock = "200.0";

    std::string text() const {
        std::string report(report_with_names);
        report = replaced(report, "%NAME%", name);
        report = replaced(report, "%STALLS%", stalls);
        report = replaced(report, "%RATES%", rates);
        return replaced(report, "%CLOCK%", clock);
    }
};

std::size_t num_of(const std::string& page, std::string_view text) {
    std::size_t count = 0;
    for (std::size_t at = page.find(text); at != std::string::npos; at = page.find(text, at + 1))
        ++count;
    return count;
}

class ViewCommand : public Toolbox {
  protected:
    // The page of r.json.
    std::string page_of(const Report& report) const {
        write("r.json", report.text());
        EXPECT_EQ(run({"view", "r.json", "-o", "r.html"}), silent_success);
        return read("r.html");
    }
    // The texts of a series of the block.
    static std::vector<std::string> texts_of(const std::string& page, const char* series) {
        const PageReader reader(page);
        return reader.texts(reader.head()["kernels"][0]["blocks"][0]["series"][series].GetInt());
    }
};

TEST_F(ViewCommand, WritesAPage) {
    const std::string page = page_of({});
    EXPECT_THAT(page, AllOf(StartsWith("<!doctype html>"), HasSubstr("<title>r.json</title>")));
    const PageReader reader(page);
    EXPECT_EQ(reader.head()["format"].GetInt(), 1);
    EXPECT_STREQ(reader.head()["run"]["start"].GetString(), "0");
    EXPECT_EQ(reader.head()["run"]["span"].GetInt(), 3000);
    EXPECT_EQ(texts_of(page, "stall"), (std::vector<std::string>{"5e1", "5e1"}));
    EXPECT_EQ(num_of(page, "@sha256"), 0U);
    EXPECT_EQ(page_element(page, "base"), "");
}

// No element of the page but its own: names are in no place that a browser reads as markup.
TEST_F(ViewCommand, NamesStayTexts) {
    const std::string plain = page_of({});
    for (const std::string& name :
         {std::string("</script><script>alert(1)</script>"), std::string("<img src=x onerror=alert(1)>"),
          std::string("<!--"), std::string("&lt;\\\"'"), std::string("@head@ @chunks@ @title@"),
          std::string("\\u00e2\\u0080\\u00ae\\u0000\\u001b[31m"), std::string("\\u00ff\\u00c0"),
          std::string("=1+1\\t"), std::string(5000, 'n')}) {
        const std::string page = page_of({.name = name});
        for (const char* tag : {"<script", "</script", "<img", "<!--"})
            EXPECT_EQ(num_of(page, tag), num_of(plain, tag)) << name;
        const PageReader reader(page);
        ASSERT_FALSE(reader.head().HasParseError()) << name;
        EXPECT_EQ(reader.head()["kernels"].Size(), 1U) << name;
        EXPECT_EQ(reader.head()["kernels"][0]["blocks"].Size(), 1U) << name;
    }
}

TEST_F(ViewCommand, NamesOfFilesStayTexts) {
    const std::string name = "<b>&\"\xff.json";
    write(name, Report().text());
    ASSERT_EQ(run({"view", name, "-o", "r.html"}), silent_success);
    const std::string page = read("r.html");
    EXPECT_THAT(page, HasSubstr("<title>&#60;b&#62;&#38;&#34;\xef\xbf\xbd.json</title>"));
    EXPECT_STREQ(PageReader(page).head()["run"]["report"].GetString(), "<b>&\"\xef\xbf\xbd.json");
}

TEST_F(ViewCommand, NumbersThatAreNoneStayAsTheyAre) {
    const Report report = {.stalls = R"("-1", "50")", .rates = R"("nan", "-0")"};
    const std::string page = page_of(report);
    EXPECT_EQ(texts_of(page, "stall"), (std::vector<std::string>{"-1e0", "5e1"}));
    EXPECT_EQ(texts_of(page, "bandwidth"), (std::vector<std::string>{"nan", "-0"}));
    const std::string other = page_of({.rates = R"("inf", "-inf")"});
    EXPECT_EQ(texts_of(other, "bandwidth"), (std::vector<std::string>{"inf", "-inf"}));
    // One sample counts: 50 stalls in 200 cycles; the other one is left out.
    const PageReader reader(page);
    const auto& sums = reader.head()["kernels"][0]["blocks"][0]["sums"]["stall"];
    EXPECT_EQ(sums[0].GetDouble(), 50.0);
    EXPECT_EQ(sums[1].GetDouble(), 1.0);
    EXPECT_EQ(sums[2].GetDouble(), 200.0);
    EXPECT_EQ(sums[3].GetInt(), 1);
}

TEST_F(ViewCommand, ShorterListsAreMissingAtTheirEnd) {
    EXPECT_EQ(texts_of(page_of({.stalls = R"("50")"}), "stall"), (std::vector<std::string>{"5e1", ""}));
}

TEST_F(ViewCommand, AReportOfNothingHasAPage) {
    for (const std::string& rest : {std::string("}"), std::string(R"(, "kernels": "", "memtransfers": ""})"),
                                    std::string(R"(, "kernels": {"nodes": ""}})")}) {
        write("r.json", R"({"json_type": "Corvane Profiler JSON")" + rest);
        EXPECT_EQ(run({"view", "r.json", "-o", "r.html"}), silent_success);
        const std::string page = read("r.html");
        EXPECT_EQ(PageReader(page).head()["kernels"].Size(), 0U);
    }
    const std::string page = page_of({.clock = "0.0"});
    EXPECT_STREQ(PageReader(page).head()["run"]["fmax"].GetString(), "0.0");
}

TEST_F(ViewCommand, WithoutCyclesThereIsNoSumOfThem) {
    const std::string usual = page_of({});
    EXPECT_EQ(PageReader(usual).head()["kernels"][0]["cycles_total"].GetInt(), 400);
    write("r.json", replaced(Report().text(), R"(samples": ["200", "200"])", R"(samples": ["0", "0"])"));
    ASSERT_EQ(run({"view", "r.json", "-o", "r.html"}), silent_success);
    const std::string page = read("r.html");
    EXPECT_TRUE(PageReader(page).head()["kernels"][0]["cycles_total"].IsNull());
}

TEST_F(ViewCommand, APageMayBeWrittenElsewhere) {
    const std::string page = page_of({});
    write("pages/other", "");
    EXPECT_EQ(run({"view", "r.json", "-o", "pages/r.html"}), silent_success);
    EXPECT_EQ(read("pages/r.html") == page, true);
    EXPECT_EQ(tree("pages"), (Tree{{"other", ""}, {"r.html", page}}));
}

TEST_F(ViewCommand, ALargeSourceIsWhole) {
    std::string text;
    for (int i = 0; text.size() < 2'000'000; ++i)
        text += std::to_string(i * 2654435761LL % 1'000'003) + "\n"; // hardly packed
    write("src/k", text);
    write("r.json", Report().text());
    ASSERT_EQ(run({"view", "r.json", "--source", "src", "-o", "r.html"}), silent_success);
    const std::string page = read("r.html");
    EXPECT_GT(page.size(), std::size_t{1} << 20);
    const PageReader reader(page);
    EXPECT_TRUE(inflated(reader.chunk(reader.head()["sources"]["k"].GetInt()), text.size()) == text);
}

TEST_F(ViewCommand, ARunToCompareWithIsInThePage) {
    write("r.json", Report().text());
    write("b.json", Report{.stalls = R"("1", "2")"}.text());
    ASSERT_EQ(run({"view", "r.json", "--base", "b.json", "-o", "r.html"}), silent_success);
    const std::string page = read("r.html");
    const PageReader base(page, true);
    EXPECT_STREQ(base.head()["run"]["report"].GetString(), "b.json");
    EXPECT_EQ(base.texts(base.head()["kernels"][0]["blocks"][0]["series"]["stall"].GetInt()),
              (std::vector<std::string>{"1e0", "2e0"}));
}

TEST_F(ViewCommand, SourcesAreInThePage) {
    write("src/k", "kernel </script>\n");
    write("r.json", Report().text());
    ASSERT_EQ(run({"view", "r.json", "--source", "src", "-o", "r.html"}), silent_success);
    const std::string page = read("r.html");
    const PageReader reader(page);
    EXPECT_EQ(inflated(reader.chunk(reader.head()["sources"]["k"].GetInt()), 100), "kernel </script>\n");
    std::filesystem::remove(dir.path("src/k"));
    EXPECT_EQ(run({"view", "r.json", "--source", "src", "-o", "r.html"}).err,
              "the source 'k' is left out: No such file or directory\n");
    EXPECT_EQ(run({"view", "r.json", "--source", "none", "-o", "r.html"}),
              trouble("no folder is called 'none'"));
}

TEST_F(ViewCommand, WhatIsNoReportIsRefused) {
    write("r.json", "hello");
    EXPECT_EQ(run({"view", "r.json", "-o", "r.html"}).status, "2");
    EXPECT_FALSE(exists("r.html"));
    write("r.json", Report().text().substr(0, 1000));
    const Outcome cut = run({"view", "r.json", "-o", "r.html"});
    EXPECT_EQ(cut.status, "2");
    EXPECT_THAT(cut.err, StartsWith("zanl-profile: r.json: "));
    EXPECT_FALSE(exists("r.html"));
    EXPECT_THAT(run({"view", "none.json", "-o", "r.html"}).err, HasSubstr("none.json"));
    write("r.json", Report().text());
    ASSERT_EQ(shell("$T summary --json r.json > s.json").status, "0");
    EXPECT_EQ(run({"view", "s.json", "-o", "r.html"}),
              trouble("s.json: a saved summary has no samples; name the report"));
    EXPECT_EQ(run({"view", "r.json", "r.json", "-o", "r.html"}), trouble("a page shows one run, not 2"));
    EXPECT_EQ(run({"view", "d.zanx", "-o", "r.html"}),
              trouble("d.zanx: a package needs its capture after it"));
    EXPECT_EQ(run({"view", "r.json", "--base", "d.zanx", "-o", "r.html"}),
              trouble("d.zanx: a package needs its capture after it"));
    EXPECT_EQ(run({"view", "r.json", "--base", "r.json", "--base", "r.json", "-o", "r.html"}),
              trouble("a page shows one base, not 2"));
    EXPECT_FALSE(exists("r.html"));
}

TEST_F(ViewCommand, APageThatCannotBeWrittenLeavesTheOldOne) {
    write("r.json", Report().text());
    write("r.html", "old");
    EXPECT_EQ(run({"view", "r.json", "-o", "none/r.html"}).status, "2");
    EXPECT_EQ(shell("ulimit -f 1; $T view r.json -o r.html").status, "2");
    EXPECT_EQ(read("r.html"), "old");
}

TEST_F(ViewCommand, StandardInputIsAReport) {
    write("r.json", Report().text());
    EXPECT_EQ(shell("$T view - -o r.html < r.json"), silent_success);
    EXPECT_THAT(read("r.html"), HasSubstr("<title>standard input</title>"));
}

} // namespace
