// SPDX-License-Identifier: Apache-2.0
// Any names as entries of any folder: TargetFolder must say of each what a look at each step on its way says.
#include <sys/stat.h>

#include <cerrno>

#include "failure.h"
#include "target_folder.h"
#include "target_tree.h"

namespace {

using namespace zan::tool;

enum class Answer { absent, there, refused };

// The slow way: the status of each path that leads to the entry.
Answer look(const std::string& folder, const std::string& name, bool is_folder) {
    const auto steps = steps_of(name);
    std::string path = folder;
    struct stat status;
    if (::lstat(path.c_str(), &status) != 0)
        return Answer::absent;
    for (std::size_t i = 0; i < steps.size(); ++i) {
        path += "/";
        path += steps[i];
        if (::lstat(path.c_str(), &status) != 0)
            return errno == ENOENT ? Answer::absent : Answer::refused;
        const bool needs_folder = is_folder || i + 1 < steps.size();
        if (S_ISLNK(status.st_mode) || needs_folder != static_cast<bool>(S_ISDIR(status.st_mode)))
            return Answer::refused;
    }
    return Answer::there;
}

Answer check(TargetFolder& target, const std::string& name, bool is_folder) {
    try {
        return target.check(name, is_folder) ? Answer::there : Answer::absent;
    } catch (const Failure&) {
        return Answer::refused;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t max_path = 3900; // of which the slow way is capable
    const auto steps = steps_of_input(data, size);
    const TargetTree tree;
    for (const Step& step : steps)
        tree.make(step);
    TargetFolder target(tree.target());
    for (const Step& step : steps) {
        if ((step.kind == 'd' || step.kind == 'f') && name_fault(step.name).empty() &&
            step.name.size() < max_path)
            expect(check(target, step.name, step.kind == 'd') ==
                   look(tree.target(), step.name, step.kind == 'd'));
    }
    tree.expect_outside_untouched();
    return 0;
}
