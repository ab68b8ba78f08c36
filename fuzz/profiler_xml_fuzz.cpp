// SPDX-License-Identifier: Apache-2.0
// Any text as a profiler description. Debug output must not change the result.
#include <cstdint>
#include <memory>
#include <sstream>
#include <string>

#include "ProfilerConfigXml.h"

namespace {

// The text of the loaded model, or the reasons why there is none.
std::string load(const std::string& text, bool debug) {
    zan::profiler::ProfilerConfigXmlLoader loader(debug);
    const std::unique_ptr<zan::profiler::ProfilerConfig> config(loader.load_xml(text.c_str()));
    if (!config && loader.get_num_errors() == 0)
        __builtin_trap(); // a failure must have a reason
    std::ostringstream out;
    if (config)
        config->print(out);
    for (unsigned int i = 0; i < loader.get_num_errors(); ++i)
        out << loader.get_error(i);
    return out.str();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    if (load(text, false) != load(text, true))
        __builtin_trap();
    return 0;
}
