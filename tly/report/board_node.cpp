// SPDX-License-Identifier: Apache-2.0
// A board without memories has `children` as well, as an empty text.
#include "board_node.h"

void write_board(ReportSink& node, std::string_view board_type,
                 const std::unordered_map<std::string, float>& max_bandwidths,
                 const std::unordered_map<std::string, unsigned int>& max_burst_counts) {
    node.text("type", "board");
    node.text("board_type", board_type);
    node.open("children", Form::array);
    for (const auto& [name, bandwidth] : max_bandwidths) {
        node.open({}, Form::object);
        node.text("type", "globalmem");
        node.text("global_memory_name", name);
        node.number("max_theoretical_globalmem_bw", bandwidth);
        const auto burst = max_burst_counts.find(name);
        if (burst != max_burst_counts.end())
            node.number("max_burst_count", burst->second);
        node.close();
    }
    node.close();
}
