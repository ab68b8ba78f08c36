// SPDX-License-Identifier: Apache-2.0
#include "stream_plan.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <limits>
#include <optional>
#include <set>

#include "failure.h"
#include "pkg_stream.h"

namespace zan::tool {

namespace {

namespace fs = std::filesystem;

// A record holds sizes in 32 bits.
constexpr std::uint64_t max_file_size = std::numeric_limits<std::uint32_t>::max();

// What identifies a file: links give it any number of paths.
struct FileId {
    dev_t device;
    ino_t inode;
    friend bool operator==(const FileId&, const FileId&) = default;
};

struct stat status_of(const std::string& path) {
    struct stat status;
    if (::stat(path.c_str(), &status) != 0)
        throw system_failure("can't read " + in_quotes(path));
    return status;
}

// The names in a folder, sorted, so that the same files always make the same stream: the system lists them in
// any order.
std::vector<std::string> names_in(const std::string& folder) {
    std::error_code error;
    std::vector<std::string> names;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
        names.push_back(entry->path().filename());
    if (error)
        throw Failure("can't read the folder " + in_quotes(folder) + ": " + error.message());
    std::ranges::sort(names);
    return names;
}

class Planner {
  public:
    explicit Planner(const std::string& output) {
        if (output.empty())
            return;
        const fs::path parent = fs::path(output).parent_path();
        struct stat status;
        if (::stat(parent.empty() ? "." : parent.c_str(), &status) == 0)
            m_output_folder = FileId{status.st_dev, status.st_ino};
        m_output = output;
    }

    // `path` is as the user wrote it, relative to the folder `base`.
    void add(const fs::path& base, const std::string& path) {
        const fs::path normal = fs::path(path).lexically_normal().relative_path();
        if (std::ranges::find(normal, "..") != normal.end())
            throw Failure("can't pack " + in_quotes(path) +
                          ": a name in a stream can't have '..'; see --directory");
        const fs::path root = fs::path(path).root_path();
        fs::path name;
        fs::path place = root.empty() ? base : root;
        std::vector<std::string> steps;
        for (const fs::path& step : normal) {
            if (!step.empty() && step != ".")
                steps.push_back(step);
        }
        for (std::size_t i = 0; i < steps.size(); ++i) {
            place /= steps[i];
            name /= steps[i];
            if (i + 1 < steps.size())
                add_folder_itself(place, name);
        }
        add_tree(place.empty() ? "." : place.string(), name);
    }

    std::vector<PlannedEntry> entries;

  private:
    void add_folder_itself(const std::string& path, const std::string& name) {
        check_name(path, name);
        if (m_folders.insert(name).second)
            entries.push_back({path, name, true, 0, 0});
    }

    void add_tree(const std::string& path, const std::string& name) {
        const struct stat status = status_of(path);
        if (S_ISREG(status.st_mode))
            return add_file(path, name, status);
        if (!S_ISDIR(status.st_mode))
            throw Failure("can't pack " + in_quotes(path) + ": it is neither a file nor a folder");
        // Links to folders are followed, so a walk could go round for ever. Only folders that the walk is in
        // matter: elsewhere a folder may come twice.
        const FileId id = {status.st_dev, status.st_ino};
        if (std::ranges::find(m_open_folders, id) != m_open_folders.end())
            throw Failure("can't pack " + in_quotes(path) + ": it leads back to a folder that it is in");
        // The stream would be packed into itself.
        if (m_output_folder == id)
            throw Failure("can't pack " + in_quotes(path) + ": the output, " + in_quotes(m_output) +
                          ", is in it");
        if (!name.empty())
            add_folder_itself(path, name);
        m_open_folders.push_back(id);
        for (const std::string& entry : names_in(path))
            add_tree(path + "/" + entry, name.empty() ? entry : name + "/" + entry);
        m_open_folders.pop_back();
    }

    void add_file(const std::string& path, const std::string& name, const struct stat& status) {
        check_name(path, name);
        const auto size = static_cast<std::uint64_t>(status.st_size);
        if (size > max_file_size)
            throw Failure(
                fmt::format("can't pack {}: it has {} bytes, and a stream holds files of at most {}",
                            in_quotes(path), size, max_file_size));
        entries.push_back({path, name, false, status.st_mode, static_cast<std::uint32_t>(size)});
    }

    static void check_name(const std::string& path, const std::string& name) {
        if (name.size() >= zan::pkg::max_name_length)
            throw Failure(fmt::format("can't pack {}: a name in a stream has at most {} bytes",
                                      in_quotes(path), zan::pkg::max_name_length - 1));
    }

    std::string m_output;
    std::optional<FileId> m_output_folder;
    std::set<std::string> m_folders;    // names of folders that are in the stream already
    std::vector<FileId> m_open_folders; // from the first folder to the current one
};

} // namespace

std::vector<PlannedEntry> plan_stream(const std::vector<std::string>& paths, const std::string& directory,
                                      const std::string& output) {
    Planner planner(output);
    for (const std::string& path : paths)
        planner.add(directory, path);
    return std::move(planner.entries);
}

} // namespace zan::tool
