// SPDX-License-Identifier: Apache-2.0
// Packing files and folders into a directory stream.
#include <dirent.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>

#include "pkg_editor.h"
#include "pkg_stream.h"

using namespace zan::pkg;

namespace {

// A file of this size or less goes through one buffer; a larger one through a block of its own size.
constexpr std::size_t small_file_size = 65536;
// A folder's path with its slash and NUL.
constexpr std::size_t max_path_length = 8192;

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

struct CloseFolder {
    void operator()(DIR* folder) const { ::closedir(folder); }
};
using Folder = std::unique_ptr<DIR, CloseFolder>;

struct FreeBlock {
    void operator()(void* block) const { std::free(block); }
};
using Block = std::unique_ptr<void, FreeBlock>;

[[gnu::format(printf, 1, 2)]] bool fail(const char* format, ...) {
    std::fputs("zan_pkg_pack: ", stderr);
    va_list arguments;
    va_start(arguments, format);
    std::vfprintf(stderr, format, arguments);
    va_end(arguments);
    return false;
}

class Packer {
  public:
    Packer(const char* output_name, std::FILE* output) : m_output_name(output_name), m_writer(output) {}

    bool start() { return m_writer.start(); }
    // Adds a file, or a folder with all that it holds. False if that fails, which is reported.
    bool add(const std::string& path);
    // A write that fails here isn't reported: only closing the file is looked at.
    void finish() { m_writer.finish(); }

  private:
    bool add_file(const std::string& path, const struct stat& status);
    bool add_directory(const std::string& path);

    bool check_write(bool written) const {
        return written || fail("Failed to write to %s: %s\n", m_output_name, std::strerror(errno));
    }

    const char* m_output_name;
    StreamWriter m_writer;
    const std::unique_ptr<char[]> m_small_file{new char[small_file_size]};
};

bool Packer::add(const std::string& path) {
    struct stat status;
    if (::stat(path.c_str(), &status) != 0)
        return fail("Unable to stat %s: %s\n", path.c_str(), std::strerror(errno));
    if (S_ISDIR(status.st_mode))
        return add_directory(path);
    if (S_ISREG(status.st_mode))
        return add_file(path, status);
    return fail("File %s is not a file or directory\n", path.c_str());
}

bool Packer::add_file(const std::string& path, const struct stat& status) {
    const auto size = static_cast<std::uint32_t>(status.st_size); // a larger file is cut
    const File file(std::fopen(path.c_str(), "rb"));
    if (!file)
        return fail("Unable to open %s for reading: %s\n", path.c_str(), std::strerror(errno));
    if (!check_write(m_writer.append_entry(record_file, status.st_mode, path, size)))
        return false;
    if (size == 0)
        return true;
    Block block(size > small_file_size ? std::malloc(size) : nullptr);
    if (size > small_file_size && !block)
        return fail("Failed to allocate buffer to read %s: %s\n", path.c_str(), std::strerror(errno));
    void* const data = block ? block.get() : m_small_file.get();
    errno = 0; // the end of a file that has shrunk sets none
    if (std::fread(data, 1, size, file.get()) != size)
        return fail("Failed to read file %s: %s\n", path.c_str(), std::strerror(errno));
    return check_write(m_writer.append(data, size));
}

bool Packer::add_directory(const std::string& path) {
    if (!check_write(m_writer.append_entry(record_directory, 0, path, 0)))
        return false;
    if (path.size() + 2 > max_path_length)
        return fail("Failed to write to %s: %s\n", m_output_name, "Directory name too long");
    const Folder folder(::opendir(path.c_str()));
    if (!folder)
        return fail("Unable to read directory %s: %s\n", path.c_str(), std::strerror(errno));
    while (const dirent* entry = ::readdir(folder.get())) {
        const std::string_view name = entry->d_name;
        if (name == "." || name == "..")
            continue;
        std::string entry_path = path + "/";
        entry_path += name.substr(0, max_path_length - 1 - entry_path.size());
        if (!add(entry_path))
            return false;
    }
    return true;
}

bool pack(const char* filename, const char* const* paths) {
    File output(std::fopen(filename, "wb"));
    if (!output)
        return fail("Unable to open %s for writing: %s\n", filename, std::strerror(errno));
    Packer packer(filename, output.get());
    if (!packer.start())
        return fail("Unable to initialize zlib for writing %s\n", filename);
    for (; *paths; ++paths) {
        if (!packer.add(*paths))
            return false;
    }
    packer.finish();
    if (std::fclose(output.release()) != 0)
        return fail("Write of %s failed: %s\n", filename, std::strerror(errno));
    return true;
}

} // namespace

int zan_pkg_pack(const char* filename, const char* const* paths) {
    if (!filename || !paths)
        return 0;
    try {
        return pack(filename, paths);
    } catch (const std::bad_alloc&) { // which callers in C can't catch
        return fail("No memory to write %s\n", filename);
    }
}
