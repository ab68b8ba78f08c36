// SPDX-License-Identifier: Apache-2.0
#include "export_input.h"

#include "export_taker.h"
#include "node_reader.h"

namespace zan::profile {

std::optional<InputFault> export_input(const Input& input, const InputOptions& options,
                                       ExportWriter& writer) {
    std::optional<ExportTaker> taker;
    std::optional<NodeReader> reader;
    InputOptions with_export = options;
    with_export.sink_of = [&](Totals& of) -> ReportSink& {
        taker.emplace(of, writer);
        return reader.emplace(*taker);
    };
    with_export.summarized = [&](const ProfileSummary& summary, const Totals& totals) {
        writer.finish({summary, totals, taker->ids()});
    };
    const auto read = summarize_inputs({&input, 1}, with_export);
    if (const auto* const fault = std::get_if<InputFault>(&read))
        return *fault;
    if (!taker)
        return InputFault{input.name + ": a saved summary has no samples; name the report"};
    return std::nullopt;
}

} // namespace zan::profile
