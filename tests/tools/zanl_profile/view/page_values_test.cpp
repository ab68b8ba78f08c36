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
bool is_value(const std::string& found, const std::string& text, int decimals) {
    return found == plain_number(text, decimals) || found == plain_number(plain_number(text), decimals);
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
        expect_sums_of_summary("r.html");
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
                ASSERT_PRED3(is_value, place->second[i], column[i], decimals) << name << ", sample " << i;
            ++num_equal;
        }
        EXPECT_EQ(found.size(), num_equal);
    }
    // The metrics of the summary follow from the sums in the page. Those of autorun kernels don't: they are
    // of the samples in which these work.
    void expect_sums_of_summary(const std::string& page) const {
        const std::string text = read(page);
        const PageReader reader(text);
        rapidjson::Document summary;
        summary.Parse(run({"--json", "summary", "r.json"}).out.c_str());
        for (const auto& kernel : summary["kernels"].GetArray()) {
            const auto& blocks = kernel["blocks"];
            const auto& in_page =
                reader.head()["kernels"]
                             [static_cast<rapidjson::SizeType>(&kernel - summary["kernels"].Begin())];
            ASSERT_STREQ(in_page["name"].GetString(), kernel["name"].GetString());
            for (rapidjson::SizeType i = 0; !kernel.HasMember("autorun") && i < blocks.Size(); ++i)
                expect_sums_of_block(in_page["blocks"][i], blocks[i]);
        }
    }
    static void expect_sums_of_block(const rapidjson::Value& in_page, const rapidjson::Value& block) {
        ASSERT_STREQ(in_page["name"].GetString(), block["name"].GetString());
        struct SumRow {
            const char* series;
            const char* metric;
            rapidjson::SizeType divisor; // 1: the sum of weights, 2: the cycles
            double scale;
        };
        for (const auto& [series, metric, divisor, scale] :
             {SumRow{"stall", "stall_percent", 2, 100.0}, SumRow{"valid", "valid_percent", 2, 100.0},
              SumRow{"idle", "idle_percent", 2, 100.0}, SumRow{"bandwidth", "bandwidth_mb_per_s", 1, 1.0},
              SumRow{"efficiency", "efficiency_percent", 1, 100.0}}) {
            if (!block.HasMember(metric) || !in_page["sums"].HasMember(series))
                continue;
            const auto& sums = in_page["sums"][series];
            const double expected = block[metric].GetDouble();
            // The summary has five digits.
            EXPECT_NEAR(scale * sums[0].GetDouble() / sums[divisor].GetDouble(), expected, 1e-4 * expected)
                << block["name"].GetString() << " " << metric;
        }
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
