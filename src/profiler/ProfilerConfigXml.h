// Loading profiler descriptions from XML, and the visitors that do it. docs/profiler.md tells the format.
#pragma once

#include "BaseXmlLoader.h"
#include "ProfilerConfig.h"
#include "ProfilerModuleInstListVisitor.h"

namespace zan::profiler {

// Loads descriptions, one after the other. Each load gives a model that the caller owns, or null with the
// reasons in the error list.
class ProfilerConfigXmlLoader : public zan::xml::BaseXmlLoader {
  public:
    // With `debug` the loads tell their progress on standard error.
    explicit ProfilerConfigXmlLoader(bool debug) : m_debug(debug) {}

    // `filename` isn't copied and has to live as long as the load.
    ProfilerConfig* load_file(const char* filename);
    ProfilerConfig* load_xml(const char* xml);
    // Deletes the document. A null one gives null and reports nothing.
    ProfilerConfig* load_profiler_config(zan::xml::XMLDocument* doc);

  private:
    bool m_debug;
};

} // namespace zan::profiler
