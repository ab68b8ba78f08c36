// SPDX-License-Identifier: Apache-2.0
// The visitor of the list of connections between instances and counters.
#pragma once

#include "ProfilerListVisitor.h"

namespace zan::profiler::xml {

// For the arguments see ProfilerListVisitor.
class ProfilerConnectionListVisitor : public ProfilerListVisitor {
  public:
    ProfilerConnectionListVisitor(ProfilerConfig* config, BaseVisitor* parent);

  private:
    struct Connection;

    static Rows elements();
    bool visit_connection(const XMLElement& elem);
    bool add_connection(const Connection& connection);
};

} // namespace zan::profiler::xml
