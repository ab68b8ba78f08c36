// SPDX-License-Identifier: Apache-2.0
// Nodes of transfers.
#include <gtest/gtest.h>

#include "node_text.h"
#include "tly_json.h"

namespace {

TEST(TransferNode, HasItsValuesAsTheyStand) {
    EXPECT_EQ(node_text(getMemTransferJSON(".mem_transfer_read", 1, -2, 3400, 3000)),
              "type=memtransfers type_transfer=.mem_transfer_read device_id=1 command_queue_id=-2 "
              "start_time=3400 end_time=3000");
}

} // namespace
