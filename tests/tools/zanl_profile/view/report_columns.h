// SPDX-License-Identifier: Apache-2.0
// The values of a report, one list for each kernel, block and metric, as texts: slow, and plain.
#pragma once

#include <rapidjson/document.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "page_reader.h"

// By a line with the kernel's name, compute unit and place, and one with the column: "block/NAME/stall",
// "port/MEMORY/INTERFACE/PORT/bw", "time".
using ValueColumns = std::map<std::string, std::vector<std::string>>;

// The report writes each byte of a name as a character of its own.
inline std::string name_text(const rapidjson::Value& node, const char* key) {
    const auto found = node.FindMember(key);
    if (found == node.MemberEnd())
        return {};
    const std::string text = found->value.GetString();
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (byte < 0x80)
            bytes += text[i];
        else
            bytes += static_cast<char>((byte & 3U) << 6 | (static_cast<unsigned char>(text[++i]) & 63U));
    }
    return bytes;
}

// Texts of an array; none if there is no such key, or its value is "".
inline std::vector<std::string> array_texts(const rapidjson::Value& node, const char* key) {
    std::vector<std::string> texts;
    const auto found = node.FindMember(key);
    if (found != node.MemberEnd() && found->value.IsArray()) {
        for (const auto& text : found->value.GetArray())
            texts.emplace_back(text.GetString());
    }
    return texts;
}

class ReportColumns {
  public:
    explicit ReportColumns(const std::string& report) {
        m_document.Parse(report.c_str());
        for (const char* list : {"kernels", "memtransfers"}) {
            for (const auto& node : nodes(list)) {
                const long long start = std::stoll(node["start_time"].GetString());
                m_start = m_has_start ? std::min(m_start, start) : start;
                m_has_start = true;
            }
        }
        for (const auto& node : nodes("kernels"))
            add_kernel(node);
        for (auto& [name, column] : columns)
            column.resize(m_sizes.at(name.substr(0, name.find('\n') + 1)));
    }

    ValueColumns columns;

  private:
    rapidjson::Value::ConstArray nodes(const char* list) const {
        static const rapidjson::Value none(rapidjson::kArrayType);
        const auto found = m_document.FindMember(list);
        if (found == m_document.MemberEnd() || !found->value.IsObject() || !found->value["nodes"].IsArray())
            return none.GetArray();
        return found->value["nodes"].GetArray();
    }

    // Values of the samples from `first` on; nothing if there are none.
    void put(const std::string& name, std::size_t first, std::vector<std::string> texts, std::size_t count) {
        if (texts.empty())
            return;
        texts.resize(std::min(texts.size(), count));
        auto& column = columns[name];
        column.resize(first);
        column.insert(column.end(), texts.begin(), texts.end());
    }

    std::vector<std::string> stamps_after_start(const rapidjson::Value& node) const {
        std::vector<std::string> texts;
        if (node["sample_timestamps"].IsArray()) {
            for (const auto& stamp : node["sample_timestamps"].GetArray())
                texts.push_back(std::to_string(std::stoll(stamp.GetString()) - m_start));
        }
        return texts;
    }

    void add_kernel(const rapidjson::Value& node);

    rapidjson::Document m_document;
    bool m_has_start = false;
    long long m_start = 0;
    std::map<std::string, std::size_t> m_sizes; // samples of each kernel
};

inline void ReportColumns::add_kernel(const rapidjson::Value& node) {
    std::string place;
    if (node.HasMember("sourcefile") && node["sourcefile"].IsObject())
        place = name_text(node["sourcefile"], "filename") + " " + name_text(node["sourcefile"], "line");
    const std::string kernel =
        name_text(node, "name") + " " + name_text(node, "compute_unit") + " " + place + "\n";
    const std::size_t first = m_sizes[kernel];
    const auto stamps = stamps_after_start(node);
    const std::size_t count = stamps.size();
    m_sizes[kernel] = first + count;
    put(kernel + "time", first, stamps, count);
    const auto cycles = array_texts(node, "total_cycles_between_samples");
    put(kernel + "cycles", first, cycles.size() > count ? std::vector<std::string>() : cycles, count);
    put(kernel + "device", first, array_texts(node, "device_ids"), count);
    put(kernel + "queue", first, array_texts(node, "command_queue_id"), count);
    static constexpr std::pair<const char*, const char*> block_keys[] = {
        {"valid", "occupancy_samples"},
        {"stall", "stall_samples"},
        {"idle", "idle_samples"},
        {"requests", "activity_samples"},
        {"bandwidth", "bandwidth_samples"},
        {"efficiency", "bandwidth_eff_samples"},
        {"fill", "average_channel_depth_samples"},
        {"max_fill", "max_channel_depth_samples"},
        {"hits", "cache_hit_samples"},
        {"unaligned", "non_aligned_access_samples"},
        {"burst", "average_burst_size"}};
    static constexpr std::pair<const char*, const char*> port_keys[] = {
        {"bw", "global_used_bw"}, {"rburst", "avg_read_burst"}, {"wburst", "avg_write_burst"}};
    if (!node.HasMember("children") || !node["children"].IsArray())
        return;
    for (const auto& child : node["children"].GetArray()) {
        if (name_text(child, "type") == "extmem") {
            const std::string port = kernel + "port/" + name_text(child, "name") + "/" +
                                     name_text(child, "interface") + "/" + name_text(child, "port") + "/";
            for (const auto& [name, key] : port_keys)
                put(port + name, first, array_texts(child, key), count);
        } else {
            for (const auto& [name, key] : block_keys) {
                const auto texts = array_texts(child["module_inst_details"], key);
                if (std::string_view(name) != "burst" || texts.size() == count)
                    put(kernel + "block/" + name_text(child, "name") + "/" + name, first, texts, count);
            }
        }
    }
}

// The same of a page.
inline ValueColumns columns_of_page(const PageReader& page) {
    ValueColumns columns;
    for (const auto& kernel : page.head()["kernels"].GetArray()) {
        const int line = kernel["line"].GetInt();
        const std::string file = kernel["file"].GetString();
        const std::string name = std::string(kernel["name"].GetString()) + " " +
                                 std::to_string(kernel["cu"].GetInt()) + " " +
                                 (file.empty() && line == 0 ? "" : file + " " + std::to_string(line)) + "\n";
        for (const char* key : {"time", "cycles", "device", "queue"})
            columns[name + key] = page.texts(kernel[key].GetInt());
        for (const auto& block : kernel["blocks"].GetArray()) {
            for (const auto& series : block["series"].GetObject())
                columns[name + "block/" + block["name"].GetString() + "/" + series.name.GetString()] =
                    page.texts(series.value.GetInt());
        }
        for (const auto& port : kernel["ports"].GetArray()) {
            for (const char* key : {"bw", "rburst", "wburst"})
                columns[name + "port/" + port["mem"].GetString() + "/" + port["interface"].GetString() + "/" +
                        port["port"].GetString() + "/" + key] = page.texts(port[key].GetInt());
        }
    }
    // A column without any value is in no report.
    std::erase_if(columns, [](const auto& column) {
        return std::ranges::all_of(column.second, [](const std::string& text) { return text.empty(); });
    });
    return columns;
}
