// SPDX-License-Identifier: Apache-2.0
// libsmartcols was tried and isn't used. It has no lines below a row, which the sentences of a summary are.
// In the locale "C", which most CI systems have, it shows each byte of a UTF-8 name as "\xNN"; in a UTF-8
// locale it prints the characters that change the direction of writing. And it breaks lines inside of "\xNN".
#include "table.h"

#include <algorithm>
#include <numeric>

#include "printable.h"

namespace zan::tool {

namespace {

constexpr std::size_t column_gap = 2;
constexpr std::size_t sentence_indent = 2;
constexpr const char* ellipsis = "…"; // one column wide

// SGR parameters of ECMA-48, in the order of Style. Only the colors that both dark and bright terminals show.
constexpr const char* style_codes[] = {"", "1", "32", "31", "33", "2"};

// A column is as wide as its widest text unless it was cut, and no column is cut below one.
std::string cut(const std::string& text, std::size_t width) {
    if (display_width(text) <= width)
        return text;
    return std::string(fitting(text, width - 1)) + ellipsis;
}

std::size_t table_width(const std::vector<std::size_t>& widths) {
    const std::size_t gaps = widths.empty() ? 0 : (widths.size() - 1) * column_gap;
    return std::accumulate(widths.begin(), widths.end(), gaps);
}

} // namespace

std::string styled(const std::string& text, Style style, bool colors) {
    if (!colors || style == Style::plain || text.empty())
        return text;
    return std::string("\x1b[") + style_codes[static_cast<std::size_t>(style)] + "m" + text + "\x1b[0m";
}

void Table::add_row(std::vector<TableCell> cells) {
    cells.resize(m_columns.size());
    for (TableCell& cell : cells)
        cell.text = printable(cell.text);
    m_rows.push_back({std::move(cells), {}});
}

void Table::add_sentence(const std::string& text, Style style) {
    m_rows.back().sentences.push_back({printable(text), style});
}

// Takes from the widest of the columns that may be cut, so that of two long ones both stay readable.
std::vector<std::size_t> Table::widths(std::size_t limit) const {
    std::vector<std::size_t> widths;
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        std::size_t width = display_width(m_columns[i].heading);
        for (const Row& row : m_rows)
            width = std::max(width, display_width(row.cells[i].text));
        widths.push_back(width);
    }
    for (std::size_t total = table_width(widths); limit != 0 && total > limit; --total) {
        std::size_t* widest = nullptr;
        for (std::size_t i = 0; i < widths.size(); ++i) {
            const std::size_t least = m_columns[i].cut_to;
            if (least != 0 && widths[i] > least && (!widest || widths[i] > *widest))
                widest = &widths[i];
        }
        if (!widest)
            break;
        --*widest;
    }
    return widths;
}

// Blanks are added only before a text that follows, so that no line ends in them.
std::string Table::line(const std::vector<TableCell>& cells, const std::vector<std::size_t>& widths,
                        bool colors) const {
    std::string line;
    std::size_t blanks = 0;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const std::string text = cut(cells[i].text, widths[i]);
        const std::size_t pad = widths[i] - std::min(widths[i], display_width(text));
        const bool is_right = m_columns[i].align == Align::right;
        blanks += is_right ? pad : 0;
        if (!text.empty()) {
            line.append(blanks, ' ');
            line += styled(text, cells[i].style, colors);
            blanks = 0;
        }
        blanks += column_gap + (is_right ? 0 : pad);
    }
    return line + "\n";
}

std::string Table::text(const TableLayout& layout) const {
    const std::vector<std::size_t> widths = this->widths(layout.width);
    std::vector<TableCell> headings;
    for (const TableColumn& column : m_columns)
        headings.push_back({column.heading, Style::strong});
    std::string text = line(headings, widths, layout.colors);
    for (const Row& row : m_rows) {
        text += line(row.cells, widths, layout.colors);
        for (const TableCell& sentence : row.sentences)
            text +=
                styled(wrapped(sentence.text, layout.width, sentence_indent), sentence.style, layout.colors) +
                "\n";
    }
    return text;
}

std::string wrapped(const std::string& text, std::size_t width, std::size_t indent) {
    const std::string margin(indent, ' ');
    std::string lines;
    std::size_t used = 0; // columns of the last line; 0 before the first word
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find(' ', begin), text.size());
        const std::string word = text.substr(begin, end - begin);
        begin = end + 1;
        const std::size_t needed = display_width(word);
        if (used != 0 && (width == 0 || used + 1 + needed <= width)) {
            lines += " " + word;
            used += 1 + needed;
            continue;
        }
        lines += (used == 0 ? "" : "\n") + margin + word;
        used = indent + needed;
    }
    return lines;
}

} // namespace zan::tool
