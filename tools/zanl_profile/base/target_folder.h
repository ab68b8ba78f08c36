// SPDX-License-Identifier: Apache-2.0
// Folders that entries are to be written into.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "open_folders.h"

namespace zan::tool {

// Why an entry of that name would leave the folder that it is unpacked into: "it is absolute". Empty if it
// would stay there; symbolic links in the folder are for TargetFolder.
std::string name_fault(const std::string& name);

// Checks that entries can be written into `folder`, which need not exist, without following a symbolic link
// in it. Holds the way to the last entry, and so as little memory for a million entries as for one.
class TargetFolder {
  public:
    // Throws Failure if the folder can't be looked at.
    explicit TargetFolder(std::string folder);
    // Throws Failure if something on the way to an entry, or in its place, is a symbolic link, or no folder
    // where one is needed, or a folder where a file shall be. Returns whether the entry would take the place
    // of one that is there. `name` must have no name_fault().
    bool check(const std::string& name, bool is_folder);

  private:
    // Of `step` in the current folder.
    bool check_step(std::string_view step, const std::string& name, bool needs_folder);

    const std::string m_folder;
    std::optional<OpenFolders> m_place; // empty if the folder doesn't exist
};

} // namespace zan::tool
