// SPDX-License-Identifier: Apache-2.0
#include "diff_text.h"

#include "printable.h"

namespace zan::tool {

namespace {

constexpr std::size_t least_name = 12;

std::string rows_text(const std::vector<ChangeRow>& rows, const std::string& heading,
                      const std::string& second, Style style, const TableLayout& layout) {
    if (rows.empty())
        return {};
    Table table({{heading, Align::left, least_name},
                 {second, Align::left, least_name},
                 {"BASE", Align::right},
                 {"NEW", Align::right},
                 {"DELTA", Align::right}});
    for (const ChangeRow& row : rows)
        table.add_row({{row.subject}, {row.metric}, {row.before}, {row.after}, {row.delta, style}});
    return "\n" + table.text(layout);
}

std::string list_text(const std::vector<std::string>& lines, const std::string& heading,
                      const TableLayout& layout) {
    if (lines.empty())
        return {};
    std::string text = "\n" + styled(heading, Style::strong, layout.colors) + "\n";
    for (const std::string& line : lines)
        text += wrapped(printable(line), layout.width, 2) + "\n";
    return text;
}

} // namespace

std::string diff_text(const DiffView& view, const TableLayout& layout) {
    std::string text = "base  " + printable(view.base) + "\nnew   " + printable(view.new_run) + "\n";
    text += list_text(view.notes, "NOTE", layout);
    if (!view.has_changes())
        text += "\nno changes\n";
    text += rows_text(view.worse, "WORSE", "METRIC", Style::bad, layout);
    text += rows_text(view.better, "BETTER", "METRIC", Style::good, layout);
    text += rows_text(view.other, "OTHER CHANGES", "METRIC", Style::plain, layout);
    text += list_text(view.appeared, "APPEARED", layout);
    text += list_text(view.disappeared, "DISAPPEARED", layout);
    text += list_text(view.moved, "MOVED", layout);
    text += rows_text(view.failures, "FAILED FOR", "RULE", Style::bad, layout);
    text += list_text(view.rule_results, "RULES", layout);
    return text;
}

} // namespace zan::tool
