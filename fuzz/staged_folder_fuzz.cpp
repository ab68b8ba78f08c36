// SPDX-License-Identifier: Apache-2.0
// Any entries unpacked into any folder. Whatever they are called, nothing outside of it changes and nothing
// temporary stays; if all went well, each file is there with what was written last.
#include <filesystem>
#include <map>

#include "failure.h"
#include "staged_folder.h"
#include "target_folder.h"
#include "target_tree.h"
#include "whole_file.h"

namespace {

using namespace zan::tool;
namespace fs = std::filesystem;

// The files of the entries, by their names without what is no step, and their bytes.
using Files = std::map<std::string, std::string>;

std::string normal(const std::string& name) {
    std::string path;
    for (const std::string_view step : steps_of(name))
        path.append("/").append(step);
    return path;
}

// As the command does it. Throws Failure.
Files unpack(const std::vector<Step>& steps, const std::string& folder) {
    TargetFolder target(folder);
    StagedFolder staged(folder);
    Files files;
    for (const Step& step : steps) {
        if ((step.kind != 'd' && step.kind != 'f') || !name_fault(step.name).empty())
            continue;
        target.check(step.name, step.kind == 'd');
        if (step.kind == 'd') {
            staged.add_folder(step.name);
            continue;
        }
        const std::string bytes = std::to_string(files.size());
        Descriptor file = staged.add_file(step.name, 0);
        write_all(file.get(), bytes.data(), bytes.size(), step.name);
        staged.end_file(std::move(file), step.name);
        files[normal(step.name)] = bytes;
    }
    staged.commit();
    return files;
}

void expect_nothing_temporary(const std::string& folder) {
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(folder, ignored))
        expect(entry.path().filename().string().find(".unfinished-") == std::string::npos);
}

} // namespace

// Waiting for the disk would be most of the time.
extern "C" int __wrap_fsync(int) {
    return 0;
}
extern "C" int __wrap_syncfs(int) {
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto steps = steps_of_input(data, size);
    const TargetTree tree;
    for (const Step& step : steps)
        tree.make(step);
    try {
        for (const auto& [name, bytes] : unpack(steps, tree.target())) {
            const fs::path path = tree.target() + name;
            if (path.native().size() < 4000)
                expect(fs::is_regular_file(fs::symlink_status(path)) && read_file(path.string()) == bytes);
        }
    } catch (const Failure&) { // of entries that are refused
    }
    expect_nothing_temporary(tree.target());
    tree.expect_outside_untouched();
    return 0;
}
