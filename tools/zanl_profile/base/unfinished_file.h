// SPDX-License-Identifier: Apache-2.0
// Files that appear whole or not at all.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

#include "files.h"
#include "signals.h"

namespace zan::tool {

// Of the mode of a file, what chmod() sets.
constexpr mode_t all_permissions = 07777;

// The end of the name of what isn't whole yet, as mkstemp() takes it.
constexpr const char* unfinished_suffix = ".unfinished-XXXXXX";

// A file that appears under its name only when it is whole. Until then it has no name where the file system
// can do that; elsewhere it is beside its target, and is removed with the object if there was no commit(), or
// by a signal that ends the process.
class UnfinishedFile {
  public:
    // `target` is the name to come; a symbolic link is followed, and permissions of a file in its place are
    // kept. Throws Failure if `target` is something else than a file.
    explicit UnfinishedFile(const std::string& target);
    UnfinishedFile(const UnfinishedFile&) = delete;
    UnfinishedFile& operator=(const UnfinishedFile&) = delete;
    ~UnfinishedFile();

    // A path that opens the file as long as the object lives, and before commit().
    const std::string& path() const { return m_path; }
    int fd() const { return m_file.get(); }
    // Waits until what was written is on the disk.
    void sync();
    // Puts the file in place of the target. Throws Failure, also if an earlier write turns out to have
    // failed.
    void commit();

  private:
    bool open_unnamed();
    bool open_named();
    bool place();
    bool place_unnamed();

    std::string m_name;   // as the user gave it
    std::string m_target; // the file itself where the name is a symbolic link
    bool m_replaces;      // there is a file
    std::string m_path;
    Descriptor m_file;
    std::optional<RemovedBySignal> m_named; // none if the file has no name, or that of its target
};

} // namespace zan::tool
