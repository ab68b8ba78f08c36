// SPDX-License-Identifier: Apache-2.0
// Loading profiler descriptions: the time has to grow as the description does.
#include <benchmark/benchmark.h>

#include <chrono>
#include <optional>

#include "ProfilerConfigXml.h"
#include "description.h"
#include "make_package.h"
#include "profiler_import.h"
#include "temp_dir.h"

namespace {

// The whole of the largest design; a benchmark's argument says which part of it is taken, in quarters.
constexpr int num_kernels = 2000;
constexpr int insts_per_kernel = 25;
constexpr int ports_per_inst = 8;
constexpr int quarters = 4;

std::string description_text(int num_quarters) {
    Description description;
    std::vector<std::string> tags;
    tags.reserve(ports_per_inst);
    for (int i = 0; i < ports_per_inst; ++i)
        tags.push_back("tag_" + std::to_string(i));
    description.module("lsu", tags);
    for (int k = 0; k < num_kernels * num_quarters / quarters; ++k) {
        const std::string kernel = "kernel_" + std::to_string(k);
        description.function(kernel, "line_number='1'");
        for (int i = 0; i < insts_per_kernel; ++i) {
            const std::string inst = "load_" + std::to_string(i);
            description.inst(kernel, inst, "lsu", "__global;read;BURST-COALESCED;DDR;512;;", false, false,
                             "<DEBUG file='k.cl' line='2' column='3'/>");
            for (const std::string& tag : tags)
                description.connect(kernel, inst, tag);
        }
    }
    return description.xml();
}

// Adds the counters of a run over one more part: connections a second, and how many times as long this part
// took as the one before it. The parts come in the order of their size.
class Growth {
  public:
    void report(benchmark::State& state, std::chrono::duration<double> time) {
        const auto part = state.range(0);
        const double seconds = time.count() / static_cast<double>(state.iterations());
        state.SetItemsProcessed(state.iterations() * num_kernels * part / quarters * insts_per_kernel *
                                ports_per_inst);
        if (part != m_part)
            m_last = part > m_part ? m_seconds : 0;
        m_part = part;
        m_seconds = seconds;
        if (m_last != 0)
            state.counters["times_the_last"] = seconds / m_last;
    }

  private:
    std::int64_t m_part = 0;
    double m_seconds = 0; // of this part, the latest of its rounds
    double m_last = 0;    // of the part before it
};

// Runs `load` for as long as the benchmark takes, and after it `clean`, which isn't timed.
template <typename Load, typename Clean>
void measure(benchmark::State& state, Growth& growth, Load load, Clean clean) {
    std::chrono::duration<double> time{};
    for ([[maybe_unused]] auto _ : state) {
        const auto begin = std::chrono::steady_clock::now();
        load();
        const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begin;
        state.SetIterationTime(passed.count());
        time += passed;
        clean();
    }
    growth.report(state, time);
}

// XML text to the description's model.
void load_description(benchmark::State& state) {
    static Growth growth;
    const std::string xml = description_text(static_cast<int>(state.range(0)));
    zan::profiler::ProfilerConfigXmlLoader loader(false);
    zan::profiler::ProfilerConfig* config = nullptr;
    measure(
        state, growth, [&] { config = loader.load_xml(xml.c_str()); }, [&] { delete config; });
}
BENCHMARK(load_description)
    ->Arg(1)
    ->Arg(2)
    ->Arg(4)
    ->UseManualTime()
    ->MinTime(2.0)
    ->Unit(benchmark::kMillisecond);

// A package to kernels and instances: all that a run does with a description.
void import_description(benchmark::State& state) {
    static Growth growth;
    const TempDir dir;
    const std::string package = dir.path("design.zanx");
    make_package(package, {{".zan.profiler.xml", description_text(static_cast<int>(state.range(0)))}});
    ptree tree;
    std::optional<ProfileModel> model;
    const auto import = [&] {
        Package opened(package.c_str());
        import_profiler(model.emplace(), tree, opened);
    };
    measure(state, growth, import, [&] { model.reset(); });
}
BENCHMARK(import_description)
    ->Arg(1)
    ->Arg(2)
    ->Arg(4)
    ->UseManualTime()
    ->MinTime(2.0)
    ->Unit(benchmark::kMillisecond);

} // namespace
