// SPDX-License-Identifier: Apache-2.0
// Reading a monitor file and the stages of it.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <charconv>
#include <cstring>

#include "design.h"
#include "input_names.h"
#include "line_reader.h"
#include "mon_line.h"

namespace {

std::vector<std::string> lines_of(const std::string& text) {
    std::vector<std::string> lines;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = text.find('\n', begin);
        lines.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return lines;
}

void count_values(benchmark::State& state, int lines, int counters) {
    state.SetItemsProcessed(state.iterations() * lines * counters);
}

// The floor of reading: the same bytes, split at commas and newlines, each field through std::from_chars.
long long sum_of_fields(const char* position, const char* end) {
    long long sum = 0;
    while (position < end) {
        const auto* newline =
            static_cast<const char*>(std::memchr(position, '\n', static_cast<std::size_t>(end - position)));
        const char* line_end = newline ? newline : end;
        while (position < line_end) {
            const auto* comma = static_cast<const char*>(
                std::memchr(position, ',', static_cast<std::size_t>(line_end - position)));
            const char* field_end = comma ? comma : line_end;
            long long value = 0;
            std::from_chars(position, field_end, value);
            sum += value;
            position = field_end + 1;
        }
        position = line_end + 1;
    }
    return sum;
}

void read_floor(benchmark::State& state) {
    const Design design(num_insts);
    const std::string text = design.monitor_text(num_lines);
    const MonitorFile file(text);
    std::vector<char> bytes(text.size());
    for ([[maybe_unused]] auto _ : state) {
        const int fd = ::open(file.path().c_str(), O_RDONLY);
        std::size_t size = 0;
        for (ssize_t count = 1; count > 0; size += static_cast<std::size_t>(count))
            count = ::read(fd, bytes.data() + size, std::min(bytes.size() - size, std::size_t{1} << 18));
        ::close(fd);
        benchmark::DoNotOptimize(sum_of_fields(bytes.data(), bytes.data() + size));
    }
    count_values(state, num_lines, design.num_counters());
}
BENCHMARK(read_floor)->Unit(benchmark::kMillisecond);

// The whole reader: lines, names, invocations, counters, sample lists; and the one node at the end of the
// file.
void read_all(benchmark::State& state) {
    Design design(num_insts);
    const MonitorFile file(design.monitor_text(num_lines));
    HeldBytes held;
    for ([[maybe_unused]] auto _ : state) {
        held.start();
        design.read(file.path());
        state.PauseTiming();
        held.stop();
        design.reset();
        state.ResumeTiming();
    }
    count_values(state, num_lines, design.num_counters());
    held.report(state, static_cast<double>(num_lines) * design.num_counters());
}
BENCHMARK(read_all)->Unit(benchmark::kMillisecond);

// Lines and fields alone.
void split_lines(benchmark::State& state) {
    const Design design(num_insts);
    const std::vector<std::string> lines = lines_of(design.monitor_text(num_lines));
    MonLine line;
    for ([[maybe_unused]] auto _ : state) {
        for (const std::string& text : lines) {
            line.split(text);
            benchmark::DoNotOptimize(line.fields().size());
        }
    }
    count_values(state, num_lines, design.num_counters());
}
BENCHMARK(split_lines)->Unit(benchmark::kMillisecond);

constexpr int lines_of_invocation = 1000;

// Counters of lines that are split already, one line after the other, over a growing number of instances:
// time for a value stays the same, but for what no longer fits the caches.
void decode_counters(benchmark::State& state) {
    Design design(static_cast<int>(state.range(0)));
    const std::string text = design.monitor_text(1);
    MonLine line;
    line.split(std::string_view(text).substr(0, text.size() - 1));
    HeldBytes held;
    for ([[maybe_unused]] auto _ : state) {
        held.start();
        for (int i = 0; i < lines_of_invocation; ++i) {
            for (TlyModuleInst* inst : design.insts())
                inst->updateCounters(line.fields(), 0, true, SHARED_NONE, 1);
        }
        state.PauseTiming();
        held.stop();
        design.reset();
        state.ResumeTiming();
    }
    count_values(state, lines_of_invocation, design.num_counters());
    held.report(state, static_cast<double>(lines_of_invocation) * design.num_counters());
}
BENCHMARK(decode_counters)->Arg(5)->Arg(50)->Arg(500)->Unit(benchmark::kMillisecond);

// The same in blocks of lines.
void decode_blocks(benchmark::State& state) {
    Design design(static_cast<int>(state.range(0)));
    const std::string text = design.monitor_text(1);
    MonLine line;
    line.split(std::string_view(text).substr(0, text.size() - 1));
    LineBlock block;
    block.reset(static_cast<std::size_t>(design.num_counters()));
    while (!block.full()) {
        for (std::size_t i = first_counter_field; i < line.fields().size(); ++i)
            block.next()[i - first_counter_field] = line.fields()[i].value;
        block.add();
    }
    const int num_blocks = lines_of_invocation / static_cast<int>(block.size());
    HeldBytes held;
    for ([[maybe_unused]] auto _ : state) {
        held.start();
        for (int i = 0; i < num_blocks; ++i) {
            for (TlyModuleInst* inst : design.insts())
                inst->updateCounters(block, first_counter_field, 0, SHARED_NONE);
        }
        state.PauseTiming();
        held.stop();
        design.reset();
        state.ResumeTiming();
    }
    const int num_lines_read = num_blocks * static_cast<int>(block.size());
    count_values(state, num_lines_read, design.num_counters());
    held.report(state, static_cast<double>(num_lines_read) * design.num_counters());
}
BENCHMARK(decode_blocks)->Arg(5)->Arg(50)->Arg(500)->Unit(benchmark::kMillisecond);

} // namespace
