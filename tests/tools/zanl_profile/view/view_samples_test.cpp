// SPDX-License-Identifier: Apache-2.0
// Pages with fewer samples than their report.
#include "page_reader.h"
#include "toolbox_fixture.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using Texts = std::vector<std::string>;

// Two invocations, of eight samples and of one, of 100 ns and 20 cycles each, at 200 MHz.
constexpr std::string_view nine_samples = R"({
    "json_type": "Corvane Profiler JSON",
    "kernels": {"nodes": [{
        "type": "kernel", "name": "k", "compute_unit": "0", "start_time": "1000", "end_time": "1800",
        "num_samples": "8", "shared_counter_run_type": "-1", "is_autorun": "false",
        "sample_timestamps": ["1100", "1200", "1300", "1400", "1500", "1600", "1700", "1800"],
        "total_cycles_between_samples": ["20", "20", "20", "20", "20", "20", "20", "20"],
        "children": [{"type": "moduleinst", "name": "b", "module_inst_details": {
            "mem_type": "__global", "operation_type": "read",
            "cache_hit_samples": ["1", "1", "1", "1", "1", "1", "1", "3"],
            "stall_samples": ["1", "2", "3", "4", "10", "0", "0", "-1"],
            "bandwidth_samples": ["10", "20", "30", "nan", "0.5", "0", "0", "80"]}}]}, {
        "type": "kernel", "name": "k", "compute_unit": "0", "start_time": "2000", "end_time": "2100",
        "num_samples": "1", "shared_counter_run_type": "-1", "is_autorun": "false",
        "sample_timestamps": ["2100"], "total_cycles_between_samples": ["20"],
        "children": [{"type": "moduleinst", "name": "b", "module_inst_details": {
            "mem_type": "__global", "operation_type": "read",
            "stall_samples": ["7"], "bandwidth_samples": ["5"]}}]}]},
    "run_info": {"nodes": [{"fmax": "200.0"}]}
})";

class ViewSamples : public Toolbox {
  protected:
    ViewSamples() { write("r.json", std::string(nine_samples)); }
    // What is printed.
    std::string view(std::vector<std::string> options) {
        options.insert(options.begin(), {"view", "r.json", "-o", "r.html"});
        const Outcome outcome = run(options);
        EXPECT_EQ(outcome.status, "0");
        m_page = read("r.html");
        return outcome.err;
    }
    PageReader page() const { return PageReader(m_page); }
    Texts kernel_texts(const char* key) const {
        const PageReader reader(m_page);
        return reader.texts(reader.head()["kernels"][0][key].GetInt());
    }
    Texts invocation_texts(const char* key) const {
        const PageReader reader(m_page);
        return reader.texts(reader.head()["kernels"][0]["invocations"][key].GetInt());
    }
    Texts block_texts(const char* key) const { return page().texts(series(key)); }
    // Least and range of each value.
    Texts peaks(const char* key, unsigned which) const {
        const PageReader reader(m_page);
        const std::string number = std::to_string(series(key));
        return reader.texts(reader.head()["series"]["peaks"][number.c_str()][which].GetInt());
    }

  private:
    int series(const char* key) const {
        return page().head()["kernels"][0]["blocks"][0]["series"][key].GetInt();
    }
    std::string m_page;
};

TEST_F(ViewSamples, AllAreKeptWhereTheyAreFew) {
    EXPECT_EQ(view({}), "");
    EXPECT_EQ(page().head()["run"]["reduced"].GetInt(), 1);
    EXPECT_TRUE(page().head()["series"]["peaks"].ObjectEmpty());
    EXPECT_EQ(kernel_texts("time").size(), 9U);
    // 9 samples of 5 columns: time, cycles, hits, stall, bandwidth.
    EXPECT_EQ(view({"--samples", "45"}), "");
}

// Groups of four: two of the first invocation, and the second one. Each has a value, a least and a greatest
// one: 3 groups of 5 columns make 45 again. Groups of eight make 30.
TEST_F(ViewSamples, AreJoinedAboveTheLimit) {
    EXPECT_EQ(view({"--samples", "44"}).substr(0, 40), "each point of the page stands for 8 samp");
    EXPECT_EQ(kernel_texts("time"), (Texts{"8e2", "11e2"}));
    write("r.json", std::string(nine_samples));
    EXPECT_EQ(page().head()["run"]["reduced"].GetInt(), 8);
    EXPECT_EQ(kernel_texts("cycles"), (Texts{"16e1", "2e1"}));
    EXPECT_EQ(invocation_texts("first"), (Texts{"0", "1e0"}));
    EXPECT_EQ(block_texts("stall"), (Texts{"2e1", "7e0"}));
    // 10 of 20 cycles are 5,000 ten-thousandths, 7 are 3,500; a count below 0 doesn't count.
    EXPECT_EQ(peaks("stall", 0), (Texts{"0", "35e2"}));
    EXPECT_EQ(peaks("stall", 1), (Texts{"5e3", "0"}));
    // (10 + 20 + 30 + 0.5 + 0 + 0 + 80) / 7 = 20.0714..., with three decimals more than the values have.
    EXPECT_EQ(block_texts("bandwidth"), (Texts{"200714e-4", "5e0"}));
    EXPECT_EQ(peaks("bandwidth", 0), (Texts{"0", "5e0"}));
    EXPECT_EQ(peaks("bandwidth", 1), (Texts{"8e1", "0"}));
    // 7 times 1, and 3; the second invocation has none.
    EXPECT_EQ(block_texts("hits"), (Texts{"1e1", ""}));
    EXPECT_EQ(peaks("hits", 0), (Texts{"1e0", ""}));
    EXPECT_EQ(peaks("hits", 1), (Texts{"2e0", ""}));
    EXPECT_EQ(peaks("hits", 2), (Texts{"8e0", "0"}));
    EXPECT_EQ(page().head()["kernels"][0]["blocks"][0]["sums"]["stall"][0].GetInt(), 27);
}

