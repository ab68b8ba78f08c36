// SPDX-License-Identifier: Apache-2.0
// Packages that are read.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "files.h"
#include "pkg_editor.h"
#include "pkg_sections.h"

namespace zan::tool {

using zan::pkg::Contents;
using zan::pkg::SectionInfo;

// Closes a package; edits that aren't written by then are given up.
struct ClosePackage {
    void operator()(zan_pkg_file* pkg) const { zan::pkg::discard_edited(pkg); }
};
using PackageHandle = std::unique_ptr<zan_pkg_file, ClosePackage>;

// Sizes in a package have 32 bits.
constexpr std::uint64_t max_section_size = 0xFFFFFFFF;

// How far gaps between sections may let the package grow. Each section's header asks for an alignment of its
// own, of up to 2 GiB: without a limit, a package of 186 bytes made `add` write 4 GiB for half a minute.
constexpr std::uint64_t max_new_gaps = 16 << 20;

// A section in messages: "section 'a' of 'design.zanx'".
std::string quoted_section(const std::string& section, const std::string& package);

// A package that is open for reading.
class PackageFile {
  public:
    // Throws Failure if the file can't be opened or read, or is no package. Messages call it `name`.
    explicit PackageFile(const std::string& path) : PackageFile(path, path) {}
    PackageFile(std::string path, std::string name);

    const std::vector<SectionInfo>& sections() const { return m_sections; }
    // The first section of that name. Throws Failure with status_no if there is none.
    const SectionInfo& section(const std::string& name) const;
    // The sections of these names; without names, all that have contents. Throws Failure for one that is
    // missing, has no contents, or is not all in the file.
    std::vector<const SectionInfo*> sections_named(const std::vector<std::string>& names) const;

    // The section's bytes. Throws Failure if they aren't all in the file.
    FileBytes bytes(const SectionInfo& section) const;
    // Up to `size` bytes of the section's beginning.
    FileBytes first_bytes(const SectionInfo& section, std::size_t size) const;
    // Writes the section's bytes to an open file, which messages call `to_name`.
    void copy(const SectionInfo& section, int to, const std::string& to_name) const;
    // Throws Failure for a program or a library, which an edit would break.
    void check_editable() const;
    // Writes the whole file to an open one; returns its size.
    std::uint64_t copy_file(int to, const std::string& to_name) const;

    // Writes the package without the sections of these names to an open file, and waits for the disk.
    // Returns an empty text, or why that failed.
    std::string write_without(const std::unordered_set<std::string_view>& names, int to) const;

  private:
    void check_in_file(const SectionInfo& section) const;

    const std::string m_path; // which the handle looks at
    const std::string m_name;
    PackageHandle m_handle;
    std::vector<SectionInfo> m_sections;
    std::unordered_map<std::string_view, const SectionInfo*> m_by_name; // the first section of each name
};

} // namespace zan::tool
