// SPDX-License-Identifier: Apache-2.0
#include "ProfilerConfigXml.h"

namespace zan::profiler {

ProfilerConfig* ProfilerConfigXmlLoader::load_file(const char* filename) {
    return load_profiler_config(parse_file(filename));
}

ProfilerConfig* ProfilerConfigXmlLoader::load_xml(const char* xml) {
    return load_profiler_config(parse_xml(xml));
}

ProfilerConfig* ProfilerConfigXmlLoader::load_profiler_config(zan::xml::XMLDocument* doc) {
    return load_model<ProfilerConfig, xml::ProfilerVisitor>(doc, m_debug);
}

} // namespace zan::profiler