TEST_F(ViewSamples, TheLimitCanBeTooLow) {
    EXPECT_THAT(view({"--samples", "1"}), HasSubstr("--kernel chooses kernels\n"));
    EXPECT_EQ(kernel_texts("time").size(), 2U);
    EXPECT_EQ(view({"--samples", "all"}), "");
    EXPECT_EQ(kernel_texts("time").size(), 9U);
}

// Samples 2 to 4, from 200 to 500 ns, have a part of the stretch. What was before them is one sample without
// values, so that they begin where they did.
TEST_F(ViewSamples, OfAStretchAreKept) {
    EXPECT_EQ(view({"--from", "250ns", "--to", "0.42us"}),
              "the page has samples from 250ns to 0.42us only; sums are of the whole run\n");
    EXPECT_EQ(kernel_texts("time"), (Texts{"2e2", "3e2", "4e2", "5e2"}));
    EXPECT_EQ(kernel_texts("cycles"), (Texts{"", "2e1", "2e1", "2e1"}));
    EXPECT_EQ(block_texts("stall"), (Texts{"", "3e0", "4e0", "1e1"}));
    EXPECT_EQ(block_texts("bandwidth"), (Texts{"", "3e1", "nan", "5e-1"}));
    EXPECT_EQ(invocation_texts("start"), (Texts{"0", "1e3"}));
    EXPECT_EQ(invocation_texts("first"), (Texts{"0", "4e0"}));
    EXPECT_EQ(page().head()["kernels"][0]["blocks"][0]["sums"]["stall"][0].GetInt(), 27);
    EXPECT_EQ(view({"--from", "1ms"}), "the page has samples from 1ms only; sums are of the whole run\n");
    EXPECT_EQ(kernel_texts("time").size(), 0U);
}

// The third sample begins after 200 ns.
TEST_F(ViewSamples, UpToATimeAreKept) {
    EXPECT_EQ(view({"--to", "150ns"}), "the page has samples to 150ns only; sums are of the whole run\n");
    EXPECT_EQ(kernel_texts("time"), (Texts{"1e2", "2e2"}));
    EXPECT_EQ(block_texts("stall"), (Texts{"1e0", "2e0"}));
}

TEST_F(ViewSamples, OfAKernelAreKept) {
    view({"--kernel", "k"});
    EXPECT_EQ(kernel_texts("time").size(), 9U);
    EXPECT_EQ(run({"view", "r.json", "-o", "r.html", "--kernel", "kk"}), trouble("no kernel is called 'kk'"));
    const std::string report = read("r.json");
    std::string two = report;
    two.replace(two.rfind("\"name\": \"k\""), 11, "\"name\": \"m\"");
    write("r.json", two);
    EXPECT_EQ(view({"--kernel", "m"}), "the page has samples of m only; sums are of the whole run\n");
    EXPECT_EQ(kernel_texts("time").size(), 0U);
    EXPECT_EQ(page().head()["kernels"][1]["n"].GetInt(), 1);
    EXPECT_EQ(view({"--kernel", "m", "--kernel", "k", "--from", "0ns"}),
              "the page has samples of m, k from 0ns only; sums are of the whole run\n");
}

TEST_F(ViewSamples, OptionsThatMakeNoSenseAreRefused) {
    const auto refused = [&](std::vector<std::string> options) {
        options.insert(options.begin(), {"view", "r.json", "-o", "r.html"});
        return run(options);
    };
    EXPECT_EQ(refused({"--from", "12"}),
              trouble("--from takes a time with its unit, such as 12ms, not '12'"));
    EXPECT_EQ(refused({"--to", "xms"}), trouble("--to takes a time with its unit, such as 12ms, not 'xms'"));
    EXPECT_EQ(refused({"--from", "2ms", "--to", "1ms"}), trouble("--from must be before --to"));
    for (const char* text : {"0", "5x", "-1", "x", "99999999999999999999"})
        EXPECT_EQ(refused({"--samples", text}),
                  trouble(std::string("--samples takes a number of values or 'all', not '") + text + "'"));
    std::string report(nine_samples);
    report.replace(report.find("200.0"), 5, "0.0");
    write("r.json", report);
    for (const char* option : {"--from", "--to"})
        EXPECT_EQ(refused({option, "1ms"}),
                  trouble("the unit of the times isn't known: --from and --to take --time-unit"));
}

} // namespace
