// SPDX-License-Identifier: Apache-2.0
// The text form of a report once more, written for being right and nothing else: one rule after the other,
// recursion, and strings. Tests hold the real writer against it.
#pragma once

#include <boost/property_tree/ptree.hpp>
#include <cstddef>
#include <string>

inline std::string slow_quoted(const std::string& text) {
    std::string result = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        const bool plain = byte == 0x20 || byte == 0x21 || (byte >= 0x23 && byte <= 0x2E) ||
                           (byte >= 0x30 && byte <= 0x5B) || (byte >= 0x5D && byte <= 0x7F);
        if (plain) {
            result += c;
        } else if (byte == 0x08) {
            result += "\\b";
        } else if (byte == 0x0C) {
            result += "\\f";
        } else if (byte == 0x0A) {
            result += "\\n";
        } else if (byte == 0x0D) {
            result += "\\r";
        } else if (byte == '/') {
            result += "\\/";
        } else if (byte == '"') {
            result += "\\\"";
        } else if (byte == '\\') {
            result += "\\\\";
        } else {
            const char* digits = "0123456789ABCDEF";
            result += "\\u00";
            result += digits[byte / 16];
            result += digits[byte % 16];
        }
    }
    return result + "\"";
}

inline std::string slow_node(const boost::property_tree::ptree& node, std::size_t depth) {
    if (depth > 0 && node.empty())
        return slow_quoted(node.data());

    bool array = depth > 0;
    for (const auto& [key, child] : node)
        array = array && key.empty();

    const std::string inner(4 * (depth + 1), ' ');
    std::string result = array ? "[\n" : "{\n";
    std::size_t written = 0;
    for (const auto& [key, child] : node) {
        result += inner;
        if (!array) {
            result += slow_quoted(key) + ":";
            result += child.empty() ? " " : "\n" + inner;
        }
        result += slow_node(child, depth + 1);
        ++written;
        if (written != node.size())
            result += ",";
        result += "\n";
    }
    return result + std::string(4 * depth, ' ') + (array ? "]" : "}");
}

inline std::string slow_report(const boost::property_tree::ptree& root) {
    return slow_node(root, 0) + "\n";
}
