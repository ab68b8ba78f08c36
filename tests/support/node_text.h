// SPDX-License-Identifier: Apache-2.0
// A report node on one line, for tests to compare: key=value for texts, {...} for objects, [...] for arrays.
#pragma once

#include <string>

#include "report_tree.h"

inline std::string plain_node_text(const boost::property_tree::ptree& node, bool outermost) {
    if (node.empty())
        return node.data();
    const bool array = node.front().first.empty();
    std::string text;
    for (const auto& [key, child] : node) {
        text += text.empty() ? "" : " ";
        text += (array ? "" : key + "=") + plain_node_text(child, false);
    }
    if (array)
        return "[" + text + "]";
    return outermost ? text : "{" + text + "}";
}

inline std::string node_text(const ptree& node) {
    return plain_node_text(expanded(node), true);
}
