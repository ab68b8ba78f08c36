// SPDX-License-Identifier: Apache-2.0
// The document that a run fills in.
#pragma once

#include "report_tree.h"

// A report without results: the version of the program, empty lists of kernels, boards, transfers and
// channels, and the node with the run's information, which is to get the clock.
ptree empty_document();
