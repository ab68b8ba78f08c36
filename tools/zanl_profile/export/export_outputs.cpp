// SPDX-License-Identifier: Apache-2.0
#include "export_outputs.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <utility>

#include "failure.h"
#include "unfinished_file.h"

namespace zan::tool {

namespace {

std::string file_of(const profile::TableLayout& layout) {
    return layout.name + ".csv";
}

} // namespace

TableFiles::TableFiles(const std::string& folder) : m_folder(folder) {
    constexpr unsigned file_mode = S_IFREG | 0666;
    for (std::size_t i = 0; i < profile::num_export_tables; ++i)
        m_files[i] = m_folder.add_file(file_of(profile::export_layouts()[i]), masked_permissions(file_mode));
}

void TableFiles::write(profile::ExportTable table, std::string_view bytes) {
    const Descriptor& file = m_files[static_cast<std::size_t>(table)];
    write_all(file.get(), bytes.data(), bytes.size(), file_of(profile::layout_of(table)));
}

void TableFiles::commit() {
    for (std::size_t i = 0; i < profile::num_export_tables; ++i)
        m_folder.end_file(std::move(m_files[i]), file_of(profile::export_layouts()[i]));
    m_folder.commit();
}

NamedUnfinished::NamedUnfinished(const std::string& target) : m_target(target) {
    struct stat status;
    const bool replaces = ::stat(target.c_str(), &status) == 0;
    if (replaces && !S_ISREG(status.st_mode))
        throw Failure("can't write " + in_quotes(target) + ": it is not a file");
    if (char* const real = replaces ? ::realpath(target.c_str(), nullptr) : nullptr) {
        m_target = real;
        std::free(real);
    }
    const SignalsHeld held;
    m_path = m_target + unfinished_suffix;
    m_file = Descriptor(::mkostemp(m_path.data(), O_CLOEXEC));
    if (m_file.get() < 0)
        throw system_failure("can't write " + in_quotes(target));
    m_removed.emplace(m_path);
    constexpr unsigned new_file = 0666;
    ::fchmod(m_file.get(), replaces ? status.st_mode & 07777U : masked_permissions(new_file));
}

NamedUnfinished::~NamedUnfinished() {
    if (m_removed)
        ::unlink(m_path.c_str());
}

void NamedUnfinished::commit() {
    const SignalsHeld held;
    if (::fsync(m_file.get()) != 0 || !m_file.close() || ::rename(m_path.c_str(), m_target.c_str()) != 0)
        throw system_failure("can't write " + in_quotes(m_target));
    m_removed.reset();
}

} // namespace zan::tool
