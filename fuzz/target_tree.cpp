// SPDX-License-Identifier: Apache-2.0
#include "target_tree.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "target_folder.h"
#include "whole_file.h"

namespace fs = std::filesystem;

std::vector<Step> steps_of_input(const std::uint8_t* data, std::size_t size) {
    std::string_view rest(reinterpret_cast<const char*>(data), size);
    std::vector<Step> steps;
    while (!rest.empty()) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        if (!line.empty())
            steps.push_back({line[0], std::string(line.substr(1, line.find('\0') - 1))});
    }
    return steps;
}

void expect(bool holds) {
    if (!holds)
        std::abort();
}

TargetTree::TargetTree() {
    fs::create_directories(m_dir.path("outside/folder"));
    write_file(m_dir.path("outside/file"), "kept");
    fs::create_directory(target());
}

void TargetTree::make(const Step& step) const {
    std::error_code ignored;
    if (step.kind == 'N')
        fs::remove_all(target(), ignored);
    const auto parts = zan::tool::steps_of(step.name);
    if (!zan::tool::name_fault(step.name).empty() || parts.empty() || !fs::exists(target(), ignored))
        return;
    // Only in folders of the tree itself: a link would lead the fuzzer out of it.
    fs::path path = target();
    for (std::size_t i = 0; i + 1 < parts.size(); ++i) {
        path /= parts[i];
        if (!fs::is_directory(fs::symlink_status(path, ignored)) && !fs::create_directory(path, ignored))
            return;
    }
    path /= parts.back();
    if (fs::exists(fs::symlink_status(path, ignored)))
        return;
    constexpr const char* link_targets[] = {"outside/file", "outside/folder", "outside", "nowhere", "to"};
    if (step.kind == 'D')
        fs::create_directory(path, ignored);
    else if (step.kind == 'F' && path.native().size() < 4000 && parts.back().size() < 250)
        write_file(path.string(), "old");
    else if (step.kind == 'L')
        fs::create_symlink(m_dir.path(link_targets[step.name.size() % std::size(link_targets)]), path,
                           ignored);
}

void TargetTree::expect_outside_untouched() const {
    std::size_t count = 0;
    for (const auto& entry : fs::recursive_directory_iterator(m_dir.path("outside")))
        count += entry.path().filename() == "folder" || entry.path().filename() == "file" ? 1 : 100;
    expect(count == 2 && read_file(m_dir.path("outside/file")) == "kept");
    for (const auto& entry : fs::directory_iterator(m_dir.path()))
        expect(entry.path().filename() == "outside" || entry.path().filename() == "to");
}
