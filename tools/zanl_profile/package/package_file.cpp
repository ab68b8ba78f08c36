// SPDX-License-Identifier: Apache-2.0
#include "package_file.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

#include "failure.h"
#include "pkg_remove.h"

namespace zan::tool {

std::string quoted_section(const std::string& section, const std::string& package) {
    return "section " + in_quotes(section) + " of " + in_quotes(package);
}

PackageFile::PackageFile(std::string path, std::string name)
    : m_path(std::move(path)), m_name(std::move(name)) {
    if (m_path == standard_stream)
        throw Failure("a package can't be read from standard input, as it isn't read in one go; name a file");
    // The library leaves errno as it was where the file itself is at fault, which is another message.
    errno = 0;
    m_handle.reset(zan_pkg_open_file(m_path.c_str(), ZAN_PKG_READ));
    if (!m_handle)
        throw system_failure("can't open " + in_quotes(m_name));
    if (!zan::pkg::is_package(m_handle.get())) {
        if (errno != 0)
            throw system_failure("can't read " + in_quotes(m_name));
        throw Failure(in_quotes(m_name) + " is no package: " +
                      (zan::pkg::is_of_64_bits(m_handle.get())
                           ? "it is an ELF file of the 64-bit class, and packages are of the 32-bit class"
                           : "it is no ELF file of the 32-bit class with named sections"));
    }
    m_sections = zan::pkg::list_sections(m_handle.get());
    for (const SectionInfo& section : m_sections)
        m_by_name.try_emplace(section.name, &section);
}

const SectionInfo& PackageFile::section(const std::string& name) const {
    const auto found = m_by_name.find(name);
    if (found == m_by_name.end())
        throw Failure(in_quotes(m_name) + " has no section " + in_quotes(name), status_no);
    return *found->second;
}

std::vector<const SectionInfo*> PackageFile::sections_named(const std::vector<std::string>& names) const {
    std::vector<const SectionInfo*> found;
    found.reserve(names.size());
    for (const std::string& name : names)
        found.push_back(&section(name));
    if (names.empty()) {
        for (const SectionInfo& each : m_sections) {
            if (each.contents != Contents::none)
                found.push_back(&each);
        }
    }
    for (const SectionInfo* each : found)
        check_in_file(*each);
    return found;
}

// Reads from the file itself: the library would keep a copy of each section's bytes until it is closed.
FileBytes PackageFile::bytes(const SectionInfo& section) const {
    check_in_file(section);
    return first_bytes(section, section.size);
}

FileBytes PackageFile::first_bytes(const SectionInfo& section, std::size_t size) const {
    if (section.contents != Contents::in_file)
        return {};
    return read_range(zan::pkg::file_descriptor(m_handle.get()), section.offset, std::min(size, section.size),
                      m_name);
}

void PackageFile::copy(const SectionInfo& section, int to, const std::string& to_name) const {
    check_in_file(section);
    copy_range(zan::pkg::file_descriptor(m_handle.get()), section.offset, section.size, to, m_name, to_name);
}

void PackageFile::check_editable() const {
    if (zan::pkg::is_program(m_handle.get()))
        throw Failure("can't change " + in_quotes(m_name) +
                      ": it has program headers, and would no longer run");
}

std::uint64_t PackageFile::copy_file(int to, const std::string& to_name) const {
    const int from = zan::pkg::file_descriptor(m_handle.get());
    struct stat status;
    if (::fstat(from, &status) != 0)
        throw system_failure("can't read " + in_quotes(m_name));
    const auto size = static_cast<std::uint64_t>(status.st_size);
    copy_range(from, 0, size, to, m_name, to_name);
    return size;
}

std::string PackageFile::write_without(const std::unordered_set<std::string_view>& names, int to) const {
    struct stat status;
    if (::fstat(zan::pkg::file_descriptor(m_handle.get()), &status) != 0)
        throw system_failure("can't read " + in_quotes(m_name));
    const auto size = static_cast<std::uint64_t>(status.st_size);
    return zan::pkg::write_without(m_handle.get(), names, to, size + max_new_gaps);
}

void PackageFile::check_in_file(const SectionInfo& section) const {
    if (section.contents == Contents::none)
        throw Failure(quoted_section(section.name, m_name) + " has a size but no contents");
    if (section.contents == Contents::missing)
        throw Failure("can't read " + quoted_section(section.name, m_name) +
                      ": its bytes are not in the file");
}

} // namespace zan::tool
