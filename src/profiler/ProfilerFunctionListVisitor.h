// SPDX-License-Identifier: Apache-2.0
// The visitor of the list of kernel functions.
#pragma once

#include "ProfilerListVisitor.h"

namespace zan::profiler::xml {

// For the arguments see ProfilerListVisitor.
class ProfilerFunctionListVisitor : public ProfilerListVisitor {
  public:
    ProfilerFunctionListVisitor(ProfilerConfig* config, BaseVisitor* parent);

  private:
    struct Function;

    static Rows elements();
    bool visit_function(const XMLElement& elem);
    bool check_num_compute_units(const XMLElement& elem, const Function& function);
};

} // namespace zan::profiler::xml
