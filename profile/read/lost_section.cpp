// SPDX-License-Identifier: Apache-2.0
#include "lost_section.h"

#include <algorithm>
#include <memory>
#include <vector>

#include "pkg_sections.h"

namespace zan::profile {

SectionLoss loss_of(const std::string& package, std::string_view section) {
    const std::unique_ptr<zan_pkg_file, int (*)(zan_pkg_file*)> file(
        zan_pkg_open_file(package.c_str(), ZAN_PKG_READ), zan_pkg_close_file);
    if (!file)
        return SectionLoss::unreadable;
    const std::vector<pkg::SectionInfo> sections = pkg::list_sections(file.get());
    const auto found = std::ranges::find(sections, section, &pkg::SectionInfo::name);
    if (found == sections.end() || found->contents == pkg::Contents::none)
        return SectionLoss::absent;
    return found->contents == pkg::Contents::missing ? SectionLoss::cut : SectionLoss::unreadable;
}

} // namespace zan::profile
