// Any text as a profiler description.
#include <cstdint>
#include <memory>
#include <sstream>
#include <string>

#include "ProfilerConfigXml.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    zan::profiler::ProfilerConfigXmlLoader loader(false);
    const std::unique_ptr<zan::profiler::ProfilerConfig> config(loader.load_xml(text.c_str()));
    if (!config && loader.get_num_errors() == 0)
        __builtin_trap(); // a failure owes a reason
    if (config) {
        std::ostringstream out;
        config->print(out);
    }
    return 0;
}
