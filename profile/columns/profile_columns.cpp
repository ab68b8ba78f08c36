// SPDX-License-Identifier: Apache-2.0
#include "profile_columns.h"

#include <optional>
#include <utility>

#include "node_reader.h"
#include "summary_context.h"
#include "totals.h"
#include "traffic.h"

namespace zan::profile {

namespace {

// Hands each node to the sums, which know its kernel, then to the columns.
class SumsAndColumns final : public NodeTaker {
  public:
    SumsAndColumns(Totals& totals, Columns& columns) : m_totals(totals), m_columns(columns) {}

    void begin_kernel(const KernelNode& kernel) override {
        m_totals.begin_kernel(kernel);
        m_columns.begin_kernel(kernel, m_totals.current_kernel());
    }
    bool needs_sources(std::string_view block) override { return m_totals.needs_sources(block); }
    void block(const BlockNode& block) override {
        m_totals.block(block);
        m_columns.block(block);
    }
    void port(const PortNode& port) override {
        m_totals.port(port);
        m_columns.port(port);
    }
    void end_kernel() override {
        m_totals.end_kernel();
        m_columns.end_kernel();
    }
    void transfer(const TransferNode& transfer) override {
        m_totals.transfer(transfer);
        m_columns.transfer(transfer);
    }
    void board(const std::string& type) override { m_totals.board(type); }
    void board_memory(const BoardMemoryNode& memory) override { m_totals.board_memory(memory); }
    void clock(const std::string& text) override { m_totals.clock(text); }
    void versions(const std::string& program, const std::string& zanx) override {
        m_totals.versions(program, zanx);
    }

  private:
    Totals& m_totals;
    Columns& m_columns;
};

double mean_while(const TrafficIntegral& traffic, const std::vector<TimeSpan>& spans) {
    double sum = 0.0;
    double length = 0.0;
    for (const TimeSpan& span : spans) {
        sum += traffic.between(static_cast<double>(span.begin), static_cast<double>(span.end));
        length += time_between(span.begin, span.end);
    }
    return length > 0.0 ? sum / length : 0.0;
}

std::vector<double> bins_of(const SummaryContext& context, const TrafficIntegral& traffic,
                            const TimeSpan& span) {
    const double width = time_between(span.begin, span.end) / static_cast<double>(num_memory_bins);
    std::vector<double> bins;
    if (!(width > 0.0) || !context.megabytes_per_second(0.0))
        return bins;
    for (std::size_t i = 0; i < num_memory_bins; ++i) {
        const double begin = static_cast<double>(span.begin) + static_cast<double>(i) * width;
        bins.push_back(*context.megabytes_per_second(traffic.between(begin, begin + width) / width));
    }
    return bins;
}

void add_traffic(ProfileColumns& profile, const SummaryContext& context,
                 const std::vector<JoinedKernel>& kernels, const std::string& memory) {
    SummaryRun& run = *context.runs.front();
    const TrafficIntegral traffic(run.memory(memory));
    if (traffic.empty())
        return;
    profile.memory_bins[memory] = bins_of(context, traffic, run.times.span);
    for (std::size_t i = 0; i < kernels.size(); ++i) {
        const double rate = mean_while(traffic, kernels[i].front().times().work);
        const Value bandwidth = context.megabytes_per_second(rate);
        if (bandwidth && *bandwidth > 0.0)
            profile.kernel_traffic[i][memory] = *bandwidth;
    }
}

// What the summary doesn't hold, and the totals do.
void add_rest(ProfileColumns& profile, const Totals& totals, const Value& nanoseconds) {
    const Totals* const runs[] = {&totals};
    const SummaryContext context(runs, nanoseconds);
    const std::vector<JoinedKernel> kernels = join_kernels(context);
    profile.kernel_traffic.resize(kernels.size());
    for (const JoinedKernel& kernel : kernels)
        profile.kernel_places.push_back(kernel.front().place);
    for (const BoardMemoryNode& memory : totals.memories())
        add_traffic(profile, context, kernels, memory.name);
}

} // namespace

std::variant<std::unique_ptr<ProfileColumns>, InputFault> read_columns(const Input& input,
                                                                       const InputOptions& options,
                                                                       const std::string& folder) {
    auto profile = std::make_unique<ProfileColumns>(folder);
    std::optional<SumsAndColumns> taker;
    std::optional<NodeReader> reader;
    InputOptions with_columns = options;
    with_columns.sink_of = [&](Totals& totals) -> ReportSink& {
        taker.emplace(totals, profile->columns);
        return reader.emplace(*taker);
    };
    with_columns.done = [&](const Totals& totals) { add_rest(*profile, totals, options.nanoseconds); };
    auto read = summarize_inputs({&input, 1}, with_columns);
    if (auto* fault = std::get_if<InputFault>(&read))
        return std::move(*fault);
    if (!reader)
        return InputFault{input.name + ": a saved summary has no samples; name the report"};
    profile->summary = std::get<ProfileSummary>(std::move(read));
    return profile;
}

} // namespace zan::profile
