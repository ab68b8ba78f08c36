// SPDX-License-Identifier: Apache-2.0
#include "open_folders.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>

#include "failure.h"

namespace zan::tool {

namespace {

// How many folders are open at most, beside the root.
constexpr std::size_t max_open = 100;
// How many of the last folders are opened together with one: the next to be needed are usually above it.
constexpr std::size_t opened_together = 50;
// Of a path, with its NUL.
constexpr std::size_t max_path = 4096;

// Needs no right to read the folder, only to pass through it.
constexpr int folder_flags = O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

// A folder that is several steps below another one. One call for all steps takes a tenth of the time that a
// call for each of them takes.
Descriptor open_path(int parent, const std::string& path) {
    open_how how{};
    how.flags = folder_flags;
    how.resolve = RESOLVE_NO_SYMLINKS;
    return Descriptor(static_cast<int>(::syscall(SYS_openat2, parent, path.c_str(), &how, sizeof how)));
}

// The same by a call for each step, for systems that are older than the other call, or forbid it.
Descriptor open_by_steps(int parent, std::span<const std::string_view> steps) {
    Descriptor folder;
    for (const std::string_view step : steps) {
        folder = Descriptor(::openat(parent, std::string(step).c_str(), folder_flags));
        parent = folder.get();
        if (parent < 0)
            break;
    }
    return folder;
}

std::string joined(std::span<const std::string_view> steps) {
    std::string path;
    for (const std::string_view step : steps) {
        path += path.empty() ? "" : "/";
        path += step;
    }
    return path;
}

Descriptor open_below(int parent, std::span<const std::string_view> steps) {
    if (steps.size() == 1)
        return open_by_steps(parent, steps);
    Descriptor folder = open_path(parent, joined(steps));
    if (folder.get() < 0 && (errno == ENOSYS || errno == EPERM))
        return open_by_steps(parent, steps);
    return folder;
}

// How many of the steps fit into one path.
std::size_t count_for_path(std::span<const std::string_view> steps) {
    std::size_t count = 0;
    for (std::size_t size = 0; count < steps.size(); ++count) {
        size += steps[count].size() + 1;
        if (size > max_path && count != 0) // a step that is too long by itself fails by itself
            break;
    }
    return count;
}

struct CloseFolder {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

bool is_folder(int parent, const dirent& entry) {
    if (entry.d_type != DT_UNKNOWN)
        return entry.d_type == DT_DIR;
    struct stat status;
    return ::fstatat(parent, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(status.st_mode);
}

} // namespace

std::vector<std::string_view> steps_of(std::string_view path) {
    std::vector<std::string_view> steps;
    while (!path.empty()) {
        const std::string_view step = path.substr(0, path.find('/'));
        path.remove_prefix(std::min(step.size() + 1, path.size()));
        if (!step.empty() && step != ".")
            steps.push_back(step);
    }
    return steps;
}

OpenFolders::OpenFolders(Descriptor root) {
    m_open.push_back({0, std::move(root)});
}

int OpenFolders::fd() {
    return m_open.back().depth == depth() || reopen() ? m_open.back().folder.get() : -1;
}

std::string OpenFolders::path() const {
    std::string path;
    for (const std::string& name : m_names) {
        path += path.empty() ? "" : "/";
        path += name;
    }
    return path;
}

bool OpenFolders::enter(std::string_view name) {
    return fd() >= 0 && descend({&name, 1});
}

std::string OpenFolders::leave() {
    std::string name = std::move(m_names.back());
    m_names.pop_back();
    forget_below();
    return name;
}

void OpenFolders::go_to_root() {
    m_names.clear();
    forget_below();
}

std::size_t OpenFolders::go_towards(std::span<const std::string_view> steps) {
    std::size_t done = 0;
    while (done < depth() && done < steps.size() && m_names[done] == steps[done])
        ++done;
    m_names.resize(done);
    forget_below();
    // Usually all of the steps can be taken, or none: the next entry is in the same folder, or in a new one.
    std::size_t fails = steps.size() + 1; // the least number of steps that are known to fail
    int error = 0;
    while (done < steps.size() && done + 1 < fails) {
        const std::size_t next = count_for_path(steps.subspan(done));
        const std::size_t count = done + next < fails ? next : (fails - done) / 2;
        if (fd() >= 0 && descend(steps.subspan(done, count))) {
            done += count;
        } else {
            fails = done + count;
            error = errno;
        }
    }
    errno = error;
    return done;
}

// Goes these steps from the current folder, which is open. If it can't, it has gone none.
bool OpenFolders::descend(std::span<const std::string_view> steps) {
    Descriptor folder = open_below(m_open.back().folder.get(), steps);
    if (folder.get() < 0)
        return false;
    m_names.insert(m_names.end(), steps.begin(), steps.end());
    keep(std::move(folder));
    return true;
}

// Keeps the folder at the place open.
void OpenFolders::keep(Descriptor folder) {
    if (m_open.size() > max_open)
        m_open.erase(m_open.begin() + 1, m_open.begin() + 1 + max_open / 2);
    m_open.push_back({depth(), std::move(folder)});
}

void OpenFolders::forget_below() {
    while (m_open.back().depth > depth())
        m_open.pop_back();
}

// Opens the folder at the place, and some above it.
bool OpenFolders::reopen() {
    const std::vector<std::string> names = std::move(m_names);
    const std::vector<std::string_view> steps(names.begin(), names.end());
    m_names.assign(steps.begin(), steps.begin() + static_cast<std::ptrdiff_t>(m_open.back().depth));
    while (depth() < steps.size()) {
        const std::span rest(steps.begin() + static_cast<std::ptrdiff_t>(depth()), steps.end());
        const std::size_t count =
            rest.size() > opened_together ? count_for_path(rest.first(rest.size() - opened_together)) : 1;
        if (!descend(rest.first(count))) {
            m_names = names;
            return false;
        }
    }
    return true;
}

Descriptor open_for_reading(int folder) {
    return Descriptor(::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

std::vector<FolderEntry> entries_of(int folder, const std::string& name) {
    Descriptor readable = open_for_reading(folder);
    const std::unique_ptr<DIR, CloseFolder> list(readable.get() < 0 ? nullptr : ::fdopendir(readable.get()));
    if (list)
        readable.release(); // closedir() closes it
    std::vector<FolderEntry> entries;
    errno = list ? 0 : errno;
    while (const dirent* const entry = list ? ::readdir(list.get()) : nullptr) {
        const std::string_view found = entry->d_name;
        if (found != "." && found != "..")
            entries.push_back({std::string(found), is_folder(folder, *entry)});
        errno = 0;
    }
    if (errno != 0)
        throw system_failure("can't read the folder " + in_quotes(name));
    return entries;
}

void walk_folders(OpenFolders& place, const std::function<std::vector<std::string>()>& visit,
                  const std::function<void(const std::string&)>& leave) {
    std::vector<std::vector<std::string>> waiting; // of each folder on the way, those in it
    waiting.push_back(visit());
    for (;;) {
        if (!waiting.back().empty()) {
            const std::string name = std::move(waiting.back().back());
            waiting.back().pop_back();
            if (!place.enter(name))
                throw system_failure("can't open the folder " + in_quotes(place.path() + "/" + name));
            waiting.push_back(visit());
            continue;
        }
        waiting.pop_back();
        if (waiting.empty())
            return;
        leave(place.leave());
    }
}

} // namespace zan::tool
