// SPDX-License-Identifier: Apache-2.0
// The visitor of the list of modules, which are kinds of blocks.
#pragma once

#include "ProfilerListVisitor.h"

namespace zan::profiler::xml {

// For the arguments see ProfilerListVisitor.
class ProfilerModuleListVisitor : public ProfilerListVisitor {
  public:
    ProfilerModuleListVisitor(ProfilerConfig* config, BaseVisitor* parent);

  private:
    struct Module;

    static Rows elements();
    bool visit_module(const XMLElement& elem);
    bool check_names(const XMLElement& elem, const Module& module);
    bool check_is_kernel_wrapper(const XMLElement& elem, const Module& module);
};

} // namespace zan::profiler::xml
