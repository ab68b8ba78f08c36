// SPDX-License-Identifier: Apache-2.0
#include "completion_script.h"

#include <algorithm>

namespace zan::profile {

// Made by the build of completion.bash, completion.zsh and completion.fish.
extern const std::string_view completion_bash;
extern const std::string_view completion_zsh;
extern const std::string_view completion_fish;

} // namespace zan::profile

namespace zan::tool {

namespace {

struct Shell {
    std::string_view name;
    std::string_view begin;        // of the script
    std::string_view table_begin;  // before the first row
    std::string_view between_rows; // these are within quotes where the table is one text
    std::string_view table_end;
    const std::string_view& functions;
};

// A table is one text, whose lines are the rows, except for fish, where it is a list of texts.
const Shell shells[] = {
    {"bash", "", "_zanl_profile_table='", "\n", "'\n", profile::completion_bash},
    {"zsh", "#compdef zanl-profile\n", "typeset -g _zanl_profile_table='", "\n", "'\n",
     profile::completion_zsh},
    {"fish", "", "set -g __zanl_profile_table '", "' \\\n    '", "'\n", profile::completion_fish},
};

// Rows are lines, with their parts between bars; only the last part may have one itself.
std::string row_text(const CompletionRow& row) {
    std::string text = row.command + "|" + row.what + "|" + row.name + "|" + row.kind + "|" + row.text;
    std::ranges::replace(text, '\n', ' ');
    return text;
}

} // namespace

std::string quoted_for_shell(std::string_view shell, std::string_view text) {
    std::string quoted;
    for (const char letter : text) {
        if (shell == "fish" && (letter == '\'' || letter == '\\'))
            quoted += '\\';
        quoted += letter;
        if (shell != "fish" && letter == '\'')
            quoted += "\\''";
    }
    return quoted;
}

std::string completion_script(std::string_view shell, const std::vector<CompletionRow>& table) {
    const Shell* const found = std::ranges::find(shells, shell, &Shell::name);
    if (found == std::end(shells))
        return "";
    std::string script(found->begin);
    script += "# Completes command lines of zanl-profile. Made by: zanl-profile completion " +
              std::string(shell) + "\n";
    script += found->table_begin;
    for (const CompletionRow& row : table) {
        if (&row != &table.front())
            script += found->between_rows;
        script += quoted_for_shell(shell, row_text(row));
    }
    return script.append(found->table_end).append(found->functions);
}

} // namespace zan::tool
