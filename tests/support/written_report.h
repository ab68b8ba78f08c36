// SPDX-License-Identifier: Apache-2.0
// A report as text.
#pragma once

#include <sstream>
#include <string>

#include "report_tree.h"

inline std::string written(const ptree& tree) {
    std::ostringstream stream;
    write_report(stream, tree);
    return stream.str();
}
