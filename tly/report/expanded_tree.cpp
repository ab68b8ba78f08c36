#include <utility>
#include <vector>

#include "folded_nodes.h"
#include "report_tree.h"
#include "tree_sink.h"

namespace {

// Rebuilds `source` below `target` with the tree type of the target, with a list of open nodes in place of
// recursion. `copy_data` fills in one node from its original.
template <class Source, class Target, class CopyData>
void rebuild(const Source& source, Target& target, CopyData copy_data) {
    std::vector<std::pair<const Source*, Target*>> open{{&source, &target}};
    while (!open.empty()) {
        const auto [from, to] = open.back();
        open.pop_back();
        copy_data(*from, *to);
        for (const auto& [key, child] : *from)
            open.emplace_back(&child, &to->push_back({key, Target()})->second);
    }
}

} // namespace

boost::property_tree::ptree expanded(const ptree& tree) {
    using Plain = boost::property_tree::ptree;
    Plain result;
    rebuild(tree, result, [](const ptree& from, Plain& to) {
        to.data() = from.data().text();
        from.data().visit_packed([&](const auto& values) {
            for (std::size_t i = 0; i < values.size(); ++i)
                to.push_back({std::string(), Plain(report_text(values[i]))});
        });
        if (const FoldedNodes* nodes = from.data().folded()) {
            ptree unfolded;
            TreeSink sink(unfolded);
            nodes->write_to(sink);
            for (const auto& entry : expanded(unfolded))
                to.push_back(entry);
            dismantle(unfolded);
        }
    });
    return result;
}

ptree packed(const boost::property_tree::ptree& document) {
    ptree result;
    rebuild(document, result, [](const auto& from, ptree& to) { to.data() = from.data(); });
    return result;
}
