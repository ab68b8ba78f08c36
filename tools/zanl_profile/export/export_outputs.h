// SPDX-License-Identifier: Apache-2.0
// Where exports go: a folder of files, or a file, that are whole or not there.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "export_schema.h"
#include "files.h"
#include "signals.h"
#include "staged_folder.h"

namespace zan::tool {

// A file for each table, "NAME.csv", in a folder.
class TableFiles {
  public:
    // Throws Failure, as all functions do.
    explicit TableFiles(const std::string& folder);

    void write(profile::ExportTable table, std::string_view bytes);
    // Puts the files in place.
    void commit();

  private:
    StagedFolder m_folder;
    std::array<Descriptor, profile::num_export_tables> m_files;
};

// A file that others open by its name: it has one beside its target until it is whole. An UnfinishedFile may
// have none, and a library that opens a path could not find it.
class NamedUnfinished {
  public:
    // Throws Failure, as commit() does.
    explicit NamedUnfinished(const std::string& target);
    NamedUnfinished(const NamedUnfinished&) = delete;
    NamedUnfinished& operator=(const NamedUnfinished&) = delete;
    ~NamedUnfinished();

    const std::string& path() const { return m_path; }
    // Waits for the disk, and puts the file in place of the target.
    void commit();

  private:
    std::string m_target;
    std::string m_path;
    Descriptor m_file;
    std::optional<RemovedBySignal> m_removed;
};

} // namespace zan::tool
