// SPDX-License-Identifier: Apache-2.0
#include "trend_page.h"

#include <regex>

#include "toolbox_fixture.h"

namespace {

using namespace zan::tool;
using namespace zan::profile;
using testing::HasSubstr;
using testing::Not;

TrendView view_of_values(const std::vector<double>& values) {
    TrendView view;
    view.database = "runs.db";
    view.subject = "k";
    view.metric = &row_of(Metric::stall);
    view.label = "commit";
    for (const double value : values) {
        const std::string day = std::to_string(view.line.points.size() + 10);
        view.line.points.push_back(
            {{0, "0123456789abcdef", "2026-11-" + day, "", {{"commit", "c" + day}}}, value});
    }
    view.statistics = statistics_of(values);
    return view;
}

std::size_t count_of(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

TEST(TrendPage, HasNoScriptAndNothingThatIsLoaded) {
    const std::string page = trend_page(view_of_values({10, 10, 20}));
    EXPECT_TRUE(page.starts_with("<!doctype html>"));
    for (const char* const part :
         {"<script", "src=", "http:", "https:", "url(", " style=", "@import", "onload"})
        EXPECT_THAT(page, Not(HasSubstr(part))) << part;
    EXPECT_THAT(page, HasSubstr("default-src 'none'; style-src 'sha256-"));
    EXPECT_THAT(page, HasSubstr("@media screen and (prefers-color-scheme: dark)"));
}

// The viewer's colours: a change of its style is one of this page.
TEST(TrendPage, HasTheColoursOfTheViewer) {
    const std::string page = trend_page(view_of_values({10}));
    EXPECT_THAT(page, HasSubstr("--stalled: #d55e00"));
    EXPECT_THAT(page, HasSubstr("--stalled: #f08a3c"));
    EXPECT_THAT(page, Not(HasSubstr(":root.dark")));
}

// The values have a range of 90, and the chart 1.1 times of it around their middle: 5.5 to 104.5, from 266 up
// to 20 pixels. So 100 is at 20 + 4.5 / 99 * 246 = 31.2, and 10 at 20 + 94.5 / 99 * 246 = 254.8.
TEST(TrendPage, PlacesPointsInProportion) {
    const std::string page = trend_page(view_of_values({10, 100}));
    EXPECT_THAT(page, HasSubstr("points=\"84,254.8 976,31.2\""));
    EXPECT_EQ(count_of(page, "<circle"), 2u);
    EXPECT_THAT(page, HasSubstr("<title>2026-11-11  c11  100.0%</title>"));
    // The median of the runs before the newest is 10.
    EXPECT_THAT(page, HasSubstr("<line class=\"median\" x1=\"84\" x2=\"976\" y1=\"254.8\" y2=\"254.8\">"));
}

// A fifth of the 99 above is 19.8, so there are lines at 20, 40, 60, 80 and 100: the first 20 + 84.5 / 99 *
// 246 = 230 from the top, the third 20 + 44.5 / 99 * 246 = 130.6, the last as the point of 100.
TEST(TrendPage, HasLinesAtRoundValues) {
    const std::string page = trend_page(view_of_values({10, 100}));
    EXPECT_EQ(count_of(page, "<line class=\"grid\""), 5u);
    EXPECT_THAT(page, HasSubstr("<line class=\"grid\" x1=\"84\" x2=\"976\" y1=\"230\" y2=\"230\">"));
    EXPECT_THAT(page, HasSubstr("<text x=\"76\" y=\"234\" text-anchor=\"end\">20.0%</text>"));
    EXPECT_THAT(page, HasSubstr("<line class=\"grid\" x1=\"84\" x2=\"976\" y1=\"130.6\" y2=\"130.6\">"));
    EXPECT_THAT(page, HasSubstr("<line class=\"grid\" x1=\"84\" x2=\"976\" y1=\"31.2\" y2=\"31.2\">"));
    EXPECT_THAT(page, HasSubstr(">100.0%</text>"));
}

TEST(TrendPage, OneRunIsAPointInTheMiddle) {
    const std::string page = trend_page(view_of_values({0}));
    EXPECT_THAT(page, HasSubstr("points=\"530,143\"")); // between 84 and 976, between 20 and 266
    EXPECT_THAT(page, Not(HasSubstr("class=\"median\"")));
    EXPECT_THAT(page, Not(HasSubstr("nan")));
}

TEST(TrendPage, AFailureIsMarkedAndTheLimitShown) {
    TrendView view = view_of_values({10, 10, 10, 10, 10, 20});
    view.limit = 50;
    view.verdict = judge(view.statistics, view.metric->better, *view.limit);
    const std::string page = trend_page(view);
    EXPECT_THAT(page, HasSubstr("class=\"point newest failed\""));
    EXPECT_THAT(page, HasSubstr("limit 15.0%"));
    EXPECT_THAT(page, HasSubstr("<p class=\"sentence of-cause\">failed: stall of k is 20.0%"));
    EXPECT_EQ(count_of(page, "<tr class=\"failed\">"), 1u);
    EXPECT_EQ(count_of(page, "<tr"), 7u); // and the head
}

// Of a bandwidth less is worse, so its limit is below the median: 100 - 50% of 100. One run has no median.
TEST(TrendPage, TheLimitIsOnTheWorseSide) {
    TrendView view = view_of_values({100, 100, 100, 100, 100, 100});
    view.metric = &row_of(Metric::bandwidth);
    view.limit = 50;
    EXPECT_THAT(trend_page(view), HasSubstr(">limit 50 MB/s</text>"));
    view.line.points.resize(1);
    view.statistics.reset();
    EXPECT_THAT(trend_page(view), Not(HasSubstr(">limit ")));
}

// The values have a range of 30, and the chart one of 33, a fifth of which is 6.6: more than 5, so lines are
// 10 apart.
TEST(TrendPage, LinesMayBeAPowerOfTenApart) {
    const std::string page = trend_page(view_of_values({40, 70}));
    EXPECT_EQ(count_of(page, "<line class=\"grid\""), 4u);
    for (const char* const label : {">40.0%</text>", ">50.0%</text>", ">60.0%</text>", ">70.0%</text>"})
        EXPECT_THAT(page, HasSubstr(label));
}

// Above 500 points only the newest is marked.
TEST(TrendPage, ManyRunsAreALine) {
    const std::string page = trend_page(view_of_values(std::vector<double>(600, 3)));
    EXPECT_EQ(count_of(page, "<circle"), 1u);
    EXPECT_EQ(count_of(page, "<tr"), 601u);
}

TEST(TrendPage, HostileNamesAreTexts) {
    TrendView view = view_of_values({1, 2});
    const std::string name = "</title></style><script>alert(1)</script>\"onload=x @policy@ \u202e\x1b\xff";
    view.database = view.subject = name;
    view.line.points[0].run.date = view.line.points[1].run.date = name;
    view.line.points[0].run.id = name;
    view.line.points[0].run.labels["commit"] = name;
    const std::string page = trend_page(view);
    EXPECT_THAT(page, Not(HasSubstr("<script")));
    EXPECT_THAT(page, Not(HasSubstr("\"onload")));
    EXPECT_THAT(page, Not(HasSubstr("\u202e")));
    EXPECT_THAT(page, HasSubstr("&#60;/title&#62;"));
    EXPECT_THAT(page, HasSubstr("@policy@")) << "a name is no place of the template";
    EXPECT_EQ(count_of(page, "<title>"), 3u); // of the page and of two points
    EXPECT_EQ(count_of(page, "</style>"), 1u);
}

class TrendPageFile : public Toolbox {
  protected:
    TrendPageFile() {
        HistoryStore store(dir.path("h.db"), OpenMode::create);
        ProfileSummary run;
        run.kernels.resize(1);
        run.kernels[0].name = "k";
        run.kernels[0].metrics[Metric::busy] = 40;
        const HistoryEntry entry = {run, "2026-11-22", {}};
        store.add({&entry, 1});
    }
    Outcome trend(const std::string& html) const {
        return run({"history", "trend", "h.db", "--kernel", "k", "--metric", "busy", "--html", html});
    }
};

TEST_F(TrendPageFile, IsWrittenBesideTheText) {
    const Outcome outcome = trend("t.html");
    EXPECT_THAT(outcome.out, HasSubstr("40.0%"));
    EXPECT_THAT(read("t.html"), HasSubstr("<b>busy of k</b>"));
    const Outcome piped = trend("-");
    EXPECT_EQ(piped.out, read("t.html"));
    EXPECT_EQ(trend("no/such/folder.html").status, "2");
}

TEST_F(TrendPageFile, ANewestRunWithoutAValueIsNamed) {
    HistoryStore store(dir.path("h.db"), OpenMode::write);
    ProfileSummary run;
    run.kernels.resize(1);
    run.kernels[0].name = "other";
    const HistoryEntry entry = {run, "2026-11-23", {}};
    store.add({&entry, 1});
    const Outcome outcome = trend("t.html");
    EXPECT_THAT(outcome.err, testing::ContainsRegex("the newest run, [0-9a-f]{12}, has no busy of k\n"));
}

} // namespace
