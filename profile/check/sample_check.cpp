// SPDX-License-Identifier: Apache-2.0
#include "sample_check.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "counter_tags.h"
#include "design_check.h"
#include "input_names.h"
#include "number_text.h"
#include "value_text.h"

namespace zan::profile {

namespace {

// Counters of one line aren't read in the same cycle.
constexpr double allowed_excess = 0.05;
// Below that share of the cycles something isn't counted.
constexpr double counted_share = 0.95;
constexpr double allowed_clock_difference = 0.05;

constexpr int depth_of_kernel = 3; // kernels, nodes, an element
constexpr int depth_of_block = 5;  // children, an element
constexpr int depth_of_details = 6;

void read_values(const ReportArray& values, std::vector<long long>& out) {
    out.clear();
    values.visit([&](const auto& numbers) {
        for (std::size_t i = 0; i < numbers.size(); ++i)
            out.push_back(static_cast<long long>(numbers[i]));
    });
}

long long value_or_0(const std::vector<long long>& values, std::size_t i) {
    return i < values.size() ? values[i] : 0;
}

} // namespace

SampleCheck::BlockRule SampleCheck::rule_of(const TlyModuleInst& inst, int compute_unit) {
    std::array<int, num_counters> uses{};
    const std::vector<std::string> tags = inst.getPortTagList();
    for (std::size_t i = 0; i < tags.size(); ++i) {
        const CounterTag* tag = find_counter_tag(tags[i]);
        if (tag && tag->meaning.target == TagTarget::counter &&
            inst.getPortCompUnit(static_cast<int>(i)) == compute_unit)
            ++uses[static_cast<std::size_t>(tag->meaning.counter)];
    }
    const auto uses_of = [&](Counter counter) { return uses[static_cast<std::size_t>(counter)]; };
    const int valid = uses_of(Counter::ivalid);
    const int stalls = uses_of(Counter::ext_stall);
    const int idle = uses_of(Counter::idle);
    return {.is_checked = valid > 0 && !is_loop(inst),
            .counts_all = stalls > 0 && idle > 0,
            .adds_up = valid > 1 || stalls > 1 || idle > 1};
}

void SampleCheck::take_design(const ProfileModel& model, const std::string& clock) {
    m_clock = stated_clock(clock);
    for (const auto& [name, kernel] : model.kernels) {
        for (const TlyModuleInst* inst : kernel->get_module_insts()) {
            const BlockRule rule = rule_of(*inst, model.compute_unit);
            if (rule.is_checked)
                m_kernels[shown_name(*kernel)][inst->getName()].rule = rule;
        }
    }
}

void SampleCheck::open(std::string_view key, Form) {
    m_open.emplace_back(key);
    const auto depth = static_cast<int>(m_open.size());
    if (m_open.front() != "kernels")
        return;
    if (depth == depth_of_kernel) {
        m_kernel = nullptr;
        m_is_shared = m_is_autorun = false;
        m_times.clear();
        m_sample_cycles.clear();
    } else if (depth == depth_of_block) {
        m_block.clear();
        m_valid.clear();
        m_stalls.clear();
        m_idle.clear();
    }
}

void SampleCheck::text(std::string_view key, std::string_view text) {
    if (m_open.empty() || m_open.front() != "kernels")
        return;
    if (m_open.size() == depth_of_block && key == "name") {
        m_block = text;
    } else if (m_open.size() == depth_of_kernel) {
        if (key == "name") {
            const auto found = m_kernels.find(text);
            m_kernel = found == m_kernels.end() ? nullptr : &found->second;
        } else if (key == "start_time") {
            m_start = parse_long_long(text).value_or(0);
        } else if (key == "shared_counter_run_type") {
            m_is_shared = text != "-1";
        } else if (key == "is_autorun") {
            m_is_autorun = text == "true";
        }
    }
}

void SampleCheck::array(std::string_view key, const ReportArray& values) {
    if (m_open.empty() || m_open.front() != "kernels")
        return;
    const auto depth = static_cast<int>(m_open.size());
    struct Row {
        int depth;
        std::string_view key;
        Values SampleCheck::*values;
    };
    static constexpr Row rows[] = {
        {depth_of_kernel, "sample_timestamps", &SampleCheck::m_times},
        {depth_of_kernel, "total_cycles_between_samples", &SampleCheck::m_sample_cycles},
        {depth_of_details, "occupancy_samples", &SampleCheck::m_valid},
        {depth_of_details, "stall_samples", &SampleCheck::m_stalls},
        {depth_of_details, "idle_samples", &SampleCheck::m_idle},
    };
    for (const Row& row : rows) {
        if (row.depth == depth && row.key == key)
            read_values(values, this->*row.values);
    }
}

void SampleCheck::close() {
    const auto depth = static_cast<int>(m_open.size());
    if (m_open.front() == "kernels" && depth == depth_of_block)
        end_block();
    else if (m_open.front() == "kernels" && depth == depth_of_kernel)
        end_invocation();
    m_open.pop_back();
}

// A sample counts if all of its counts were there, and its cycles too.
void SampleCheck::end_block() {
    if (!m_kernel || m_is_shared || m_sample_cycles.size() != m_times.size())
        return;
    const auto found = m_kernel->find(m_block);
    if (found == m_kernel->end())
        return;
    BlockSums& sums = found->second;
    const std::size_t count = std::min(m_valid.size(), m_sample_cycles.size());
    for (std::size_t i = 0; i < count; ++i) {
        const long long stalls = value_or_0(m_stalls, i);
        const long long idle = value_or_0(m_idle, i);
        const auto cycles = static_cast<double>(m_sample_cycles[i]);
        if (cycles <= 0 || m_valid[i] < 0 || stalls < 0 || idle < 0)
            continue;
        const double active =
            static_cast<double>(m_valid[i]) + static_cast<double>(stalls) + static_cast<double>(idle);
        sums.valid += static_cast<double>(m_valid[i]);
        sums.active += active;
        sums.cycles += cycles;
        ++sums.num_samples;
        sums.num_over += active > cycles * (1 + allowed_excess) ? 1 : 0;
    }
}

// Samples of autorun kernels are taken when the host asks for them, and their cycles don't stop in between.
void SampleCheck::end_invocation() {
    if (m_is_autorun || m_sample_cycles.size() != m_times.size() || m_times.empty() ||
        m_times.back() <= m_start)
        return;
    double cycles = 0;
    for (const long long each : m_sample_cycles) {
        if (each <= 0)
            return;
        cycles += static_cast<double>(each);
    }
    m_cycles += cycles;
    m_time += static_cast<double>(m_times.back()) - static_cast<double>(m_start);
}

void SampleCheck::find_excess(const std::string& kernel, const Blocks& blocks, Fault fault, FindingLog& log) {
    for (const auto& [block, sums] : blocks) {
        if (sums.rule.adds_up || sums.active <= sums.cycles * (1 + allowed_excess))
            continue;
        const std::string message = kernel + "/" + block + " was valid, stalled and idle for " +
                                    percent_text(sums.active / sums.cycles * 100) + " of its cycles";
        fault.message = message;
        log.add("too-many-cycles", fault,
                "in " + count_text(static_cast<double>(sums.num_over)) + " of " +
                    count_text(static_cast<double>(sums.num_samples)) + " samples");
    }
}

void SampleCheck::find_uncounted(const std::string& kernel, const Blocks& blocks, Fault fault,
                                 FindingLog& log) {
    std::string list;
    std::size_t count = 0;
    for (const auto& [block, sums] : blocks) {
        if (sums.rule.counts_all || sums.active >= sums.cycles * counted_share)
            continue;
        if (++count <= FindingLog::shown)
            list +=
                (count == 1 ? "" : ", ") + block + " (" + percent_text(sums.active / sums.cycles * 100) + ")";
    }
    if (count == 0)
        return;
    const std::string message = kernel + ": no counter measures all cycles of " +
                                count_text(static_cast<double>(count)) + (count == 1 ? " block" : " blocks");
    fault.message = message;
    log.add("uncounted", fault, "measured: " + list + (count > FindingLog::shown ? ", ..." : ""));
}

// The unit of the time stamps isn't known, but it is a power of ten of a second.
void SampleCheck::find_clock_mismatch(Fault fault, FindingLog& log) const {
    if (m_clock <= 0 || m_cycles <= 0)
        return;
    const double nanoseconds = m_cycles / m_clock * 1000;
    const double ratio = m_time / nanoseconds;
    const double unit = std::pow(10.0, std::round(std::log10(ratio)));
    const double difference = ratio / unit - 1;
    if (std::abs(difference) <= allowed_clock_difference)
        return;
    const std::string message = "by the time stamps the kernels ran " +
                                percent_text(std::abs(difference) * 100) +
                                (difference > 0 ? " longer" : " shorter") + " than by their cycles at " +
                                trimmed_text(m_clock, 3) + " MHz";
    fault.message = message;
    log.add("clock-mismatch", fault);
}

void SampleCheck::finish(std::string_view package, std::string_view capture, FindingLog& log) const {
    Fault in_capture;
    in_capture.file = capture;
    Fault in_package;
    in_package.file = package;
    in_package.section = profiler_section;
    for (const auto& [kernel, blocks] : m_kernels) {
        find_excess(kernel, blocks, in_capture, log);
        find_uncounted(kernel, blocks, in_package, log);
    }
    find_clock_mismatch(in_capture, log);
}

} // namespace zan::profile
