// SPDX-License-Identifier: Apache-2.0
#include "report_tree.h"

#include <deque>

template <class T>
ptree packed_array(SampleList<T> values) {
    return ptree(ReportValue(std::move(values)));
}

template <class T>
ptree createJSONArray(const std::vector<T>& values) {
    return packed_array(SampleList<T>(values));
}

// The types of numbers that a report has.
template ptree packed_array(SampleList<int>);
template ptree packed_array(SampleList<long long>);
template ptree packed_array(SampleList<float>);
template ptree createJSONArray(const std::vector<int>&);
template ptree createJSONArray(const std::vector<long long>&);
template ptree createJSONArray(const std::vector<float>&);

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
