// SPDX-License-Identifier: Apache-2.0
#include "replaced_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <optional>

#include "failure.h"
#include "files.h"
#include "package_file.h"
#include "section_kinds.h"

namespace zan::tool {

namespace {

bool is_package(const std::string& path) {
    try {
        const PackageFile package(path);
        package.check_editable(); // a program is none
        return true;
    } catch (const SystemFailure&) {
        throw; // a file that can't be read may be one
    } catch (const Failure&) {
        return false;
    }
}

bool is_stream(int fd, std::uint64_t size, const std::string& path) {
    const FileBytes beginning = read_range(fd, 0, std::min<std::uint64_t>(size, stream_beginning), path);
    return begins_stream(beginning.data(), beginning.size());
}

} // namespace

void check_replaceable(const std::string& path, FileKind kind) {
    struct stat status;
    if (::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size == 0)
        return;
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (file.get() < 0)
        throw system_failure("can't see whether " + in_quotes(path) + " may be replaced");
    if (kind == FileKind::package) {
        if (!is_package(path))
            throw Failure(in_quotes(path) + " is no package; --force replaces it");
        return;
    }
    if (is_stream(file.get(), static_cast<std::uint64_t>(status.st_size), path))
        return;
    if (is_package(path))
        throw Failure(in_quotes(path) + " is a package; a stream in it is " + in_quotes(path + ":SECTION") +
                      ", and --force replaces it all");
    throw Failure(in_quotes(path) + " is no directory stream; --force replaces it");
}

} // namespace zan::tool
