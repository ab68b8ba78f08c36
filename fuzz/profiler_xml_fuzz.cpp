// Any text as a profiler description. Whether the loader tells its progress doesn't change what comes of it.
#include <cstdint>
#include <memory>
#include <sstream>
#include <string>

#include "ProfilerConfigXml.h"

namespace {

// The model that a load gives, or the reasons why there is none.
std::string load(const std::string& text, bool tells_progress) {
    zan::profiler::ProfilerConfigXmlLoader loader(tells_progress);
    const std::unique_ptr<zan::profiler::ProfilerConfig> config(loader.load_xml(text.c_str()));
    if (!config && loader.get_num_errors() == 0)
        __builtin_trap(); // a failure owes a reason
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
