// SPDX-License-Identifier: Apache-2.0
#include "view_sources.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <set>

#include "failure.h"
#include "files.h"
#include "printable.h"

namespace zan::tool {

namespace fs = std::filesystem;

namespace {

std::set<std::string> file_names(const profile::ProfileSummary& summary) {
    std::set<std::string> names;
    for (const profile::KernelSummary& kernel : summary.kernels) {
        names.insert(kernel.source.file);
        for (const profile::BlockSummary& block : kernel.blocks) {
            for (const profile::CallChain& chain : block.sources) {
                for (const profile::SourcePlace& place : chain)
                    names.insert(place.file);
            }
        }
    }
    names.erase("");
    return names;
}

bool is_below(const fs::path& path, const fs::path& folder) {
    const auto end = std::mismatch(folder.begin(), folder.end(), path.begin(), path.end());
    return end.first == folder.end() && end.second != path.end();
}

// Empty if the file can be shown; `text` then has its bytes.
std::string read_source(const fs::path& folder, const std::string& name, std::string& text) {
    if (name.find('\0') != std::string::npos)
        return "no file can have its name";
    if (fs::path(name).is_absolute())
        return "its name is absolute";
    std::error_code error;
    const fs::path path = fs::canonical(folder / name, error);
    if (error)
        return error.message();
    if (!is_below(path, folder))
        return "it is not below the folder";
    // A pipe must not hold the program up.
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (file.get() < 0 || ::fstat(file.get(), &status) != 0)
        return std::error_code(errno, std::generic_category()).message();
    if (!S_ISREG(status.st_mode))
        return "it is no regular file";
    if (static_cast<std::uint64_t>(status.st_size) > max_source_size)
        return "it has more than 2 MiB";
    const FileBytes bytes = read_range(file.get(), 0, static_cast<std::size_t>(status.st_size), name);
    text = valid_utf8({bytes.data(), bytes.size()});
    return {};
}

} // namespace

FoundSources find_sources(const profile::ProfileSummary& summary, const std::string& folder) {
    std::error_code error;
    const fs::path root = fs::canonical(folder, error);
    if (error || !fs::is_directory(root, error))
        throw Failure("no folder is called " + in_quotes(folder));
    FoundSources found;
    for (const std::string& name : file_names(summary)) {
        PageSource source{name, {}};
        const std::string fault = read_source(root, name, source.text);
        if (fault.empty())
            found.sources.push_back(std::move(source));
        else
            found.faults.push_back("the source " + in_quotes(name) + " is left out: " + fault);
    }
    return found;
}

} // namespace zan::tool
