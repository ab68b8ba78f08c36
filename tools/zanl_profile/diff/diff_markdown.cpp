// SPDX-License-Identifier: Apache-2.0
// Names come from files of unknown origin, so nothing in them may be taken for markup: they stand in code
// spans, and what a code span or a table can't hold is replaced.
#include "diff_markdown.h"

#include "printable.h"

namespace zan::tool {

namespace {

// In a code span a backquote can't be escaped, and a bar ends a cell of a table even there.
std::string code(const std::string& text) {
    std::string shown = "`";
    for (const char c : printable(text)) {
        if (c == '`')
            shown += '\'';
        else if (c == '|')
            shown += "\\|";
        else
            shown += c;
    }
    return shown + "`";
}

std::string table_text(const std::vector<ChangeRow>& rows, const std::string& heading,
                       const std::string& first, const std::string& second) {
    if (rows.empty())
        return {};
    std::string text = "\n### " + heading + "\n\n| " + first + " | " + second +
                       " | base | new | delta |\n|---|---|--:|--:|--:|\n";
    for (const ChangeRow& row : rows)
        text += "| " + code(row.subject) + " | " + code(row.metric) + " | " + row.before + " | " + row.after +
                " | " + row.delta + " |\n";
    return text;
}

std::string items_text(const std::vector<std::string>& lines, const std::string& heading) {
    if (lines.empty())
        return {};
    std::string text = "\n### " + heading + "\n\n";
    for (const std::string& line : lines)
        text += "- " + code(line) + "\n";
    return text;
}

} // namespace

std::string diff_markdown(const DiffView& view) {
    std::string text = "## Profile: " + code(view.new_run) + " against " + code(view.base) + "\n";
    text += table_text(view.failures, "Failed", "of", "rule");
    text += items_text(view.rule_results, "Rules");
    text += items_text(view.notes, "Notes");
    if (!view.has_changes())
        text += "\nNo changes.\n";
    text += table_text(view.worse, "Worse", "of", "metric");
    text += table_text(view.better, "Better", "of", "metric");
    text += table_text(view.other, "Other changes", "of", "metric");
    text += items_text(view.appeared, "Appeared");
    text += items_text(view.disappeared, "Disappeared");
    text += items_text(view.moved, "Moved");
    return text;
}

} // namespace zan::tool
