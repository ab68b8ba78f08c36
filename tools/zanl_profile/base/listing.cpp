#include "listing.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <nlohmann/json.hpp>

#include "failure.h"
#include "files.h"

namespace zan::tool {

namespace {

constexpr int json_indent = 4;
constexpr const char* column_gap = "  ";

std::string json_text(const Listing& listing) {
    using Json = nlohmann::ordered_json;
    Json rows = Json::array();
    for (const auto& cells : listing.rows) {
        Json row = Json::object();
        for (std::size_t i = 0; i < cells.size(); ++i)
            std::visit([&](const auto& value) { row[listing.columns[i]] = value; }, cells[i]);
        rows.push_back(std::move(row));
    }
    // Names of sections may be any bytes, and JSON is UTF-8: what isn't is replaced, not refused.
    const Json document = {{listing.subject_key, listing.subject}, {listing.rows_key, std::move(rows)}};
    return document.dump(json_indent, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string shown(const Cell& cell) {
    const auto* const number = std::get_if<std::uint64_t>(&cell);
    return number ? fmt::to_string(*number) : printable(std::get<std::string>(cell));
}

std::string heading(std::string key) {
    std::ranges::transform(key, key.begin(),
                           [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return key;
}

// A column's lines, the heading first, each as wide as the widest.
std::vector<std::string> column_lines(const Listing& listing, std::size_t column) {
    std::vector<std::string> lines = {heading(listing.columns[column])};
    bool is_number = false; // of all cells alike
    for (const auto& row : listing.rows) {
        is_number = std::holds_alternative<std::uint64_t>(row[column]);
        lines.push_back(shown(row[column]));
    }
    std::size_t width = 0;
    for (const std::string& line : lines)
        width = std::max(width, line.size());
    for (std::string& line : lines)
        line = is_number ? fmt::format("{:>{}}", line, width) : fmt::format("{:<{}}", line, width);
    return lines;
}

std::string table_text(const Listing& listing) {
    std::vector<std::string> lines(listing.rows.size() + 1);
    for (std::size_t column = 0; column < listing.columns.size(); ++column) {
        if (std::ranges::find(listing.json_only, listing.columns[column]) != listing.json_only.end())
            continue;
        const std::vector<std::string> cells = column_lines(listing, column);
        for (std::size_t i = 0; i < lines.size(); ++i)
            lines[i] += (lines[i].empty() ? "" : column_gap) + cells[i];
    }
    std::string text;
    for (std::string& line : lines) {
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + "\n";
    }
    return text;
}

} // namespace

void print(const Listing& listing, bool as_json) {
    const std::string text = as_json ? json_text(listing) : table_text(listing);
    write_all(STDOUT_FILENO, text.data(), text.size(), standard_output);
}

} // namespace zan::tool
