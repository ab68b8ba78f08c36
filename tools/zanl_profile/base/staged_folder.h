// Folders that are filled with unpacked entries.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "files.h"
#include "signals.h"

namespace zan::tool {

// Why an entry of that name would leave the folder that it is unpacked into: "it is absolute". Empty if it
// would stay there; symbolic links in the folder are for TargetFolder.
std::string name_fault(const std::string& name);

// Checks that entries can be written into `folder`, which need not exist, without following a symbolic link
// in it.
class TargetFolder {
  public:
    explicit TargetFolder(std::string folder) : m_folder(std::move(folder)) {}
    // Throws Failure if something on the way to an entry, or in its place, is a symbolic link, or no folder
    // where one is needed, or a folder where a file shall be. `name` must have no name_fault().
    void check(const std::string& name, bool is_folder);

  private:
    void check_step(const std::string& path, const std::string& name, bool needs_folder, bool is_last) const;

    const std::string m_folder;
    std::unordered_set<std::string> m_good; // folders that were checked already
};

// A folder that gets its entries all at once: they are written into a temporary folder, and moved when all of
// them are there. Without commit() they are removed with the object.
class StagedFolder {
  public:
    // `target` is made if it doesn't exist, with the folders above it. Throws Failure.
    explicit StagedFolder(const std::string& target);
    StagedFolder(const StagedFolder&) = delete;
    StagedFolder& operator=(const StagedFolder&) = delete;
    ~StagedFolder();

    // Names must have no name_fault(). Folders on the way to an entry are made. Throws Failure.
    void add_folder(const std::string& name);
    // The new file, open for writing; its permissions are those of `mode`, if that is a file's.
    Descriptor add_file(const std::string& name, std::uint32_t mode);
    // Moves all entries to the target; a file takes the place of one that is there. Throws Failure.
    void commit();

  private:
    struct Entry {
        std::string name;
        bool is_folder;
    };
    void make_folder(const std::string& name);
    void move_into_target();

    std::string m_target;
    bool m_target_exists;
    std::string m_stage;
    std::optional<RemovedBySignal> m_removed; // of the stage
    std::vector<Entry> m_entries;             // in the order of adding, folders that lead to them among them
    std::unordered_set<std::string> m_folders;
};

} // namespace zan::tool
