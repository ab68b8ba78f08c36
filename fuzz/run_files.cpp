// SPDX-License-Identifier: Apache-2.0
#include "run_files.h"

#include <algorithm>

#include "memory_file.h"
#include "pkg_editor.h"
#include "temp_dir.h"

namespace {

constexpr std::string_view mark = "--- ";
constexpr std::string_view monitor_name = "profile.mon";

struct Part {
    std::string name;
    std::string_view bytes;
};

// Cuts the first part off the input.
Part next_part(std::string_view& input) {
    input.remove_prefix(mark.size());
    const std::size_t line_end = std::min(input.find('\n'), input.size());
    Part part{std::string(input.substr(0, line_end)), {}};
    input.remove_prefix(std::min(line_end + 1, input.size()));
    std::size_t end = input.starts_with(mark) ? 0 : input.find("\n--- ");
    end = end == std::string_view::npos ? input.size() : end + (end == 0 ? 0 : 1);
    part.bytes = input.substr(0, end);
    input.remove_prefix(end);
    return part;
}

// Makes the package of the sections, and returns the monitor file's text.
std::string_view write_package(std::string_view input, const std::string& path) {
    std::string_view monitor_lines;
    zan_pkg_file* const package = zan_pkg_open_file(path.c_str(), ZAN_PKG_READ_WRITE | ZAN_PKG_CREATE);
    while (input.starts_with(mark)) {
        const Part part = next_part(input);
        if (part.name == monitor_name)
            monitor_lines = part.bytes;
        else
            zan_pkg_add_data_section(package, (".zan." + part.name).c_str(), part.bytes.data(),
                                     part.bytes.size());
    }
    zan_pkg_close_file(package);
    return monitor_lines;
}

} // namespace

void with_run_files(
    std::string_view input,
    const std::function<void(const std::string& package, std::string_view monitor_lines)>& use) {
    static const TempDir folder;
    static const std::string path = folder.path("design.zanx");
    if (input.starts_with(mark)) {
        const std::string_view monitor_lines = write_package(input, path);
        use(path, monitor_lines);
    } else {
        const MemoryFile package(input);
        use(package.path(), "0,0,kernel,1,2,-1,0\n");
    }
}
