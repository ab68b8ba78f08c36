// SPDX-License-Identifier: Apache-2.0
#include <utility>
#include <vector>

#include "folded_nodes.h"
#include "report_tree.h"
#include "tree_sink.h"

namespace {

using Plain = boost::property_tree::ptree;

// Appends what a node holds before its children.
void append_data(const ReportValue& data, Plain& node) {
    data.visit_packed([&](const auto& numbers) {
        for (std::size_t i = 0; i < numbers.size(); ++i)
            node.push_back({std::string(), Plain(report_text(numbers[i]))});
    });
    if (const FoldedNodes* nodes = data.folded()) {
        ptree unfolded;
        TreeSink sink(unfolded);
        nodes->write_to(sink);
        for (const auto& entry : expanded(unfolded))
            node.push_back(entry);
        dismantle(unfolded);
    }
}

} // namespace

// Open nodes stand on a list, as call chains may be deeper than the stack. The nodes aren't written to a
// sink, as that has no place for a text of a node with children, which a tree can hold.
boost::property_tree::ptree expanded(const ptree& tree) {
    Plain result;
    std::vector<std::pair<const ptree*, Plain*>> open{{&tree, &result}};
    while (!open.empty()) {
        const auto [from, to] = open.back();
        open.pop_back();
        to->data() = from->data().text();
        append_data(from->data(), *to);
        for (const auto& [key, child] : *from)
            open.emplace_back(&child, &to->push_back({key, Plain()})->second);
    }
    return result;
}
