// SPDX-License-Identifier: Apache-2.0
#include "package_edit.h"

#include <cerrno>

#include "failure.h"
#include "pkg_names.h"
#include "pkg_write.h"

namespace zan::tool {

namespace {

// What a section takes beside its bytes and its name: its header, and the gap before it.
constexpr std::uint64_t section_overhead = 40 + 128;
// No new package is larger before it has sections.
constexpr std::uint64_t new_package_size = 8192;

// A failure of the package functions, which may have no reason of the system's.
Failure edit_failure(const std::string& what) {
    return errno == 0 ? Failure(what) : system_failure(what);
}

} // namespace

PackageEdit::PackageEdit(const std::string& path)
    : m_path(path), m_file(std::make_unique<UnfinishedFile>(path)) {
}

PackageEdit PackageEdit::create(const std::string& path) {
    if (path == standard_stream)
        throw Failure(
            "a package can't be written to standard output, as it isn't written in one go; name a file");
    PackageEdit edit(path);
    edit.m_file_size = new_package_size;
    edit.take(zan_pkg_open_file(edit.m_file->path().c_str(), ZAN_PKG_READ_WRITE | ZAN_PKG_CREATE));
    return edit;
}

// The whole file is copied, not section by section: packages of other programs may have parts that are no
// named section.
PackageEdit PackageEdit::change(const std::string& path) {
    const PackageFile original(path);
    original.check_editable();
    PackageEdit edit(path);
    for (const SectionInfo& section : original.sections()) {
        edit.m_sizes.try_emplace(section.name, section.size);
        edit.m_contents_size += section.contents == Contents::none ? 0 : section.size;
    }
    edit.m_file_size = original.copy_file(edit.m_file->fd(), path);
    edit.take(zan::pkg::open_to_edit(edit.m_file->path().c_str()));
    return edit;
}

void PackageEdit::take(zan_pkg_file* package) {
    m_handle.reset(package);
    if (!m_handle)
        throw system_failure("can't write " + in_quotes(m_path));
}

bool PackageEdit::has(const std::string& name) const {
    return m_sizes.contains(name);
}

void PackageEdit::add(const std::string& name, FileBytes bytes) {
    check_name(name);
    if (has(name))
        throw Failure(in_quotes(m_path) + " has a section " + in_quotes(name) + " already");
    m_file_size += name.size() + section_overhead;
    count(name, 0, bytes.size());
    errno = 0;
    if (!zan_pkg_add_data_section(m_handle.get(), name.c_str(), bytes.data(), bytes.size()))
        throw edit_failure("can't add " + quoted_section(name, m_path));
    m_sizes[name] = bytes.size();
    m_bytes.push_back(std::move(bytes));
}

void PackageEdit::update(const std::string& name, FileBytes bytes) {
    check_name(name);
    if (!has(name))
        throw Failure(in_quotes(m_path) + " has no section " + in_quotes(name), status_no);
    count(name, m_sizes[name], bytes.size());
    errno = 0;
    if (!zan_pkg_update_section(m_handle.get(), name.c_str(), bytes.data(), bytes.size()))
        throw edit_failure("can't replace the contents of " + quoted_section(name, m_path));
    m_sizes[name] = bytes.size();
    m_bytes.push_back(std::move(bytes));
}

void PackageEdit::put(const std::string& name, FileBytes bytes) {
    if (has(name))
        update(name, std::move(bytes));
    else
        add(name, std::move(bytes));
}

void PackageEdit::commit() {
    const std::string failure = zan::pkg::close_edited(m_handle.release(), m_file_size + max_new_gaps);
    if (!failure.empty())
        throw Failure("can't write " + in_quotes(m_path) + ": " + failure);
    check_written();
    m_file->commit();
}

void PackageEdit::check_name(const std::string& name) const {
    if (name.empty())
        throw Failure("a section of " + in_quotes(m_path) + " needs a name");
    if (name == zan::pkg::name_table_section)
        throw Failure("section " + in_quotes(name) + " holds the names of all sections; it can't be set");
    if (name.size() > ZAN_PKG_MAX_SECTION_NAME)
        throw Failure("the name of a section has at most " + std::to_string(ZAN_PKG_MAX_SECTION_NAME) +
                      " bytes, not " + std::to_string(name.size()) + ": " + in_quotes(name));
}

// What is too large by its contents alone needs not be read any further; the whole size is known when the
// package is written.
void PackageEdit::count(const std::string& name, std::size_t old_size, std::size_t new_size) {
    m_contents_size = m_contents_size - old_size + new_size;
    m_file_size = m_file_size - old_size + new_size;
    const std::string fault = zan::pkg::size_fault(m_contents_size, zan::pkg::max_package_size);
    if (!fault.empty())
        throw Failure("can't write " + quoted_section(name, m_path) + ": " + fault);
}

// The last look before the old package is gone: that no call has failed doesn't prove that every section is
// there.
void PackageEdit::check_written() const {
    const PackageFile written(m_file->path(), m_path);
    std::unordered_map<std::string, const SectionInfo*> found;
    for (const SectionInfo& section : written.sections())
        found.try_emplace(section.name, &section);
    for (const auto& [name, size] : m_sizes) {
        const auto section = found.find(name);
        if (section == found.end() || section->second->size != size)
            throw Failure("can't write " + quoted_section(name, m_path) + ": it did not reach the file");
    }
}

} // namespace zan::tool
