// SPDX-License-Identifier: Apache-2.0
// The layout of all tables for people.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace zan::tool {

enum class Align { left, right };

// What a text means, which is shown by its color.
enum class Style { plain, strong, good, bad, warning, faint };
// The text between the control sequences of its style; the text itself if `colors` is false.
std::string styled(const std::string& text, Style style, bool colors);

struct TableColumn {
    std::string heading;
    Align align = Align::left;
    // How many columns of the terminal it keeps if the table is too wide; columns that may be cut get
    // narrower, the widest first, and end in "…". 0: it is never cut.
    std::size_t cut_to = 0;
};

struct TableCell {
    std::string text; // need not be printable
    Style style = Style::plain;
};

struct TableLayout {
    std::size_t width = 0; // columns of the terminal; 0: as wide as it gets
    bool colors = false;
};

// Rows of cells, each with any number of sentences below it. No line ends in blanks.
class Table {
  public:
    explicit Table(std::vector<TableColumn> columns) : m_columns(std::move(columns)) {}

    // As many cells as there are columns; missing ones are empty.
    void add_row(std::vector<TableCell> cells);
    // A sentence below the last row, indented, wrapped at the width between words.
    void add_sentence(const std::string& text, Style style = Style::plain);

    bool empty() const { return m_rows.empty(); }
    // The heading and the rows, each line with its newline.
    std::string text(const TableLayout& layout) const;

  private:
    struct Row {
        std::vector<TableCell> cells; // printable
        std::vector<TableCell> sentences;
    };
    std::vector<std::size_t> widths(std::size_t limit) const;
    std::string line(const std::vector<TableCell>& cells, const std::vector<std::size_t>& widths,
                     bool colors) const;

    std::vector<TableColumn> m_columns;
    std::vector<Row> m_rows;
};

// The printable text in lines of at most `width` columns, broken between words; a longer word has a line of
// its own. Each line begins with `indent` blanks. 0: one line.
std::string wrapped(const std::string& text, std::size_t width, std::size_t indent);

} // namespace zan::tool
