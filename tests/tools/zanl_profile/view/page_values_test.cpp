// SPDX-License-Identifier: Apache-2.0
// Every value of a report is in its page, digit for digit.
#include <cmath>
#include <fstream>
#include <sstream>

#include "make_package.h"
#include "pipeline.h"
#include "report_columns.h"
#include "tly_constants.h"
#include "toolbox_fixture.h"
#include "workload.h"

namespace {

// Nine, but fewer where the largest value would have more than 9 · 10^18 of their units.
int decimals_of(const std::vector<std::string>& texts) {
    double greatest = 0.0;
    for (const std::string& text : texts)
        greatest = std::max(greatest, text.empty() ? 0.0 : std::fabs(std::stod(text)));
    int decimals = 9;
    while (decimals > 0 && greatest * std::pow(10.0, decimals) > 9e18 && std::isfinite(greatest))
        --decimals;
    return decimals;
}

// A value that came before one that takes decimals away was rounded twice.
testing::Matcher<std::string> is_value(const std::string& text, int decimals) {
    return testing::AnyOf(plain_number(text, decimals), plain_number(plain_number(text), decimals));
}

class PageValues : public Toolbox {
  protected:
    // Makes a report of d.zanx and p.mon, and the pages of both forms of the run.
    void expect_all_values() const {
        ASSERT_EQ(run({"run", "d.zanx", "p.mon", "r.json"}).status, "0");
        ASSERT_EQ(run({"view", "r.json", "-o", "r.html"}), silent_success);
        expect_values_of_report("r.html");
        ASSERT_EQ(run({"view", "d.zanx", "p.mon", "-o", "d.html"}).status, "0");
        expect_values_of_report("d.html");
    }
    void expect_values_of_report(const std::string& page) const {
        const std::string text = read(page);
        const PageReader reader(text);
        const ValueColumns expected = ReportColumns(read("r.json")).columns;
        const ValueColumns found = columns_of_page(reader);
        std::size_t num_equal = 0;
        for (const auto& [name, column] : expected) {
            const auto place = found.find(name);
            ASSERT_TRUE(place != found.end()) << name;
            ASSERT_EQ(place->second.size(), column.size()) << name;
            const int decimals = decimals_of(column);
            for (std::size_t i = 0; i < column.size(); ++i)
                ASSERT_THAT(place->second[i], is_value(column[i], decimals)) << name << ", sample " << i;
            ++num_equal;
        }
        EXPECT_EQ(found.size(), num_equal);
    }
    template <typename Workload>
    void lay_out(const Workload& workload) const {
        make("d.zanx", sections_of(workload));
        std::ofstream monitor(dir.path("p.mon"));
        write_monitor(workload, monitor);
    }
};

class PageOfSample : public PageValues, public testing::WithParamInterface<std::string> {};

TEST_P(PageOfSample, HasEachValueDigitForDigit) {
    const std::filesystem::path sample = std::filesystem::path(ZAN_SAMPLES_FOLDER) / GetParam();
    PackageSections package;
    for (const auto& entry : std::filesystem::directory_iterator(sample / "sections"))
        package.emplace_back(".zan." + entry.path().filename().string(), read_file(entry.path()));
    make("d.zanx", package);
    write("p.mon", read_file(sample / "profile.mon"));
    expect_all_values();
}

std::vector<std::string> names_of_samples() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(ZAN_SAMPLES_FOLDER)) {
        if (entry.is_directory())
            names.push_back(entry.path().filename().string());
    }
    return names;
}

INSTANTIATE_TEST_SUITE_P(All, PageOfSample, testing::ValuesIn(names_of_samples()),
                         [](const auto& sample) { return sample.param; });

struct SmallShape {
    std::string_view name;
    int lines;
    int insts_per_kernel;
};

class PageOfShape : public PageValues, public testing::WithParamInterface<SmallShape> {};

// The shapes of the benchmarks, with fewer lines and blocks.
TEST_P(PageOfShape, HasEachValueDigitForDigit) {
    Shape shape = *shape_of(GetParam().name);
    shape.lines = GetParam().lines;
    shape.insts_per_kernel = std::min(shape.insts_per_kernel, GetParam().insts_per_kernel);
    lay_out(shape);
    expect_all_values();
}

INSTANTIATE_TEST_SUITE_P(All, PageOfShape,
                         testing::Values(SmallShape{"S", 400, 20}, SmallShape{"L", 2000, 5},
                                         SmallShape{"M", 600, 10}, SmallShape{"W", 10, 200},
                                         SmallShape{"A", 100, 10}, SmallShape{"X", 200, 20}),
                         [](const auto& shape) { return std::string(shape.param.name); });

TEST_F(PageValues, OfAPipelineAreAllThere) {
    Pipeline pipeline;
    pipeline.num_frames = 3;
    lay_out(pipeline);
    expect_all_values();
}

} // namespace
