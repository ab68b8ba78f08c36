// SPDX-License-Identifier: Apache-2.0
#include "report_properties.h"

#include <algorithm>
#include <array>
#include <boost/property_tree/json_parser.hpp>
#include <boost/property_tree/ptree.hpp>
#include <optional>
#include <sstream>
#include <string_view>

namespace {

using boost::property_tree::ptree;

// Reads what a report may hold of JSON: objects, arrays and texts.
class Scanner {
  public:
    explicit Scanner(std::string_view text) : m_text(text) {}

    // Whether the text is one object and nothing else.
    bool is_report() {
        skip_blanks();
        const bool is_object = m_at < m_text.size() && m_text[m_at] == '{';
        return is_object && value() && (skip_blanks(), m_at == m_text.size());
    }

  private:
    void skip_blanks() { m_at = std::min(m_text.find_first_not_of(" \n", m_at), m_text.size()); }
    bool take(char c) {
        skip_blanks();
        const bool is_next = m_at < m_text.size() && m_text[m_at] == c;
        m_at += is_next;
        return is_next;
    }
    bool value() {
        if (take('{'))
            return rest_of_list('}', [&] { return text() && take(':') && value(); });
        if (take('['))
            return rest_of_list(']', [&] { return value(); });
        return text();
    }
    template <class Element>
    bool rest_of_list(char end, Element element) {
        while (element()) {
            if (take(end))
                return true;
            if (!take(','))
                return false;
        }
        return false; // an empty list would be written as a text
    }
    bool text() {
        if (!take('"'))
            return false;
        while (m_at < m_text.size() && m_text[m_at] != '"') {
            if (!character())
                return false;
        }
        return take('"');
    }
    bool character() {
        const auto byte = static_cast<unsigned char>(m_text[m_at++]);
        if (byte != '\\')
            return byte >= 0x20 && byte < 0x80;
        const char escape = m_at < m_text.size() ? m_text[m_at++] : 'x';
        if (escape != 'u')
            return std::string_view("bfnr/\"\\").find(escape) != std::string_view::npos;
        const std::string_view digits = m_text.substr(m_at, 4);
        m_at += digits.size();
        return digits.size() == 4 && digits.starts_with("00") &&
               digits.find_first_not_of("0123456789ABCDEF") == std::string_view::npos;
    }

    std::string_view m_text;
    std::size_t m_at = 0;
};

ptree parsed(const std::string& report) {
    ptree tree;
    std::istringstream stream(report);
    boost::property_tree::read_json(stream, tree);
    return tree;
}

// Length of a list; 0 if it is absent.
std::size_t length(const ptree& node, const std::string& key) {
    const auto list = node.get_child_optional(key);
    return list ? list->size() : 0;
}

// Lists that stand for each sample, if they are there.
constexpr std::array<const char*, 7> lists_of_counts = {"occupancy_samples",
                                                        "stall_samples",
                                                        "idle_samples",
                                                        "cache_hit_samples",
                                                        "average_channel_depth_samples",
                                                        "max_channel_depth_samples",
                                                        "non_aligned_access_samples"};

class FaultFinder {
  public:
    std::vector<std::string> faults;

    void check_kernel(const ptree& node) {
        m_num_samples = node.get<std::size_t>("num_samples");
        expect(m_num_samples > 0, node, "an invocation without a sample");
        for (const char* list : {"device_ids", "command_queue_id", "sample_timestamps"})
            expect(length(node, list) == m_num_samples, node, list);
        if (length(node, "sample_timestamps") > 0)
            expect(
                node.get<std::string>("end_time") == node.get_child("sample_timestamps").back().second.data(),
                node, "end_time");
        for (const auto& [key, child] : node.get_child("children")) {
            if (child.get<std::string>("type") == "extmem")
                check_port(child, length(node, "total_cycles_between_samples"));
            else
                check_inst(child, length(node, "total_cycles_between_samples"));
        }
    }

  private:
    void expect(bool condition, const ptree& node, const std::string& what) {
        if (!condition)
            faults.push_back(node.get<std::string>("name", "") + ": " + what);
    }

    void check_inst(const ptree& node, std::size_t num_cycles) {
        const ptree& details = node.get_child("module_inst_details");
        for (const char* list : lists_of_counts) {
            if (details.get_child_optional(list))
                expect(length(details, list) == m_num_samples, node, list);
        }
        if (details.get<std::string>("mem_type", "") == "__loop")
            return expect(!details.get_child_optional("activity_samples"), node, "a loop has no activity");
        const std::size_t num_activity = length(details, "activity_samples");
        expect(num_activity == std::min(m_num_samples, num_cycles), node, "activity_samples");
        for (const char* list : {"bandwidth_samples", "bandwidth_eff_samples"}) {
            if (details.get_child_optional(list))
                expect(length(details, list) == num_activity, node, list);
        }
        expect(length(details, "average_burst_size") <= m_num_samples, node, "average_burst_size");
    }

