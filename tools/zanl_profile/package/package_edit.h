// SPDX-License-Identifier: Apache-2.0
// Packages that are made or changed.
#pragma once

#include <unordered_map>

#include "package_file.h"
#include "unfinished_file.h"

namespace zan::tool {

// A package that is being made or changed: a copy, which takes the place of the package when all went well.
class PackageEdit {
  public:
    // Begins a new package. A file of its name is replaced.
    static PackageEdit create(const std::string& path);
    // Begins to change a package that exists. Throws Failure if it can't be opened or is no package.
    static PackageEdit change(const std::string& path);

    // Adds a section, or replaces the contents of one. Throws Failure for a name that is taken, or missing.
    void add(const std::string& name, FileBytes bytes);
    void update(const std::string& name, FileBytes bytes);
    // Adds the section, or replaces its contents if it is there.
    void put(const std::string& name, FileBytes bytes);
    // Writes the package and puts it in its place. Throws Failure, and then the old file is as it was.
    void commit();

  private:
    explicit PackageEdit(const std::string& path);
    bool has(const std::string& name) const;
    void take(zan_pkg_file* package);
    void check_name(const std::string& name) const;
    void count(const std::string& name, std::size_t old_size, std::size_t new_size);
    void check_written() const;

    std::string m_path;
    std::unique_ptr<UnfinishedFile> m_file;
    PackageHandle m_handle;
    std::unordered_map<std::string, std::size_t> m_sizes; // of all sections, as they are to be
    std::vector<FileBytes> m_bytes;                       // live until the package is written
    std::uint64_t m_contents_size = 0;                    // of all sections
    std::uint64_t m_file_size = 0; // an upper limit of what the file will have, without new gaps
};

} // namespace zan::tool
