// SPDX-License-Identifier: Apache-2.0
#include "source_node.h"

#include "tree_sink.h"

void write_source(ReportSink& node, const char* filename, int line, std::optional<int> column) {
    node.text("filename", filename);
    node.number("line", line);
    if (column)
        node.number("column_num", *column);
}

ptree getSourceJSON(const char* filename, int line, int column, bool has_column) {
    ptree node;
    TreeSink sink(node);
    write_source(sink, filename, line, has_column ? std::optional(column) : std::nullopt);
    return node;
}
