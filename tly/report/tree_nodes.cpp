// SPDX-License-Identifier: Apache-2.0
// Trees with call chains can be deeper than the stack, so open nodes stand on a list.
#include "tree_nodes.h"

#include <algorithm>
#include <vector>

#include "folded_nodes.h"

namespace {

struct OpenNode {
    ptree::const_iterator next;
    ptree::const_iterator end;
};

Form form_of(const ptree& node) {
    const bool has_keys =
        std::any_of(node.begin(), node.end(), [](const auto& entry) { return !entry.first.empty(); });
    return has_keys ? Form::object : Form::array;
}

// Writes what a node holds before its children.
void write_data(const ReportValue& data, ReportSink& sink) {
    data.visit_packed([&](const auto& numbers) {
        for (std::size_t i = 0; i < numbers.size(); ++i)
            sink.number({}, numbers[i]);
    });
    if (const FoldedNodes* nodes = data.folded())
        nodes->write_to(sink);
}

} // namespace

void write_nodes(const ptree& root, ReportSink& sink) {
    std::vector<OpenNode> open;
    const auto enter = [&](const ptree& node) {
        open.push_back({node.begin(), node.end()});
        write_data(node.data(), sink);
    };
    enter(root);
    for (;;) {
        if (open.back().next == open.back().end) {
            open.pop_back();
            if (open.empty())
                return;
            sink.close();
            continue;
        }
        const auto& entry = *open.back().next++;
        const std::string& key = entry.first; // a structured binding can't be captured before clang 16
        const ptree& child = entry.second;
        if (!child.empty() || child.data().folded()) {
            sink.open(key, form_of(child));
            enter(child);
        } else if (child.data().is_packed()) {
            child.data().visit_packed([&](const auto& numbers) { sink.array(key, numbers); });
        } else {
            sink.text(key, child.data().text());
        }
    }
}
