// SPDX-License-Identifier: Apache-2.0
#include "series_json.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zan::tool {

namespace {

using profile::SeriesRow;

template <typename WriteEntry>
void write_column(PageJson& json, std::string_view name, const std::vector<SeriesRow>& rows,
                  WriteEntry write_entry) {
    json.key(name).begin_array();
    for (const SeriesRow& row : rows)
        write_entry(row);
    json.end_array();
}

void write_numbers(PageJson& json, const std::vector<int>& numbers) {
    json.begin_array();
    for (const int number : numbers)
        json.integer(number);
    json.end_array();
}

void write_bound(PageJson& json, const SeriesRow& row, std::int64_t units) {
    if (row.has_numbers)
        json.decimal(units, row.digits);
    else
        json.number(std::nullopt);
}

void write_marks(PageJson& json, const SeriesRow& row) {
    json.begin_array();
    for (const profile::MarkRun& run : row.marks) {
        json.begin_array();
        json.count(run.from);
        json.count(run.count);
        json.integer(static_cast<int>(run.mark));
        json.end_array();
    }
    json.end_array();
}

// Numbers of other series, by the numbers of those that have any.
void write_levels(PageJson& json, const std::vector<SeriesRow>& rows, std::vector<int> SeriesRow::*levels) {
    json.begin_object();
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (!(rows[i].*levels).empty())
            write_numbers(json.key(std::to_string(i)), rows[i].*levels);
    }
    json.end_object();
}

} // namespace

void write_series_table(PageJson& json, const profile::SeriesTable& table) {
    const std::vector<SeriesRow>& rows = table.rows();
    json.begin_object();
    write_column(json, "n", rows, [&](const SeriesRow& row) { json.count(row.size); });
    write_column(json, "chunk", rows, [&](const SeriesRow& row) { json.integer(row.first_chunk); });
    write_column(json, "digits", rows, [&](const SeriesRow& row) { json.integer(row.digits); });
    write_column(json, "enc", rows, [&](const SeriesRow& row) { write_numbers(json, row.encodings); });
    write_column(json, "min", rows, [&](const SeriesRow& row) { write_bound(json, row, row.least); });
    write_column(json, "max", rows, [&](const SeriesRow& row) { write_bound(json, row, row.greatest); });
    json.key("marks").begin_object();
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (!rows[i].marks.empty())
            write_marks(json.key(std::to_string(i)), rows[i]);
    }
    json.end_object();
    write_levels(json.key("pyramid"), rows, &SeriesRow::pyramid);
    write_levels(json.key("peaks"), rows, &SeriesRow::peaks);
    json.end_object();
}

} // namespace zan::tool
