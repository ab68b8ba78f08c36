// SPDX-License-Identifier: Apache-2.0
// A file without a name leaves nothing even if the process is killed. Where the target exists it needs a name
// for a moment, as link() replaces nothing: only a process that is killed between link() and rename() leaves
// that name.
#include "unfinished_file.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string_view>

#include "failure.h"

namespace zan::tool {

namespace {

constexpr mode_t permissions_of_new_files = 0666;

std::string folder_of(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

// Ends like a name of mkstemp(). Random, as another process may make such a name at the same time.
std::string random_name(const std::string& target) {
    constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyz012345";
    std::string name = target + unfinished_suffix;
    unsigned char bytes[6] = {};
    [[maybe_unused]] const ssize_t ignored = ::getrandom(bytes, sizeof bytes, 0);
    for (std::size_t i = 0; i < sizeof bytes; ++i)
        name[name.size() - sizeof bytes + i] = letters[bytes[i] % letters.size()];
    return name;
}

bool link_file(const std::string& unnamed, const std::string& name) {
    return ::linkat(AT_FDCWD, unnamed.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
}

} // namespace

UnfinishedFile::UnfinishedFile(const std::string& target) : m_name(target), m_target(target) {
    struct stat status;
    m_replaces = ::stat(target.c_str(), &status) == 0;
    if (m_replaces && !S_ISREG(status.st_mode))
        throw Failure("can't write " + in_quotes(target) + ": it is not a file");
    char* const real = m_replaces ? ::realpath(target.c_str(), nullptr) : nullptr;
    // If it isn't known what is there, a link would be replaced, or permissions lost.
    if (m_replaces ? !real : errno != ENOENT)
        throw system_failure("can't write " + in_quotes(target));
    if (real)
        m_target = real;
    std::free(real);
    if (!open_unnamed() && !open_named())
        throw system_failure("can't write " + in_quotes(target));
    ::fchmod(m_file.get(),
             m_replaces ? status.st_mode & all_permissions : masked_permissions(permissions_of_new_files));
}

// False if the file system has no such files, or can't be asked for the file's path: by /proc, as link() with
// a descriptor alone takes a privilege.
bool UnfinishedFile::open_unnamed() {
    m_file =
        Descriptor(::open(folder_of(m_target).c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, S_IRUSR | S_IWUSR));
    m_path = "/proc/self/fd/" + std::to_string(m_file.get());
    return m_file.get() >= 0 && ::access(m_path.c_str(), F_OK) == 0;
}

// In the same folder, as rename() works only within a file system.
bool UnfinishedFile::open_named() {
    const SignalsHeld held;
    m_path = m_target + unfinished_suffix;
    m_file = Descriptor(::mkostemp(m_path.data(), O_CLOEXEC));
    if (m_file.get() < 0)
        return false;
    m_named.emplace(m_path);
    return true;
}

UnfinishedFile::~UnfinishedFile() {
    if (m_named)
        ::unlink(m_path.c_str());
}

void UnfinishedFile::sync() {
    if (::fsync(m_file.get()) != 0)
        throw system_failure("can't write " + in_quotes(m_name));
}

void UnfinishedFile::commit() {
    if (!place())
        throw system_failure("can't write " + in_quotes(m_name));
}

// Some file systems report a failed write only when the file is closed, so that comes first. A file without a
// name is gone when its last descriptor is closed, so that is a second one.
bool UnfinishedFile::place() {
    if (!m_named) {
        Descriptor copy(::dup(m_file.get()));
        return copy.get() >= 0 && copy.close() && place_unnamed();
    }
    const SignalsHeld held;
    if (!m_file.close() || ::rename(m_path.c_str(), m_target.c_str()) != 0)
        return false;
    m_named.reset();
    return true;
}

bool UnfinishedFile::place_unnamed() {
    if (!m_replaces && link_file(m_path, m_target))
        return true;
    if (!m_replaces && errno != EEXIST)
        return false;
    const SignalsHeld held;
    std::string name = random_name(m_target);
    while (!link_file(m_path, name)) {
        if (errno != EEXIST)
            return false;
        name = random_name(m_target);
    }
    if (::rename(name.c_str(), m_target.c_str()) == 0)
        return true;
    const int error = errno;
    ::unlink(name.c_str());
    errno = error;
    return false;
}

} // namespace zan::tool
