// SPDX-License-Identifier: Apache-2.0
// The document that a run starts from.
#include "document.h"

#include <gtest/gtest.h>

#include "node_text.h"
#include "tly_constants.h"

namespace {

TEST(Document, HasTheVersionAndEmptyLists) {
    EXPECT_EQ(node_text(empty_document()),
              "json_type=Corvane Profiler JSON versions={profiler_json_version=" + tly_version +
                  "} kernels={nodes=} boards={nodes=} memtransfers={nodes=} channels={nodes=} "
                  "run_info={nodes=[{type=runinfo}]}");
}

TEST(Document, HasOneNodeOfRunInformation) {
    const ptree tree = empty_document();
    EXPECT_EQ(tree.get_child("run_info.nodes").size(), 1u);
    EXPECT_EQ(tree.get<std::string>("run_info.nodes..type"), "runinfo");
}

} // namespace
