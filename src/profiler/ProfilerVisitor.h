// SPDX-License-Identifier: Apache-2.0
// The outermost visitor of a profiler description, which hands each list to a visitor of its own.
#pragma once

#include "ProfilerConfig.h"
#include "TableVisitor.h"

namespace zan::profiler::xml {

using zan::xml::BaseVisitor;
using zan::xml::ElementRow;
using zan::xml::TableVisitor;
using zan::xml::VisitorCallbacks;
using zan::xml::XMLDocument;
using zan::xml::XMLElement;

// Walks a document. The root is PROFILER, and each list stands in it at most once. Elements refer to earlier
// ones by name, so the order of the lists matters where they do.
class ProfilerVisitor : public TableVisitor {
  public:
    // `config` isn't owned and must not be null.
    ProfilerVisitor(ProfilerConfig* config, VisitorCallbacks* callbacks, bool debug);

    using TableVisitor::VisitExit;
    bool VisitExit(const XMLDocument& doc) override;

  private:
    static Rows elements();
    template <typename ListVisitor>
    bool visit_list(const XMLElement& elem);

    ProfilerConfig* m_config;
};

} // namespace zan::profiler::xml
