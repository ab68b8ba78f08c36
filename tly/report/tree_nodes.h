// SPDX-License-Identifier: Apache-2.0
// The nodes of a report tree, for any sink.
#pragma once

#include "report_sink.h"
#include "report_tree.h"

// Writes the children of `root`, and all below them, in their order. A node is an array unless one of its
// children has a key; packed numbers and folded nodes come before the other children. The depth isn't bounded
// by the stack. A text of a node with children is left out.
void write_nodes(const ptree& root, ReportSink& sink);
