// SPDX-License-Identifier: Apache-2.0
#include "ProfilerVisitor.h"

#include "ProfilerConnectionListVisitor.h"
#include "ProfilerFunctionListVisitor.h"
#include "ProfilerModuleInstListVisitor.h"
#include "ProfilerModuleListVisitor.h"
#include "ProfilerPortListVisitor.h"
#include "contract.h"

namespace zan::profiler::xml {

using zan::xml::call;
using zan::xml::descend;
using zan::xml::outermost;
using enum zan::xml::Occurrence;

ProfilerVisitor::ProfilerVisitor(ProfilerConfig* config, VisitorCallbacks* callbacks, bool debug)
    : TableVisitor(elements(), callbacks, debug), m_config(config) {
    ZAN_CONTRACT(config != nullptr, "config != __null");
}

ProfilerVisitor::Rows ProfilerVisitor::elements() {
    using Self = ProfilerVisitor;
    static constexpr ElementRow rows[] = {
        {"PROFILER", outermost, once, descend},
        {"FUNCTION_LIST", "PROFILER", once, call<&Self::visit_list<ProfilerFunctionListVisitor>>},
        {"MODULE_LIST", "PROFILER", once, call<&Self::visit_list<ProfilerModuleListVisitor>>},
        {"PORT_LIST", "PROFILER", once, call<&Self::visit_list<ProfilerPortListVisitor>>},
        {"MODULEINST_LIST", "PROFILER", once, call<&Self::visit_list<ProfilerModuleInstListVisitor>>},
        {"CONNECTION_LIST", "PROFILER", once, call<&Self::visit_list<ProfilerConnectionListVisitor>>},
    };
    return rows;
}

// No list is required, so there is nothing to check. The base would print a line in debug mode, which this
// document never had.
bool ProfilerVisitor::VisitExit(const XMLDocument&) {
    return !m_has_error;
}

template <typename ListVisitor>
bool ProfilerVisitor::visit_list(const XMLElement& elem) {
    ListVisitor child(m_config, this);
    return hand_over(elem, &child);
}

} // namespace zan::profiler::xml
