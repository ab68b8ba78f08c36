// SPDX-License-Identifier: Apache-2.0
// The text form of a report tree. Measured (bench/README.md): integers take as long as std::to_chars into one
// buffer, floats a quarter of that. The writer holds one buffer, however large the report. A tree is verified
// as a whole before the first byte, as a writer that stopped half-way would leave half a report.
#include <boost/property_tree/json_parser/error.hpp>
#include <vector>

#include "byte_target.h"
#include "json_writer.h"
#include "report_tree.h"
#include "text_buffer.h"
#include "tree_nodes.h"

namespace {

using boost::property_tree::json_parser::json_parser_error;

// Whether the root has no text, and no node both a text and children.
bool is_representable(const ptree& root) {
    if (!root.data().text().empty())
        return false;
    std::vector<const ptree*> open{&root};
    while (!open.empty()) {
        const ptree* node = open.back();
        open.pop_back();
        if (!node->empty() && !node->data().text().empty())
            return false;
        for (const auto& entry : *node)
            open.push_back(&entry.second);
    }
    return true;
}

// False if the target refused a byte.
bool write_text(ByteTarget& target, const ptree& tree, const std::string& path) {
    if (!is_representable(tree))
        throw json_parser_error("ptree contains data that cannot be represented in JSON format", path, 0);
    TextBuffer out(target);
    JsonWriter writer(out);
    write_nodes(tree, writer);
    writer.finish();
    out.flush();
    return out.good();
}

} // namespace

void write_report(const std::string& path, const ptree& tree) {
    FileTarget file(path);
    const bool written = write_text(file, tree, path);
    if (!file.close() || !written)
        throw json_parser_error("write error", path, 0);
}

void write_report(std::ostream& stream, const ptree& tree) {
    StreamTarget target(stream);
    const bool written = write_text(target, tree, std::string());
    if (!written || !stream.flush().good())
        throw json_parser_error("write error", std::string(), 0);
}
