// SPDX-License-Identifier: Apache-2.0
// std::filesystem::remove_all() and nftw() allocate, so a handler can't call them: the signal may have come
// while the heap was locked. Entries are read by the system call itself, as readdir() allocates too.
#include "remove_tree.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace zan::tool {

namespace {

constexpr int tree_flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

// The beginning of an entry as getdents64() writes it; the name follows.
struct EntryHead {
    std::uint64_t inode;
    std::int64_t offset;
    std::uint16_t size; // of the whole entry
    std::uint8_t type;
};
constexpr std::size_t name_offset = offsetof(EntryHead, type) + 1;

bool means_a_folder_itself(const char* name) {
    return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
}

// A walk through folders that holds the current one alone: upwards it goes by "..".
class Remover {
  public:
    explicit Remover(int folder) : m_folder(folder) {}

    // Each round removes something or goes one level up or down. A folder that can't be emptied would be
    // entered again and again, so the rounds are limited by what was removed.
    void run() {
        for (std::uint64_t rounds = 0; rounds <= 3 * (m_removed + m_depth + 1); ++rounds) {
            if (remove_entries())
                continue; // it is in a folder below now
            if (m_depth == 0)
                break;
            --m_depth;
            move_to("..");
        }
        ::close(m_folder);
    }

  private:
    void move_to(const char* name) {
        const int next = ::openat(m_folder, name, tree_flags);
        ::close(m_folder);
        m_folder = next;
    }

    // Removes the files and empty folders of the current folder, up to a folder that isn't empty. Goes into
    // that one and returns true.
    bool remove_entries() {
        ::lseek(m_folder, 0, SEEK_SET);
        alignas(EntryHead) char entries[4096];
        for (;;) {
            const long size = ::syscall(SYS_getdents64, m_folder, entries, sizeof entries);
            if (size <= 0)
                return false;
            for (std::size_t at = 0; at < static_cast<std::size_t>(size);) {
                EntryHead head;
                std::memcpy(&head, entries + at, sizeof head);
                if (enters(entries + at + name_offset))
                    return true;
                at += head.size;
            }
        }
    }

    bool enters(const char* name) {
        if (means_a_folder_itself(name))
            return false;
        if (::unlinkat(m_folder, name, 0) == 0 || ::unlinkat(m_folder, name, AT_REMOVEDIR) == 0) {
            ++m_removed;
            return false;
        }
        const int folder = ::openat(m_folder, name, tree_flags);
        if (folder < 0)
            return false;
        ::close(m_folder);
        m_folder = folder;
        ++m_depth;
        return true;
    }

    int m_folder;
    std::uint64_t m_removed = 0;
    std::uint64_t m_depth = 0;
};

} // namespace

void remove_tree(const char* path) {
    if (::unlink(path) == 0)
        return;
    const int folder = ::open(path, tree_flags);
    if (folder < 0)
        return;
    Remover(folder).run();
    ::rmdir(path);
}

} // namespace zan::tool
