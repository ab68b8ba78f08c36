// SPDX-License-Identifier: Apache-2.0
// The visitor of the list of counter ports.
#pragma once

#include "ProfilerListVisitor.h"

namespace zan::profiler::xml {

// For the arguments see ProfilerListVisitor.
class ProfilerPortListVisitor : public ProfilerListVisitor {
  public:
    ProfilerPortListVisitor(ProfilerConfig* config, BaseVisitor* parent);

  private:
    static Rows elements();
    bool visit_port(const XMLElement& elem);
};

} // namespace zan::profiler::xml
