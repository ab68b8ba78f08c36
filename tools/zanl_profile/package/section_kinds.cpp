// SPDX-License-Identifier: Apache-2.0
#include "section_kinds.h"

#include <vector>

#include "input_names.h"
#include "pkg_stream.h"
#include "tly_constants.h"

namespace zan::tool {

namespace {

struct NamedKind {
    std::string_view name; // or how names begin
    bool is_prefix;
    SectionKind kind;
};

// Made at first use, as constants of other sources may not be there before main() begins.
const std::vector<NamedKind>& named_kinds() {
    static const std::vector<NamedKind> kinds = {
        {version_section, false, {"version", "version"}},
        {board_section, false, {"board", "board description"}},
        {timing_report_section, false, {"timing", "timing report"}},
        {profiler_section, false, {"profiler", "profiler description"}},
        {opt_rpt_elf_section, false, {"optimization", "optimization report"}},
        {file_name_elf_section, true, {"file", "name of a source file"}},
        {kernel_source_elf_section_prefix, true, {"source", "kernel source"}},
    };
    return kinds;
}

} // namespace

SectionKind kind_of_name(std::string_view name) {
    for (const NamedKind& each : named_kinds()) {
        if (each.is_prefix ? name.starts_with(each.name) : name == each.name)
            return each.kind;
    }
    return {"other", ""};
}

// A stream is compressed, so it is known by the magic number of its first record, not by its first bytes.
bool begins_stream(const char* bytes, std::size_t size) {
    zan::pkg::StreamReader reader(bytes, size);
    std::uint32_t magic = 0;
    return size != 0 && reader.start() && reader.read(&magic, sizeof magic) &&
           magic == zan::pkg::record_magic;
}

} // namespace zan::tool
