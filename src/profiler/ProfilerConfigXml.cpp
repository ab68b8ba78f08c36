// SPDX-License-Identifier: Apache-2.0
#include "ProfilerConfigXml.h"

#include "ProfilerQuickReader.h"

namespace zan::profiler {

ProfilerConfig* ProfilerConfigXmlLoader::load_file(const char* filename) {
    return load_profiler_config(parse_file(filename));
}

ProfilerConfig* ProfilerConfigXmlLoader::load_xml(const char* text) {
    // In debug mode the document is printed.
    if (text && !m_debug) {
        begin_text();
        if (std::unique_ptr<ProfilerConfig> config = xml::read_quickly(text))
            return config.release();
    }
    return load_profiler_config(parse_xml(text));
}

ProfilerConfig* ProfilerConfigXmlLoader::load_profiler_config(zan::xml::XMLDocument* doc) {
    return load_model<ProfilerConfig, xml::ProfilerVisitor>(doc, m_debug);
}

} // namespace zan::profiler
