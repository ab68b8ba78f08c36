// SPDX-License-Identifier: Apache-2.0
// The report document: a property tree of texts and packed sample arrays, and its text form.
#pragma once

#include <boost/optional.hpp>
#include <boost/property_tree/ptree.hpp>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "report_numbers.h"
#include "sample_list.h"

class FoldedNodes;

// The data of one node of the report: a text, a whole array of numbers, or children that are held folded. A
// packed array stands for as many children with the empty key, each holding the text of one number; folded
// nodes are children before those that the node has.
class ReportValue {
  public:
    ReportValue() = default;
    ReportValue(std::string text) : m_value(std::move(text)) {}
    // An empty list is the empty text, as an array without elements is a node without children.
    template <class T>
    ReportValue(SampleList<T> values) {
        if (!values.empty())
            m_value = std::move(values);
    }

    ReportValue(std::shared_ptr<FoldedNodes> nodes)
        : m_value(std::shared_ptr<const FoldedNodes>(std::move(nodes))) {}

    // The text; empty for a packed array and for folded nodes.
    const std::string& text() const {
        static const std::string none;
        const auto* text = std::get_if<std::string>(&m_value);
        return text ? *text : none;
    }
    bool is_packed() const { return !std::holds_alternative<std::string>(m_value) && !folded(); }
    // The folded nodes, or null if the value is none.
    const FoldedNodes* folded() const {
        const auto* nodes = std::get_if<std::shared_ptr<const FoldedNodes>>(&m_value);
        return nodes ? nodes->get() : nullptr;
    }
    // Calls `function` with the packed SampleList; does nothing for other values.
    template <class Function>
    void visit_packed(Function&& function) const {
        std::visit(
            [&](const auto& value) {
                using Value = std::decay_t<decltype(value)>;
                if constexpr (!std::is_same_v<Value, std::string> &&
                              !std::is_same_v<Value, std::shared_ptr<const FoldedNodes>>)
                    function(value);
            },
            m_value);
    }

    friend bool operator==(const ReportValue&, const ReportValue&) = default;

  private:
    std::variant<std::string, SampleList<int>, SampleList<long long>, SampleList<float>,
                 std::shared_ptr<const FoldedNodes>>
        m_value;
};

// How the tree's put and get see a ReportValue: as the text of a report of texts only. A packed array has
// the empty text, as the node of an array has.
template <class T>
struct ReportTranslator {
    using internal_type = ReportValue;
    using external_type = T;

    boost::optional<T> get_value(const ReportValue& value) {
        return
            typename boost::property_tree::translator_between<std::string, T>::type().get_value(value.text());
    }
    boost::optional<ReportValue> put_value(const T& value) { return ReportValue(report_text(value)); }
};

template <class T>
struct boost::property_tree::translator_between<ReportValue, T> {
    using type = ReportTranslator<T>;
};

using ptree = boost::property_tree::basic_ptree<std::string, ReportValue>;

// A node that stands for a JSON array of the values, in order; T is int, long long or float. An empty list
// makes an empty node. The second form shares the list's storage.
template <class T>
ptree createJSONArray(const std::vector<T>& values);
template <class T>
ptree packed_array(SampleList<T> values);

// A source location: `filename`, `line` and, if `has_column`, `column_num`.
ptree getSourceJSON(const char* filename, int line, int column, bool has_column);

// Appends the child `key` with the given text to a node that has no such child, and returns the child. The
// same as a put, without the search for the key.
ptree& append_text(ptree& node, std::string_view key, std::string text);

// Appends `child` under `key` (the empty key for an array's element) by moving it: `child` is empty
// afterwards.
ptree& append_node(ptree& node, std::string_view key, ptree& child);

// The same document as a tree of texts, every packed value a child with the empty key.
boost::property_tree::ptree expanded(const ptree& tree);

// Frees everything below `tree`, however deeply it is nested. A tree's own destructor recurses.
void dismantle(ptree& tree);

// Writes the text form of the report, whose root becomes an object. Throws
// boost::property_tree::json_parser_error with the path (empty for a stream) as the file name:
// "cannot open file"; "ptree contains data that cannot be represented in JSON format" if the root has a text
// or a node has both a text and children; "write error". The file is opened, and so emptied, before the tree
// is verified.
void write_report(const std::string& path, const ptree& tree);
void write_report(std::ostream& stream, const ptree& tree);
