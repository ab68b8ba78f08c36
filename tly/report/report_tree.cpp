#include "report_tree.h"

#include <deque>
#include <iterator>

#include "folded_nodes.h"

template <class T>
ptree packed_array(SampleList<T> values) {
    return ptree(ReportValue(std::move(values)));
}

template <class T>
ptree createJSONArray(const std::vector<T>& values) {
    return packed_array(SampleList<T>(values));
}

template ptree packed_array(SampleList<int>);
template ptree packed_array(SampleList<long long>);
template ptree packed_array(SampleList<float>);
template ptree createJSONArray(const std::vector<int>&);
template ptree createJSONArray(const std::vector<long long>&);
template ptree createJSONArray(const std::vector<float>&);

ptree getSourceJSON(const char* filename, int line, int column, bool has_column) {
    ptree node;
    append_text(node, "filename", filename);
    append_text(node, "line", report_text(line));
    if (has_column)
        append_text(node, "column_num", report_text(column));
    return node;
}

ptree& append_text(ptree& node, std::string_view key, std::string text) {
    ptree& child = node.push_back({std::string(key), ptree()})->second;
    child.data() = std::move(text);
    return child;
}

ptree& append_node(ptree& node, std::string_view key, ptree& child) {
    ptree& place = node.push_back({std::string(key), ptree()})->second;
    place.swap(child);
    return place;
}

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
            nodes->tell(sink);
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

void dismantle(ptree& tree) {
    // A deque, because its elements stay where they are: a tree that is moved is copied.
    std::deque<ptree> open(1);
    open.front().swap(tree);
    while (!open.empty()) {
        ptree node;
        node.swap(open.back());
        open.pop_back();
        for (auto& [key, child] : node) {
            if (!child.empty())
                open.emplace_back().swap(child);
        }
    }
}
