// SPDX-License-Identifier: Apache-2.0
#include "package_sections.h"

#include <string>
#include <string_view>
#include <utility>

#include "diagnostics.h"
#include "input_names.h"

namespace {

// The clock frequency as the timing report spells it. Only a line that ends in a newline counts.
std::string clock_text(std::string_view report) {
    constexpr std::string_view label = "Actual clock freq: ";
    const std::size_t found = report.find(label);
    if (found == std::string_view::npos)
        return "0.0";
    const std::string_view rest = report.substr(found + label.size());
    const std::size_t newline = rest.find('\n');
    return newline == std::string_view::npos ? "0.0" : std::string(rest.substr(0, newline));
}

} // namespace

void Package::close() {
    zan_pkg_close_file(std::exchange(m_file, nullptr));
}

PackageSection Package::read(const char* section) {
    if (!m_file)
        m_file = zan_pkg_open_file(m_path, ZAN_PKG_READ);
    if (!m_file)
        return {SectionStatus::no_package, nullptr};
    std::size_t size = 0;
    if (zan_pkg_section_exists(m_file, section, &size) == 0)
        return {SectionStatus::no_section, nullptr};
    // Zeros first: a section that can't be read is an empty text.
    std::unique_ptr<char[]> text(new char[size + 1]());
    zan_pkg_read_section(m_file, section, text.get(), size + 1);
    return {SectionStatus::found, std::move(text)};
}

StageResult parse_version(ptree& tree, Package& package) {
    const PackageSection section = package.read(version_section);
    if (!section.text) {
        diagnose(Message::no_version);
        return StageResult::failed;
    }
    const std::string_view version = section.text.get();
    tree.put("versions.zanx_version", std::string(version.substr(0, version.find('\n'))));
    return StageResult::done;
}

StageResult parse_timing_report(ptree& tree, Package& package) {
    const PackageSection section = package.read(timing_report_section);
    if (!section.text) {
        diagnose(Message::no_timing_report);
        return StageResult::failed;
    }
    // The doubled dot leads to the one element of the array, whose key is empty.
    tree.get_child("run_info.nodes..").put("fmax", clock_text(section.text.get()));
    return StageResult::done;
}
