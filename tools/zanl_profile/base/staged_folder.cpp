// SPDX-License-Identifier: Apache-2.0
#include "staged_folder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>

#include "failure.h"
#include "remove_tree.h"
#include "target_folder.h"
#include "unfinished_file.h"

namespace zan::tool {

namespace {

namespace fs = std::filesystem;

constexpr mode_t folder_permissions = 0777; // less the user's mask
constexpr mode_t file_permissions = 0666;
constexpr mode_t permission_bits = 0777;

// Up to this many entries are waited for one by one, more of them all at once, with all else that waits to
// reach the same disk. For 1,000 small files the first took 1.8 s and the second 0.4 s.
constexpr std::size_t max_single_waits = 100;

// Only the bits of owner, group and others count: no file that runs with its owner's rights comes out of a
// stream. open() applies the user's mask.
mode_t permissions_of(std::uint32_t mode) {
    return S_ISREG(mode) ? mode & permission_bits : file_permissions;
}

Descriptor open_root(const std::string& path) {
    Descriptor root(::open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (root.get() < 0)
        throw system_failure("can't look at " + in_quotes(path));
    return root;
}

// Waits until the names in a folder are on the disk.
bool wait_for_folder(int folder) {
    const Descriptor readable = open_for_reading(folder);
    return readable.get() >= 0 && ::fsync(readable.get()) == 0;
}

// Waits until all of the file system that a folder is in is on the disk.
bool wait_for_disk(int folder) {
    const Descriptor readable = open_for_reading(folder);
    return readable.get() >= 0 && ::syncfs(readable.get()) == 0;
}

std::string parent_of(const std::string& path) {
    const fs::path parent = fs::path(path).parent_path();
    return parent.empty() ? "." : parent.string();
}

} // namespace

StagedFolder::StagedFolder(const std::string& target) : m_target(target) {
    while (m_target.size() > 1 && m_target.back() == '/')
        m_target.pop_back();
    std::error_code error;
    m_target_exists = fs::exists(m_target, error);
    if (!error && !m_target_exists)
        fs::create_directories(parent_of(m_target), error);
    // Beside the target, or inside it if it exists, so that no rename() crosses the border of a file system.
    m_stage = m_target + (m_target_exists ? "/" : "") + unfinished_suffix;
    const auto failure = [&] {
        m_stage.clear();
        return system_failure("can't write to the folder " + in_quotes(target));
    };
    if (error) {
        errno = error.value();
        throw failure();
    }
    const SignalsHeld held;
    if (!::mkdtemp(m_stage.data()))
        throw failure();
    m_removed.emplace(m_stage);
    try {
        m_place.emplace(open_root(m_stage));
    } catch (const Failure&) {
        const int reason = errno;
        ::rmdir(m_stage.c_str());
        errno = reason;
        throw failure();
    } catch (...) {
        ::rmdir(m_stage.c_str());
        throw;
    }
}

StagedFolder::~StagedFolder() {
    if (!m_stage.empty())
        remove_tree(m_stage.c_str());
}

void StagedFolder::make_folders(std::span<const std::string_view> steps, const std::string& name) {
    for (std::size_t i = m_place->go_towards(steps); i < steps.size(); ++i) {
        const int parent = m_place->fd();
        const bool made =
            parent >= 0 && ::mkdirat(parent, std::string(steps[i]).c_str(), folder_permissions) == 0;
        if ((!made && (parent < 0 || errno != EEXIST)) || !m_place->enter(steps[i]))
            throw system_failure("can't make the folder " + in_quotes(m_target + "/" + name));
        m_num_entries += made;
    }
}

void StagedFolder::add_folder(const std::string& name) {
    make_folders(steps_of(name), name);
}

Descriptor StagedFolder::add_file(const std::string& name, std::uint32_t mode) {
    const auto steps = steps_of(name);
    errno = EISDIR; // of a name that is the folder itself
    Descriptor file;
    if (!steps.empty()) {
        make_folders({steps.data(), steps.size() - 1}, name);
        const std::string last(steps.back());
        const int parent = m_place->fd();
        // A file of that name, with permissions of its own, makes room.
        const bool is_free = parent >= 0 && (::unlinkat(parent, last.c_str(), 0) == 0 || errno == ENOENT);
        if (is_free)
            file = Descriptor(::openat(parent, last.c_str(),
                                       O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                                       permissions_of(mode)));
    }
    if (file.get() < 0)
        throw system_failure("can't write " + in_quotes(m_target + "/" + name));
    ++m_num_entries;
    return file;
}

// Of the current folder of the stage, which messages call by the name that it is to have.
std::vector<FolderEntry> StagedFolder::stage_entries() {
    const std::string path = m_place->path();
    return entries_of(m_place->fd(), m_target + (path.empty() ? "" : "/") + path);
}

bool StagedFolder::has_many() const {
    return m_num_entries > max_single_waits;
}

void StagedFolder::end_file(Descriptor file, const std::string& name) {
    const bool waited = has_many() || ::fsync(file.get()) == 0;
    if (!waited || !file.close())
        throw system_failure("can't write to " + in_quotes(m_target + "/" + name));
}

// The entries must be on the disk before they get their names: after a crash of the system those would lead
// to empty files.
void StagedFolder::wait_for_stage() {
    const auto check = [&](bool waited) {
        if (!waited)
            throw system_failure("can't write to the folder " + in_quotes(m_target));
    };
    m_place->go_to_root();
    if (has_many())
        return check(wait_for_disk(m_place->fd()));
    const auto wait = [&] {
        check(wait_for_folder(m_place->fd()));
        std::vector<std::string> folders;
        for (const FolderEntry& entry : stage_entries()) {
            if (entry.is_folder)
                folders.push_back(entry.name);
        }
        return folders;
    };
    walk_folders(*m_place, wait, [](const std::string&) {});
}

void StagedFolder::commit() {
    wait_for_stage();
    const SignalsHeld held; // all entries are there, or none
    if (m_target_exists)
        move_into_target();
    else
        appear();
}

// A new target appears in one step, and goes again if it isn't certain that it stays.
void StagedFolder::appear() {
    const Descriptor parent = open_root(parent_of(m_target));
    ::chmod(m_stage.c_str(), masked_permissions(folder_permissions)); // mkdtemp() has made it for its owner
    if (::rename(m_stage.c_str(), m_target.c_str()) != 0)
        throw system_failure("can't make the folder " + in_quotes(m_target));
    if (!wait_for_folder(parent.get())) {
        const int error = errno;
        ::rename(m_target.c_str(), m_stage.c_str());
        errno = error;
        throw system_failure("can't make the folder " + in_quotes(m_target));
    }
    m_stage.clear();
}

// All is checked before the first move, as links or folders may have come into the target since it was
// checked last.
void StagedFolder::check_target() {
    TargetFolder target(m_target);
    m_place->go_to_root();
    walk_folders(
        *m_place,
        [&] {
            std::vector<std::string> folders;
            for (const FolderEntry& entry : stage_entries()) {
                const std::string path = m_place->path();
                const std::string name = path + (path.empty() ? "" : "/") + entry.name;
                if (target.check(name, entry.is_folder) && entry.is_folder)
                    folders.push_back(entry.name);
            }
            return folders;
        },
        [](const std::string&) {});
}

// Moves what is in the current folder of the stage into the same folder of the target; returns the folders
// that the target has as well.
std::vector<std::string> StagedFolder::move_entries(int target, const std::string& target_name) {
    std::vector<std::string> folders;
    const int stage = m_place->fd();
    for (const FolderEntry& entry : stage_entries()) {
        const char* const name = entry.name.c_str();
        struct stat status;
        // A folder would take the place of an empty one, and with it its permissions.
        const bool is_there = entry.is_folder && ::fstatat(target, name, &status, AT_SYMLINK_NOFOLLOW) == 0;
        const bool is_unknown = entry.is_folder && !is_there && errno != ENOENT;
        if (is_there)
            folders.push_back(entry.name);
        else if (is_unknown || ::renameat(stage, name, target, name) != 0)
            throw system_failure("can't write " + in_quotes(target_name + "/" + entry.name));
    }
    // A folder may be one that can be written to but not read.
    const bool waited = has_many() || wait_for_folder(target) || (errno == EACCES && wait_for_disk(stage));
    if (!waited)
        throw system_failure("can't write to the folder " + in_quotes(target_name));
    return folders;
}

// A folder that the target doesn't have moves with all that is in it. The moves are one rename() each: a
// failure of the system between two of them leaves whole files, but not all of them.
void StagedFolder::move_into_target() {
    check_target();
    OpenFolders target(open_root(m_target));
    m_place->go_to_root();
    const auto name = [&] { return m_target + (target.depth() == 0 ? "" : "/") + target.path(); };
    walk_folders(
        *m_place,
        [&] {
            const bool is_there = target.depth() == m_place->depth() || target.enter(m_place->name());
            const int folder = is_there ? target.fd() : -1;
            if (folder < 0)
                throw system_failure("can't write to the folder " +
                                     in_quotes(m_target + "/" + m_place->path()));
            return move_entries(folder, name());
        },
        [&](const std::string&) { target.leave(); });
    if (has_many() && !wait_for_disk(m_place->fd()))
        throw system_failure("can't write to the folder " + in_quotes(m_target));
}

} // namespace zan::tool
