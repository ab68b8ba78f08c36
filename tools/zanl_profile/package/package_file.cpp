#include "package_file.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

#include "failure.h"

namespace zan::tool {

namespace {

// Offsets in a package have 32 bits.
constexpr std::uint64_t max_package_size = 0xFFFFFFFF;
// What a section takes beside its bytes and its name: its header, and a gap ahead of it.
constexpr std::uint64_t section_overhead = 40 + 128;
// What gaps between sections may take that the package had no room for before. Each section tells how far
// apart it has to lie, and what tells gigabytes was made to fill the disk.
constexpr std::uint64_t max_new_gaps = 16 << 20;
// No new package is larger before it has sections.
constexpr std::uint64_t new_package_size = 8192;

// The names of sections stand in a section of their own, which isn't the user's.
constexpr const char* name_table_section = ".shstrtab";

std::string section_of(const std::string& section, const std::string& package) {
    return "section " + in_quotes(section) + " of " + in_quotes(package);
}

// A failure of the package functions, which may have no reason of the system's.
Failure edit_failure(const std::string& what) {
    return errno == 0 ? Failure(what) : system_failure(what);
}

} // namespace

PackageFile::PackageFile(std::string path, std::string name)
    : m_path(std::move(path)), m_name(std::move(name)) {
    errno = 0;
    m_handle.reset(zan_pkg_open_file(m_path.c_str(), ZAN_PKG_READ));
    if (!m_handle)
        throw system_failure("can't open " + in_quotes(m_name));
    if (!zan::pkg::is_package(m_handle.get())) {
        if (errno != 0)
            throw system_failure("can't read " + in_quotes(m_name));
        throw Failure(in_quotes(m_name) +
                      " is no package: it is no ELF file of the 32-bit class with named sections");
    }
    m_sections = zan::pkg::list_sections(m_handle.get());
}

const SectionInfo* PackageFile::find(const std::string& name) const {
    const auto found =
        std::ranges::find_if(m_sections, [&](const SectionInfo& section) { return section.name == name; });
    return found == m_sections.end() ? nullptr : &*found;
}

const SectionInfo& PackageFile::section(const std::string& name) const {
    const SectionInfo* const found = find(name);
    if (!found)
        throw Failure(in_quotes(m_name) + " has no section " + in_quotes(name), status_no);
    return *found;
}

std::vector<const SectionInfo*> PackageFile::sections_named(const std::vector<std::string>& names) const {
    std::vector<const SectionInfo*> found;
    found.reserve(names.size());
    for (const std::string& name : names)
        found.push_back(&section(name));
    if (names.empty())
        std::ranges::transform(m_sections, std::back_inserter(found), [](const auto& each) { return &each; });
    for (const SectionInfo* each : found)
        check_in_file(*each);
    return found;
}

FileBytes PackageFile::bytes(const SectionInfo& section) const {
    check_in_file(section);
    return first_bytes(section, section.size);
}

FileBytes PackageFile::first_bytes(const SectionInfo& section, std::size_t size) const {
    if (!section.in_file)
        return {};
    return read_range(zan::pkg::file_descriptor(m_handle.get()), section.offset, std::min(size, section.size),
                      m_name);
}

void PackageFile::copy(const SectionInfo& section, int to, const std::string& to_name) const {
    check_in_file(section);
    copy_range(zan::pkg::file_descriptor(m_handle.get()), section.offset, section.size, to, m_name, to_name);
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

void PackageFile::check_in_file(const SectionInfo& section) const {
    if (!section.in_file)
        throw Failure("can't read " + section_of(section.name, m_name) + ": its bytes are not in the file");
}

PackageEdit::PackageEdit(const std::string& path)
    : m_path(path), m_file(std::make_unique<UnfinishedFile>(path)) {
}

PackageEdit PackageEdit::create(const std::string& path) {
    PackageEdit edit(path);
    edit.m_file_size = new_package_size;
    edit.take(zan_pkg_open_file(edit.m_file->path().c_str(), ZAN_PKG_READ_WRITE | ZAN_PKG_CREATE));
    return edit;
}

PackageEdit PackageEdit::change(const std::string& path) {
    const PackageFile original(path);
    PackageEdit edit(path);
    for (const SectionInfo& section : original.sections())
        edit.m_sizes.try_emplace(section.name, section.size);
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
    count(name, 0, bytes.size() + name.size() + section_overhead);
    errno = 0;
    if (!zan_pkg_add_data_section(m_handle.get(), name.c_str(), bytes.data(), bytes.size()))
        throw edit_failure("can't add " + what(name));
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
        throw edit_failure("can't replace the contents of " + what(name));
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

std::string PackageEdit::what(const std::string& name) const {
    return section_of(name, m_path);
}

void PackageEdit::check_name(const std::string& name) const {
    if (name.empty())
        throw Failure("a section of " + in_quotes(m_path) + " needs a name");
    if (name == name_table_section)
        throw Failure("section " + in_quotes(name) + " holds the names of all sections; it can't be set");
    if (name.size() > ZAN_PKG_MAX_SECTION_NAME)
        throw Failure("the name of a section has at most " + std::to_string(ZAN_PKG_MAX_SECTION_NAME) +
                      " bytes, not " + std::to_string(name.size()) + ": " + in_quotes(name));
}

void PackageEdit::count(const std::string& name, std::size_t old_size, std::size_t new_size) {
    m_file_size = m_file_size - old_size + new_size;
    if (m_file_size > max_package_size)
        throw Failure("can't write " + what(name) + ": the package would be larger than 4 GiB");
}

// That nothing has failed doesn't say that all is there.
void PackageEdit::check_written() const {
    const PackageFile written(m_file->path(), m_path);
    std::unordered_map<std::string, const SectionInfo*> found;
    for (const SectionInfo& section : written.sections())
        found.try_emplace(section.name, &section);
    for (const auto& [name, size] : m_sizes) {
        const auto section = found.find(name);
        if (section == found.end() || section->second->size != size)
            throw Failure("can't write " + what(name) + ": it did not reach the file");
    }
}

} // namespace zan::tool
