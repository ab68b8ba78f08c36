// SPDX-License-Identifier: Apache-2.0
#include "run_input.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <system_error>
#include <vector>

namespace zan::profile {

namespace {

// Reads again where a signal has interrupted.
ssize_t read_some(int fd, char* out, std::size_t size) {
    ssize_t count = 0;
    do {
        count = ::read(fd, out, size);
    } while (count < 0 && errno == EINTR);
    return count;
}

bool write_whole(int fd, const char* data, std::size_t size) {
    while (size > 0) {
        const ssize_t count = ::write(fd, data, size);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        data += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

} // namespace

int open_temporary() {
    const char* folder = std::getenv("TMPDIR");
    if (!folder || *folder == '\0')
        folder = P_tmpdir;
    return open_temporary_in(folder);
}

int open_temporary_in(const std::string& folder) {
    const int fd = ::open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (fd >= 0)
        return fd;
    // Not all file systems can do that.
    std::string path = folder + "/zanl-profile.XXXXXX";
    const int named = ::mkostemp(path.data(), O_CLOEXEC);
    if (named >= 0)
        ::unlink(path.c_str());
    return named;
}

std::string reason_of(int error_number) {
    return std::generic_category().message(error_number);
}

RunInput::RunInput(const std::string& name, Need need) {
    open(name);
    if (m_fd < 0)
        return;
    struct stat info {};
    if (::fstat(m_fd, &info) == 0 && S_ISDIR(info.st_mode)) {
        m_fault = "it is a folder";
        return;
    }
    m_has_places = S_ISREG(info.st_mode);
    if (m_has_places)
        m_begin = name == "-" ? ::lseek(m_fd, 0, SEEK_CUR) : 0;
    m_path = name;
    const bool is_usable =
        need == Need::reading || (m_has_places && (need == Need::rereading || m_begin == 0));
    if (!is_usable)
        copy();
    if (name == "-" || !is_usable)
        m_path = "/proc/self/fd/" + std::to_string(m_fd);
    if (m_fault.empty() && need == Need::path)
        check_package();
}

RunInput::~RunInput() {
    if (m_fd >= 0)
        ::close(m_fd);
}

void RunInput::open(const std::string& name) {
    m_fd =
        name == "-" ? ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0) : ::open(name.c_str(), O_RDONLY | O_CLOEXEC);
    if (m_fd < 0)
        m_fault = "it can't be opened: " + reason_of(errno);
}

void RunInput::copy() {
    const int copy = open_temporary();
    std::vector<char> piece(std::size_t{1} << 18);
    ssize_t count = 0;
    bool is_good = copy >= 0;
    while (is_good && (count = read_some(m_fd, piece.data(), piece.size())) > 0)
        is_good = write_whole(copy, piece.data(), static_cast<std::size_t>(count));
    if (!is_good)
        m_fault = "it can't be copied to a temporary file: " + reason_of(errno);
    else if (count < 0)
        m_fault = "it can't be read: " + reason_of(errno);
    ::close(m_fd);
    m_fd = copy;
    m_has_places = true;
    m_begin = 0;
}

// What isn't even an ELF file gets a reason.
void RunInput::check_package() {
    constexpr std::string_view elf_magic =
        "\x7f"
        "ELF";
    constexpr std::string_view gzip_magic = "\x1f\x8b";
    std::array<char, 4> bytes{};
    const ssize_t count = ::pread(m_fd, bytes.data(), bytes.size(), 0);
    const std::string_view beginning(bytes.data(), count < 0 ? 0 : static_cast<std::size_t>(count));
    if (count < 0)
        m_fault = "it can't be read: " + reason_of(errno);
    else if (count == 0)
        m_fault = "it is empty";
    else if (beginning.starts_with(gzip_magic))
        m_fault = "it is compressed; uncompress it first";
    else if (beginning != elf_magic)
        m_fault = "it is no package: it doesn't begin as an ELF file";
    m_is_unusable = count >= 0 && !m_fault.empty();
}

int RunInput::descriptor() const {
    const int fd = ::fcntl(m_fd, F_DUPFD_CLOEXEC, 0);
    if (fd >= 0 && m_has_places)
        ::lseek(fd, m_begin, SEEK_SET);
    return fd;
}

} // namespace zan::profile
