// SPDX-License-Identifier: Apache-2.0
// Walks through trees of folders, by descriptors of open folders.
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "files.h"

namespace zan::tool {

// The steps of a path: "a", "b" of "./a//b/". Empty steps and "." are left out. They point into the path.
std::vector<std::string_view> steps_of(std::string_view path);

// A place in the tree below a folder, which is never reached through a symbolic link. Paths would end at 4096
// bytes, and each use of one would cost as much as it has steps.
class OpenFolders {
  public:
    // Begins at `root`, an open folder.
    explicit OpenFolders(Descriptor root);

    // The folder at the place, for calls like openat(). It may be good for nothing else. -1, with errno set,
    // if it had been closed and can't be reached any more.
    int fd();
    // How many steps the place is below the root.
    std::size_t depth() const { return m_names.size(); }
    // The steps from the root, with slashes between them; and the last of them.
    std::string path() const;
    const std::string& name() const { return m_names.back(); }

    // Enters a folder of the current one. False, with errno set, if that fails, as for a symbolic link.
    bool enter(std::string_view name);
    // Leaves the current folder, and returns its name.
    std::string leave();
    // Goes back to the root.
    void go_to_root();
    // Goes as far on the way from the root to `steps` as there are folders; returns how many of the steps it
    // has taken. If these are not all, errno has the reason.
    std::size_t go_towards(std::span<const std::string_view> steps);

  private:
    struct OpenFolder {
        std::size_t depth;
        Descriptor folder;
    };
    bool descend(std::span<const std::string_view> steps);
    void keep(Descriptor folder);
    void forget_below();
    bool reopen();

    std::vector<std::string> m_names;
    std::vector<OpenFolder> m_open; // the last folders that were needed, by their depth; the root first
};

// A name in a folder.
struct FolderEntry {
    std::string name;
    bool is_folder; // a symbolic link to one is none
};
// What is in an open folder, in any order, without "." and "..". Throws Failure, which calls the folder
// `name`.
std::vector<FolderEntry> entries_of(int folder, const std::string& name);

// Opens the folder for reading and for waiting until it is on the disk, which needs more rights than a walk.
Descriptor open_for_reading(int folder);

// Goes through the tree at `place` and below it, each folder after those in it. `visit` is called first for
// each folder, and returns the names of those in it that are to be gone through; `leave` is called with the
// name of each one that is done, when its parent is the place again. Both may throw.
void walk_folders(OpenFolders& place, const std::function<std::vector<std::string>()>& visit,
                  const std::function<void(const std::string&)>& leave);

} // namespace zan::tool
