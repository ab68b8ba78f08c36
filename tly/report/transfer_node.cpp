// SPDX-License-Identifier: Apache-2.0
#include "transfer_node.h"

void write_mem_transfer(ReportSink& node, std::string_view name, int device_id, int command_queue_id,
                        long long start_time, long long end_time) {
    node.text("type", "memtransfers");
    node.text("type_transfer", name);
    node.number("device_id", device_id);
    node.number("command_queue_id", command_queue_id);
    node.number("start_time", start_time);
    node.number("end_time", end_time);
}
