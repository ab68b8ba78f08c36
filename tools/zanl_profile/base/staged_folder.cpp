#include "staged_folder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "failure.h"
#include "unfinished_file.h"

namespace zan::tool {

namespace {

namespace fs = std::filesystem;

constexpr mode_t folder_permissions = 0777; // less the user's mask
constexpr mode_t file_permissions = 0666;
constexpr mode_t permission_bits = 0777;

// Calls `visit(path, is_last)` for each step on the way to an entry: "a", "a/b", "a/b/c". Empty steps and "."
// are skipped.
template <typename Visit>
void for_each_step(const std::string& name, Visit visit) {
    std::vector<std::string> steps;
    for (const fs::path& step : fs::path(name)) {
        if (!step.empty() && step != ".")
            steps.push_back(step);
    }
    std::string path;
    for (std::size_t i = 0; i < steps.size(); ++i) {
        path += (i == 0 ? "" : "/") + steps[i];
        visit(path, i + 1 == steps.size());
    }
}

// Only the bits of owner, group and others count: no file that runs with its owner's rights comes out of a
// stream. open() applies the user's mask.
mode_t permissions_of(std::uint32_t mode) {
    return S_ISREG(mode) ? mode & permission_bits : file_permissions;
}

} // namespace

std::string name_fault(const std::string& name) {
    if (name.empty())
        return "it is empty";
    if (name.front() == '/')
        return "it is absolute";
    for (const fs::path& step : fs::path(name)) {
        if (step == "..")
            return "it has '..' in it";
    }
    return {};
}

void TargetFolder::check(const std::string& name, bool is_folder) {
    for_each_step(name, [&](const std::string& path, bool is_last) {
        const bool needs_folder = !is_last || is_folder;
        if (needs_folder && m_good.contains(path))
            return;
        check_step(path, name, needs_folder, is_last);
        if (needs_folder)
            m_good.insert(path);
    });
}

// By lstat(), which looks at a link itself and not at its target.
void TargetFolder::check_step(const std::string& path, const std::string& name, bool needs_folder,
                              bool is_last) const {
    struct stat status;
    const std::string there = in_quotes(m_folder + "/" + path);
    if (::lstat((m_folder + "/" + path).c_str(), &status) != 0) {
        if (errno == ENOENT || errno == ENOTDIR)
            return;
        throw system_failure("can't look at " + there);
    }
    if (S_ISLNK(status.st_mode))
        throw Failure("refused the name " + in_quotes(name) + ": " + there + " is a symbolic link");
    if (needs_folder && !S_ISDIR(status.st_mode))
        throw Failure("can't write " + in_quotes(name) + ": " + there + " is no folder");
    if (is_last && !needs_folder && S_ISDIR(status.st_mode))
        throw Failure("can't write " + in_quotes(name) + ": " + there + " is a folder");
}

StagedFolder::StagedFolder(const std::string& target) : m_target(target) {
    while (m_target.size() > 1 && m_target.back() == '/')
        m_target.pop_back();
    std::error_code error;
    m_target_exists = fs::exists(m_target, error);
    const fs::path parent = fs::path(m_target).parent_path();
    if (!m_target_exists && !parent.empty())
        fs::create_directories(parent, error);
    // Beside the target, or inside it if it exists, so that no rename() crosses the border of a file system.
    m_stage = m_target + (m_target_exists ? "/" : "") + unfinished_suffix;
    const SignalsHeld held;
    if (error || !::mkdtemp(m_stage.data())) {
        m_stage.clear();
        throw system_failure("can't write to the folder " + in_quotes(target));
    }
    m_removed.emplace(m_stage);
}

StagedFolder::~StagedFolder() {
    std::error_code ignored;
    if (!m_stage.empty())
        fs::remove_all(m_stage, ignored);
}

void StagedFolder::make_folder(const std::string& name) {
    if (!m_folders.insert(name).second)
        return;
    if (::mkdir((m_stage + "/" + name).c_str(), folder_permissions) != 0)
        throw system_failure("can't make the folder " + in_quotes(m_target + "/" + name));
    m_entries.push_back({name, true});
}

void StagedFolder::add_folder(const std::string& name) {
    for_each_step(name, [&](const std::string& path, bool) { make_folder(path); });
}

Descriptor StagedFolder::add_file(const std::string& name, std::uint32_t mode) {
    std::string whole;
    for_each_step(name, [&](const std::string& path, bool is_last) {
        whole = path;
        if (!is_last)
            make_folder(path);
    });
    Descriptor file(::open((m_stage + "/" + whole).c_str(),
                           O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, permissions_of(mode)));
    if (file.get() < 0)
        throw system_failure("can't write " + in_quotes(m_target + "/" + name));
    m_entries.push_back({whole, false});
    return file;
}

void StagedFolder::commit() {
    const SignalsHeld held; // all entries are there, or none
    if (m_target_exists)
        return move_into_target();
    // A new target appears in one step. mkdtemp() has made it for its owner alone.
    ::chmod(m_stage.c_str(), masked_permissions(folder_permissions));
    if (::rename(m_stage.c_str(), m_target.c_str()) != 0)
        throw system_failure("can't make the folder " + in_quotes(m_target));
    m_stage.clear();
}

// All is checked before the first move, as links or folders may have come into the target since it was
// checked last. The moves are one rename() each: a failure of the system between two of them leaves whole
// files, but not all of them.
void StagedFolder::move_into_target() {
    TargetFolder target(m_target);
    for (const Entry& entry : m_entries)
        target.check(entry.name, entry.is_folder);
    for (const Entry& entry : m_entries) {
        const std::string path = m_target + "/" + entry.name;
        const bool moved = entry.is_folder
                               ? ::mkdir(path.c_str(), folder_permissions) == 0 || errno == EEXIST
                               : ::rename((m_stage + "/" + entry.name).c_str(), path.c_str()) == 0;
        if (!moved)
            throw system_failure("can't write " + in_quotes(path));
    }
}

} // namespace zan::tool
