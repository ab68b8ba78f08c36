// SPDX-License-Identifier: Apache-2.0
#include "ProfilerListVisitor.h"

#include "contract.h"

namespace zan::profiler::xml {

ProfilerListVisitor::ProfilerListVisitor(Rows rows, ProfilerConfig* config, BaseVisitor* parent)
    : TableVisitor(rows, parent), m_config(config) {
    ZAN_CONTRACT(config != nullptr, "config != __null");
}

} // namespace zan::profiler::xml
