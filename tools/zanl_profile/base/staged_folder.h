// SPDX-License-Identifier: Apache-2.0
// Folders that are filled with entries all at once.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "open_folders.h"
#include "signals.h"

namespace zan::tool {

// A folder that gets its entries all at once: they are written into a temporary folder, wait there for the
// disk, and are moved when all of them are there. Without commit() they are removed with the object.
class StagedFolder {
  public:
    // `target` is made if it doesn't exist, with the folders above it. Throws Failure.
    explicit StagedFolder(const std::string& target);
    StagedFolder(const StagedFolder&) = delete;
    StagedFolder& operator=(const StagedFolder&) = delete;
    ~StagedFolder();

    // Names must have no name_fault(). Folders on the way to an entry are made. Throws Failure.
    void add_folder(const std::string& name);
    // The new file, open for writing; its permissions are those of `mode`, if that is a file's. It takes the
    // place of a file that was added by the same name.
    Descriptor add_file(const std::string& name, std::uint32_t mode);
    // Closes a file when all of it is written. Throws Failure.
    void end_file(Descriptor file, const std::string& name);
    // Moves all entries to the target; a file takes the place of one that is there. Throws Failure.
    void commit();

  private:
    void make_folders(std::span<const std::string_view> steps, const std::string& name);
    bool has_many() const;
    void wait_for_stage();
    void appear();
    std::vector<FolderEntry> stage_entries();
    void check_target();
    std::vector<std::string> move_entries(int target, const std::string& target_name);
    void move_into_target();

    std::string m_target;
    bool m_target_exists;
    std::string m_stage;                      // empty once it has become the target
    std::optional<RemovedBySignal> m_removed; // of the stage
    std::optional<OpenFolders> m_place;       // in the stage
    std::size_t m_num_entries = 0;
};

} // namespace zan::tool