    void check_port(const ptree& node, std::size_t num_cycles) {
        const std::size_t num_values = length(node, "global_used_bw");
        expect(num_values <= num_cycles, node, "global_used_bw");
        for (const char* list : {"avg_write_burst", "avg_read_burst"})
            expect(length(node, list) == num_values, node, list);
        for (const char* flag : {"write_only", "read_only"})
            expect(node.get<std::string>(flag, "true") == "true", node, flag);
        expect(!node.get_child_optional("write_only") || !node.get_child_optional("read_only"), node,
               "read_only and write_only");
    }

    std::size_t m_num_samples = 0;
};

// One element of a list; empty if the list doesn't hold one for each sample.
std::string element(const ptree& node, const std::string& key, std::size_t index, std::size_t num_samples) {
    if (length(node, key) != num_samples)
        return "";
    return std::next(node.get_child(key).begin(), static_cast<std::ptrdiff_t>(index))->second.data();
}

std::string sample_row(const ptree& kernel, std::size_t index) {
    const std::size_t count = kernel.get<std::size_t>("num_samples");
    std::string row = kernel.get<std::string>("name");
    for (const char* list :
         {"device_ids", "command_queue_id", "sample_timestamps", "total_cycles_between_samples"})
        row += " " + element(kernel, list, index, count);
    for (const auto& [key, child] : kernel.get_child("children")) {
        const auto details = child.get_child_optional("module_inst_details");
        if (!details)
            continue;
        row += " | " + child.get<std::string>("name");
        // An average takes another count where requests were counted in the same invocation.
        for (const char* list : lists_of_counts) {
            if (list != std::string_view("average_channel_depth_samples"))
                row += " " + element(*details, list, index, count);
        }
    }
    return row;
}

// Where a monitor line may end up other than in the report: in a message that says it was left out.
constexpr std::array<std::string_view, 6> left_out_messages = {
    "warning: empty .mon line ",
    "ERROR: Unable to parse ",
    "ERROR: Unexpected number of values.",
    "----> kernel in .mon at line ",
    "profile.mon has some kernel that does not have any moduleinsts",
    "Warning: number of .mon entries does not match",
};

bool says_left_out(std::string_view line) {
    return std::any_of(left_out_messages.begin(), left_out_messages.end(),
                       [&](std::string_view message) { return line.starts_with(message); });
}

// The start of the field with this index; unset if the line has no such field that a comma ends.
std::optional<std::size_t> field_start(const std::string& line, std::size_t index) {
    std::size_t start = 0;
    for (std::size_t i = 0; i <= index; ++i) {
        const std::size_t comma = line.find(',', start);
        if (comma == line.npos)
            return std::nullopt;
        if (i < index)
            start = comma + 1;
    }
    return start;
}

} // namespace

std::vector<std::string> report_faults(const std::string& report) {
    if (!Scanner(report).is_report())
        return {"it is no JSON of objects, arrays and texts"};
    FaultFinder finder;
    const ptree tree = parsed(report);
    for (const auto& [key, node] : tree.get_child("kernels.nodes"))
        finder.check_kernel(node);
    return finder.faults;
}

std::multiset<std::string> sample_rows(const std::string& report) {
    std::multiset<std::string> rows;
    const ptree tree = parsed(report);
    for (const auto& [key, node] : tree.get_child("kernels.nodes")) {
        for (std::size_t i = 0; i < node.get<std::size_t>("num_samples"); ++i)
            rows.insert(sample_row(node, i));
    }
    return rows;
}

std::size_t accounted_lines(const std::string& report, const std::string& messages) {
    const ptree tree = parsed(report);
    std::size_t count = tree.get_child("memtransfers.nodes").size();
    for (const auto& [key, node] : tree.get_child("kernels.nodes"))
        count += node.get<std::size_t>("num_samples");
    std::istringstream stream(messages);
    for (std::string line; std::getline(stream, line);)
        count += says_left_out(line);
    return count;
}

std::size_t count_lines(const std::string& monitor, const std::string& text) {
    std::size_t count = 0;
    std::istringstream stream(monitor);
    for (std::string line; std::getline(stream, line);)
        count += line.find(text) != line.npos;
    return count;
}

std::string without_restarts(const std::string& monitor) {
    constexpr std::size_t start_field = 3;
    constexpr std::size_t most_digits = 18; // more may be out of range
    std::string result;
    std::istringstream stream(monitor);
    for (std::string line; std::getline(stream, line);) {
        const auto start = field_start(line, start_field);
        const std::size_t size = start ? line.find(',', *start) - *start : 0;
        const bool is_number = start && size > 0 && size <= most_digits &&
                               line.substr(*start, size).find_first_not_of("0123456789") == line.npos;
        if (is_number)
            line.replace(*start, size, "1");
        result += line;
        result += stream.eof() ? "" : "\n";
    }
    return result;
}
