// SPDX-License-Identifier: Apache-2.0
#include "traced_calls.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <sys/uio.h>

#include <algorithm>
#include <climits>
#include <filesystem>

namespace {

namespace fs = std::filesystem;

constexpr int none = KnownCall::none;

constexpr KnownCall known_calls[] = {
    {SYS_read, "read", Calls::reads, 0, none, 2},
    {SYS_pread64, "pread64", Calls::reads, 0, none, 2},
    {SYS_readv, "readv", Calls::reads, 0, none, none},
    {SYS_preadv, "preadv", Calls::reads, 0, none, none},
    {SYS_getdents64, "getdents64", Calls::folder_reads, 0, none, none},
    {SYS_write, "write", Calls::writes, 0, none, 2},
    {SYS_pwrite64, "pwrite64", Calls::writes, 0, none, 2},
    {SYS_writev, "writev", Calls::writes, 0, none, none},
    {SYS_pwritev, "pwritev", Calls::writes, 0, none, none},
    {SYS_copy_file_range, "copy_file_range", Calls::writes, 2, none, 4},
    {SYS_openat, "openat", Calls::opens, none, 1, none},
    {SYS_openat2, "openat2", Calls::opens, none, 1, none},
    {SYS_close, "close", Calls::closes, 0, none, none},
    {SYS_fsync, "fsync", Calls::others, 0, none, none},
    {SYS_syncfs, "syncfs", Calls::others, 0, none, none},
    {SYS_fdatasync, "fdatasync", Calls::others, 0, none, none},
    {SYS_ftruncate, "ftruncate", Calls::others, 0, none, none},
    {SYS_fallocate, "fallocate", Calls::others, 0, none, none},
    {SYS_fchmod, "fchmod", Calls::others, 0, none, none},
    {SYS_fstat, "fstat", Calls::others, 0, none, none},
    {SYS_lseek, "lseek", Calls::others, 0, none, none},
    {SYS_dup, "dup", Calls::others, 0, none, none},
    {SYS_newfstatat, "newfstatat", Calls::others, none, 1, none},
    {SYS_statx, "statx", Calls::others, none, 1, none},
    {SYS_mkdirat, "mkdirat", Calls::others, none, 1, none},
    {SYS_renameat, "renameat", Calls::others, none, 1, none},
    {SYS_renameat2, "renameat2", Calls::others, none, 1, none},
    {SYS_linkat, "linkat", Calls::others, none, 1, none},
    {SYS_readlinkat, "readlinkat", Calls::others, none, 1, none},
    {SYS_fchmodat, "fchmodat", Calls::others, none, 1, none},
#ifdef __x86_64__ // newer processors have the calls above alone
    {SYS_open, "open", Calls::opens, none, 0, none},
    {SYS_creat, "creat", Calls::opens, none, 0, none},
    {SYS_stat, "stat", Calls::others, none, 0, none},
    {SYS_lstat, "lstat", Calls::others, none, 0, none},
    {SYS_mkdir, "mkdir", Calls::others, none, 0, none},
    {SYS_rename, "rename", Calls::others, none, 0, none},
    {SYS_readlink, "readlink", Calls::others, none, 0, none},
    {SYS_chmod, "chmod", Calls::others, none, 0, none},
#endif
};

bool is_letter_or_digit(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
}

// The name with X for each random letter of mkstemp().
std::string without_random_letters(const std::string& name) {
    constexpr std::string_view mark = "unfinished-";
    constexpr std::size_t num_letters = 6;
    std::string result = name;
    for (std::size_t at = result.find(mark); at != result.npos; at = result.find(mark, at)) {
        at += mark.size();
        const std::string_view letters = std::string_view(result).substr(at, num_letters);
        if (letters.size() == num_letters && std::ranges::all_of(letters, is_letter_or_digit))
            result.replace(at, num_letters, num_letters, 'X');
    }
    return result;
}

} // namespace

const KnownCall* find_call(std::uint64_t number) {
    const auto* const found = std::ranges::find(known_calls, number, &KnownCall::number);
    return found == std::end(known_calls) ? nullptr : found;
}

std::span<const KnownCall> all_calls() {
    return known_calls;
}

std::string CurrentCall::descriptor_path(std::uint64_t argument) const {
    const auto descriptor = static_cast<int>(argument);
    std::error_code ignored;
    return fs::read_symlink("/proc/" + std::to_string(m_process) + "/fd/" + std::to_string(descriptor),
                            ignored);
}

std::string CurrentCall::path_argument() const {
    const std::string text = text_at(m_arguments[static_cast<std::size_t>(m_known.path)]);
    // A file without a name has only this one.
    constexpr std::string_view own_files = "/proc/self/fd/";
    if (text.starts_with(own_files))
        return descriptor_path(std::stoul(text.substr(own_files.size())));
    // The calls with "at" in their names have a folder before the path.
    const bool has_folder = m_known.path == 1 && static_cast<int>(m_arguments[0]) != AT_FDCWD;
    if (!has_folder || text.starts_with('/'))
        return text;
    return descriptor_path(m_arguments[0]) + (text.empty() ? "" : "/" + text);
}

std::string CurrentCall::text_at(std::uint64_t address) const {
    std::string text;
    // To the end of a page at most, since the next one may not be there.
    constexpr std::uint64_t page = 4096;
    while (text.size() < PATH_MAX) {
        std::array<char, page> bytes;
        const iovec here = {bytes.data(), page - address % page};
        const iovec there = {reinterpret_cast<void*>(address), here.iov_len};
        if (::process_vm_readv(m_process, &here, 1, &there, 1, 0) != static_cast<ssize_t>(here.iov_len))
            break;
        const std::string_view piece(bytes.data(), here.iov_len);
        text += piece.substr(0, piece.find('\0'));
        if (piece.find('\0') != piece.npos)
            break;
        address += here.iov_len;
    }
    return text;
}

std::string CurrentCall::file(const std::string& folder, const std::string& output) const {
    const std::string path = m_known.path == none
                                 ? descriptor_path(m_arguments[static_cast<std::size_t>(m_known.descriptor)])
                                 : path_argument();
    if (path == output)
        return "standard output";
    const bool has_no_name = path.ends_with(" (deleted)");
    if (path.starts_with(folder + "/") && has_no_name)
        return "(unfinished)";
    if (path == folder + "/")
        return "./";
    if (path.starts_with(folder + "/"))
        return without_random_letters(path.substr(folder.size() + 1));
    // tmpfile() tries a file without a name first.
    if (has_no_name || path == "/tmp" || path.starts_with("/tmp/tmpf"))
        return "(temporary)";
    return path.empty() || path.find('/') == 0 || path.find(':') != path.npos ? ""
                                                                              : without_random_letters(path);
}
