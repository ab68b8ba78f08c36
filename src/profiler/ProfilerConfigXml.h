// SPDX-License-Identifier: Apache-2.0
// Loading profiler descriptions from XML, and the visitors that do it. The format is in docs/profiler.md.
#pragma once

#include "BaseXmlLoader.h"
#include "ProfilerConfig.h"
#include "ProfilerConnectionListVisitor.h"
#include "ProfilerFunctionListVisitor.h"
#include "ProfilerModuleInstListVisitor.h"
#include "ProfilerModuleListVisitor.h"
#include "ProfilerPortListVisitor.h"
#include "ProfilerVisitor.h"

namespace zan::profiler {

// Loads descriptions, one after the other. Each load returns a model that the caller owns, or null with the
// reasons in the error list.
class ProfilerConfigXmlLoader : public zan::xml::BaseXmlLoader {
  public:
    // With `debug` the loads print their progress on standard error.
    explicit ProfilerConfigXmlLoader(bool debug) : m_debug(debug) {}

    // `filename` isn't copied and has to live as long as the load.
    ProfilerConfig* load_file(const char* filename);
    ProfilerConfig* load_xml(const char* text);
    // Deletes the document. For a null one it returns null and reports nothing.
    ProfilerConfig* load_profiler_config(zan::xml::XMLDocument* doc);

  private:
    bool m_debug;
};

} // namespace zan::profiler
