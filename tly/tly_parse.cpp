#include "tly_parse.h"

#include <cstdlib>
#include <cstring>
#include <memory>

#include "diagnostics.h"
#include "pkg_editor.h"
#include "tly_parse_section.h"

namespace {

// The clock frequency as the timing report spells it. Only a line that ends in a newline counts.
std::string clockText(std::string_view report) {
    constexpr std::string_view label = "Actual clock freq: ";
    const std::size_t found = report.find(label);
    if (found == report.npos)
        return "0.0";
    const std::string_view rest = report.substr(found + label.size());
    const std::size_t newline = rest.find('\n');
    return newline == rest.npos ? "0.0" : std::string(rest.substr(0, newline));
}

} // namespace

int get_zanx_sect(const char* section, const char* packagePath, char** buffer) {
    constexpr int no_section = 1;
    constexpr int no_package = 2;
    // The handle is released without closing the package: the run ends soon, and nothing was written.
    const std::unique_ptr<zan_pkg_file, decltype(&std::free)> package(
        zan_pkg_open_file(packagePath, ZAN_PKG_READ), &std::free);
    if (!package)
        return no_package;
    std::size_t size = 0;
    if (zan_pkg_section_exists(package.get(), section, &size) == 0)
        return no_section;
    // Zeros first: a section that can't be read is an empty text.
    *buffer = new char[size + 1]();
    zan_pkg_read_section(package.get(), section, *buffer, size + 1);
    return 0;
}

int parseVersionFile(ptree* tree, const char* packagePath) {
    const PackageSection section = readSection(".zan.version", packagePath);
    if (!section.text) {
        diagnose("Error: unable to get version zanx section\n");
        return 1;
    }
    const std::string_view version = section.text.get();
    tree->put("versions.zanx_version", std::string(version.substr(0, version.find('\n'))));
    return 0;
}

int parseVelmoraReport(ptree* tree, const char* packagePath) {
    const PackageSection section = readSection(".zan.velmora_report", packagePath);
    if (!section.text) {
        diagnose("Error: unable to get velmora report zanx section\n");
        return 1;
    }
    // The doubled dot leads to the one element of the array, whose key is empty.
    tree->get_child("run_info.nodes..").put("fmax", clockText(section.text.get()));
    return 0;
}
