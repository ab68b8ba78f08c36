// SPDX-License-Identifier: Apache-2.0
#include "listing.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>

#include "files.h"
#include "json_output.h"
#include "table.h"

namespace zan::tool {

namespace {

void print_json(const Listing& listing) {
    JsonOutput json(listing.schema, listing.schema_version, standard_output_target());
    json.member(listing.subject_key, listing.subject);
    json.begin_array(listing.rows_key);
    for (const auto& cells : listing.rows) {
        json.begin_object();
        for (std::size_t i = 0; i < cells.size(); ++i)
            std::visit([&](const auto& value) { json.member(listing.columns[i], value); }, cells[i]);
        json.end_object();
    }
    json.end_array();
    json.finish();
}

TableCell shown(const Cell& cell) {
    const auto* const number = std::get_if<std::uint64_t>(&cell);
    return {number ? fmt::to_string(*number) : std::get<std::string>(cell)};
}

std::string heading(std::string key) {
    std::ranges::transform(key, key.begin(),
                           [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return key;
}

// Numbers stand to the right; all cells of a column are of one kind.
Align alignment(const Listing& listing, std::size_t column) {
    const bool is_number =
        !listing.rows.empty() && std::holds_alternative<std::uint64_t>(listing.rows.front()[column]);
    return is_number ? Align::right : Align::left;
}

std::string table_text(const Listing& listing) {
    std::vector<std::size_t> shown_columns;
    std::vector<TableColumn> columns;
    for (std::size_t i = 0; i < listing.columns.size(); ++i) {
        if (std::ranges::find(listing.json_only, listing.columns[i]) != listing.json_only.end())
            continue;
        shown_columns.push_back(i);
        columns.push_back({heading(listing.columns[i]), alignment(listing, i)});
    }
    Table table(std::move(columns));
    for (const auto& row : listing.rows) {
        std::vector<TableCell> cells;
        cells.reserve(shown_columns.size());
        for (const std::size_t i : shown_columns)
            cells.push_back(shown(row[i]));
        table.add_row(std::move(cells));
    }
    return table.text({});
}

} // namespace

void print(const Listing& listing, bool as_json) {
    if (as_json)
        return print_json(listing);
    const std::string text = table_text(listing);
    write_all(STDOUT_FILENO, text.data(), text.size(), standard_output);
}

} // namespace zan::tool
