// SPDX-License-Identifier: Apache-2.0
#include "target_folder.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

#include "failure.h"

namespace zan::tool {

std::string name_fault(const std::string& name) {
    if (name.empty())
        return "it is empty";
    if (name.front() == '/')
        return "it is absolute";
    if (std::ranges::count(steps_of(name), "..") != 0)
        return "it has '..' in it";
    return {};
}

// The folder itself may be a link: the caller has named it.
TargetFolder::TargetFolder(std::string folder) : m_folder(std::move(folder)) {
    Descriptor root(::open(m_folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (root.get() >= 0)
        m_place.emplace(std::move(root));
    else if (errno != ENOENT && errno != ENOTDIR)
        throw system_failure("can't look at " + in_quotes(m_folder));
}

bool TargetFolder::check(const std::string& name, bool is_folder) {
    const auto steps = steps_of(name);
    if (!m_place || steps.empty())
        return m_place.has_value();
    const std::span folders(steps.data(), steps.size() - (is_folder ? 0 : 1));
    const std::size_t taken = m_place->go_towards(folders);
    if (taken < folders.size()) {
        const int error = errno;
        if (error == ENOENT)
            return false; // nor is anything below it there
        check_step(folders[taken], name, true);
        errno = error;
        throw system_failure("can't look at " + in_quotes(m_folder + "/" + name));
    }
    return is_folder || check_step(steps.back(), name, false);
}

// Looks at a link itself and not at its target.
bool TargetFolder::check_step(std::string_view step, const std::string& name, bool needs_folder) {
    std::string path = m_place->path();
    path = m_folder + "/" + path + (path.empty() ? "" : "/") + std::string(step);
    const std::string there = in_quotes(path);
    struct stat status;
    const int parent = m_place->fd();
    if (parent < 0 || ::fstatat(parent, std::string(step).c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        if (errno == ENOENT)
            return false;
        throw system_failure("can't look at " + there);
    }
    if (S_ISLNK(status.st_mode))
        throw Failure("refused the name " + in_quotes(name) + ": " + there + " is a symbolic link");
    if (needs_folder && !S_ISDIR(status.st_mode))
        throw Failure("can't write " + in_quotes(name) + ": " + there + " is no folder");
    if (!needs_folder && S_ISDIR(status.st_mode))
        throw Failure("can't write " + in_quotes(name) + ": " + there + " is a folder");
    return true;
}

} // namespace zan::tool
