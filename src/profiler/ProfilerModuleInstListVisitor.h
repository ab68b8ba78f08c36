// SPDX-License-Identifier: Apache-2.0
// The visitor of the list of module instances, with their source locations and signals.
#pragma once

#include "ProfilerListVisitor.h"

namespace zan::profiler::xml {

// For the arguments see ProfilerListVisitor.
class ProfilerModuleInstListVisitor : public ProfilerListVisitor {
  public:
    ProfilerModuleInstListVisitor(ProfilerConfig* config, BaseVisitor* parent);

  private:
    struct Inst;
    struct Location;
    struct Signal;

    static Rows elements();
    bool visit_moduleinst(const XMLElement& elem);
    bool visit_debug(const XMLElement& elem);
    bool leave_debug(const XMLElement& elem);
    bool visit_callsite(const XMLElement& elem);
    bool visit_signal(const XMLElement& elem);
    bool read_location(const XMLElement& elem, Location& location);
    bool check_file(const XMLElement& elem, const Location& location);
    bool check_cntl_name(const XMLElement& elem, const Signal& signal);

    // Both belong to the model.
    ProfilerConfigModuleInst* m_moduleinst = nullptr; // the one that is being filled
    ProfilerConfigDebug* m_debug = nullptr;           // the one that is open
};

} // namespace zan::profiler::xml
