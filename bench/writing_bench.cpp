// SPDX-License-Identifier: Apache-2.0
// Building report nodes and writing the report.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstring>

#include "design.h"

namespace {

long long num_values(const ptree& node) {
    const ptree& children = node;
    long long values = 0;
    node.data().visit_packed([&](const auto& list) { values += static_cast<long long>(list.size()); });
    for (const auto& [key, child] : children)
        values += num_values(child);
    return values;
}

// The node of an invocation from its samples, and the bytes of heap that it takes besides them.
void build_node(benchmark::State& state) {
    Design design(num_insts);
    const MonitorFile file(design.monitor_text(num_lines));
    design.read(file.path());
    HeldBytes held;
    long long values = 0;
    for ([[maybe_unused]] auto _ : state) {
        held.start();
        ptree node = design.kernel().getJSON(false, design.ext_mems());
        state.PauseTiming();
        held.stop();
        values = num_values(node);
        dismantle(node);
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * values);
    held.report(state, static_cast<double>(values));
}
BENCHMARK(build_node)->Unit(benchmark::kMillisecond);

template <class T>
SampleList<T> samples(std::size_t count) {
    SampleList<T> list;
    for (std::size_t i = 0; i < count; ++i)
        list.push_back(static_cast<T>(i * 7919 % 1000003) / (std::is_same_v<T, float> ? T{10} : T{1}));
    return list;
}

constexpr std::size_t values_of_list = 1000000;

void write_list(benchmark::State& state, ptree array) {
    ptree tree;
    append_node(tree, "samples", array);
    for ([[maybe_unused]] auto _ : state)
        write_report("/dev/null", tree);
    state.SetItemsProcessed(state.iterations() * static_cast<long long>(values_of_list));
}

// The floor of writing: the same bytes into one buffer with std::to_chars, and one write.
template <class ToChars, class T>
void write_floor(benchmark::State& state, const SampleList<T>& list, ToChars to_chars) {
    const std::vector<T> values = list.to_vector();
    std::vector<char> bytes(values.size() * 48);
    constexpr std::string_view before = "        \"";
    constexpr std::string_view after = "\",\n";
    for ([[maybe_unused]] auto _ : state) {
        char* out = bytes.data();
        for (const T value : values) {
            out = std::copy(before.begin(), before.end(), out);
            out = to_chars(out, value);
            out = std::copy(after.begin(), after.end(), out);
        }
        const int fd = ::open("/dev/null", O_WRONLY);
        benchmark::DoNotOptimize(::write(fd, bytes.data(), static_cast<std::size_t>(out - bytes.data())));
        ::close(fd);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<long long>(values.size()));
}

void write_counts_floor(benchmark::State& state) {
    write_floor(state, samples<long long>(values_of_list),
                [](char* out, long long value) { return std::to_chars(out, out + 24, value).ptr; });
}
BENCHMARK(write_counts_floor)->Unit(benchmark::kMillisecond);

void write_counts(benchmark::State& state) {
    write_list(state, packed_array(samples<long long>(values_of_list)));
}
BENCHMARK(write_counts)->Unit(benchmark::kMillisecond);

void write_metrics_floor(benchmark::State& state) {
    write_floor(state, samples<float>(values_of_list), [](char* out, float value) {
        return std::to_chars(out, out + 24, static_cast<double>(value), std::chars_format::general, 7).ptr;
    });
}
BENCHMARK(write_metrics_floor)->Unit(benchmark::kMillisecond);

void write_metrics(benchmark::State& state) {
    write_list(state, packed_array(samples<float>(values_of_list)));
}
BENCHMARK(write_metrics)->Unit(benchmark::kMillisecond);

} // namespace
