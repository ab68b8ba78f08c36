// Packages as the commands use them.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "files.h"
#include "pkg_editor.h"
#include "pkg_sections.h"

namespace zan::tool {

using zan::pkg::SectionInfo;

// Closes a package; edits that aren't written by then are given up.
struct ClosePackage {
    void operator()(zan_pkg_file* pkg) const { zan::pkg::discard_edited(pkg); }
};
using PackageHandle = std::unique_ptr<zan_pkg_file, ClosePackage>;

// Sizes in a package have 32 bits.
constexpr std::uint64_t max_section_size = 0xFFFFFFFF;

// A package that is open for reading.
class PackageFile {
  public:
    // Throws Failure if the file can't be opened or read, or is no package. Messages call it `name`.
    explicit PackageFile(const std::string& path) : PackageFile(path, path) {}
    PackageFile(std::string path, std::string name);

    const std::vector<SectionInfo>& sections() const { return m_sections; }
    // The first section of that name, or null.
    const SectionInfo* find(const std::string& name) const;
    // The same; throws Failure with status_no if there is none.
    const SectionInfo& section(const std::string& name) const;
    // All of these, or without names every section there is. Throws before anything is done with the first
    // one.
    std::vector<const SectionInfo*> sections_named(const std::vector<std::string>& names) const;

    // The section's bytes. Throws Failure if they aren't all in the file.
    FileBytes bytes(const SectionInfo& section) const;
    // Up to `size` bytes of the section's beginning.
    FileBytes first_bytes(const SectionInfo& section, std::size_t size) const;
    // Writes the section's bytes to an open file, which messages call `to_name`.
    void copy(const SectionInfo& section, int to, const std::string& to_name) const;
    // Writes the whole file to an open one; gives its size.
    std::uint64_t copy_file(int to, const std::string& to_name) const;

  private:
    void check_in_file(const SectionInfo& section) const;

    const std::string m_path; // which the handle looks at
    const std::string m_name;
    PackageHandle m_handle;
    std::vector<SectionInfo> m_sections;
};

// A package that is being made or changed. It is a copy, which takes its place when all has gone well.
class PackageEdit {
  public:
    // Begins a new package, in place of a file that may be there.
    static PackageEdit create(const std::string& path);
    // Begins to change a package that exists. Throws Failure if it can't be opened or is no package.
    static PackageEdit change(const std::string& path);

    bool has(const std::string& name) const;
    // Adds a section, or replaces the contents of one. Throws Failure for a name that is taken, or isn't
    // there.
    void add(const std::string& name, FileBytes bytes);
    void update(const std::string& name, FileBytes bytes);
    // Adds the section, or replaces its contents if it is there.
    void put(const std::string& name, FileBytes bytes);
    // Writes the package and puts it in its place. Throws Failure; the file is as it was then.
    void commit();

  private:
    explicit PackageEdit(const std::string& path);
    void take(zan_pkg_file* package);
    std::string what(const std::string& name) const;
    void check_name(const std::string& name) const;
    void count(const std::string& name, std::size_t old_size, std::size_t new_size);
    void check_written() const;

    std::string m_path;
    std::unique_ptr<UnfinishedFile> m_file;
    PackageHandle m_handle;
    std::unordered_map<std::string, std::size_t> m_sizes; // of all sections, as they are to be
    std::vector<FileBytes> m_bytes;                       // live until the package is written
    std::uint64_t m_file_size = 0;                        // no less than the file is going to have
};

} // namespace zan::tool
