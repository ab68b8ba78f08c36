// SPDX-License-Identifier: Apache-2.0
// Unpacking a directory stream into files and folders.
#include <sys/stat.h>

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <new>

#include "contract.h"
#include "pkg_editor.h"
#include "pkg_stream.h"

using namespace zan::pkg;

namespace {

// A file below this size goes through one buffer; a larger one through a block of its own size.
constexpr std::size_t buffered_file_size = 65536;
// Target folder, slash and an entry's name, with the NUL.
constexpr std::size_t max_target_length = 12288;
constexpr mode_t folder_permissions = 0755;

// Results of the plain functions.
enum Result : int { failed, done, no_memory_for_file };

class Unpacker {
  public:
    // `caller` is named in messages.
    Unpacker(StreamReader& reader, const char* caller, const char* directory);

    // Makes the target folder and all entries in it.
    Result run();

  private:
    [[gnu::format(printf, 2, 3)]] Result fail(const char* format, ...) const;
    Result write_entry();
    Result write_file(const char* path);
    Result write_data(const char* path, std::FILE* file);

    StreamReader& m_reader;
    const char* const m_caller;
    const std::size_t m_directory_length;
    std::string m_path; // the target folder with its slash, to which names of entries are added
    const std::unique_ptr<char[]> m_small_file{new char[buffered_file_size]};
};

Unpacker::Unpacker(StreamReader& reader, const char* caller, const char* directory)
    : m_reader(reader),
      m_caller(caller),
      m_directory_length(std::strlen(directory)),
      m_path(directory, std::min(m_directory_length, max_target_length - 1)) {
}

Result Unpacker::fail(const char* format, ...) const {
    std::fprintf(stderr, "%s: ", m_caller);
    va_list arguments;
    va_start(arguments, format);
    std::vfprintf(stderr, format, arguments);
    va_end(arguments);
    return failed;
}

Result Unpacker::run() {
    if (!m_reader.start())
        return fail("Unable to initialize zlib for reading from buffer\n");
    ::mkdir(m_path.c_str(), folder_permissions); // one that exists is fine; without one no file can be made
    if (m_path.size() + 1 < max_target_length)
        m_path += '/';
    for (;;) {
        switch (m_reader.next()) {
            case StreamReader::Next::entry:
                if (const Result result = write_entry(); result != done)
                    return result;
                break;
            case StreamReader::Next::end:
            case StreamReader::Next::cut:
                return done;
            case StreamReader::Next::bad_header:
                return fail("Error reading from buffer\n");
            case StreamReader::Next::bad_magic:
                return fail("Incorrect magic number read from buffer\n");
            case StreamReader::Next::bad_name:
                return fail("Error reading file name from buffer\n");
        }
    }
}

Result Unpacker::write_entry() {
    if (m_directory_length + 2 > max_target_length)
        return fail("Directory name too long\n");
    const std::string path = (m_path + m_reader.name()).substr(0, max_target_length - 1);
    if (m_reader.header().type != record_directory)
        return write_file(path.c_str());
    ::mkdir(path.c_str(), folder_permissions);
    return done;
}

Result Unpacker::write_file(const char* path) {
    std::FILE* const file = std::fopen(path, "wb");
    if (!file)
        return fail("Unable to open %s for writing: %s\n", path, std::strerror(errno));
    std::setvbuf(file, nullptr, _IONBF, 0); // or a small file on a full disk would be lost in fclose()
    const Result result = m_reader.header().size == 0 ? done : write_data(path, file);
    std::fclose(file);
    return result;
}

Result Unpacker::write_data(const char* path, std::FILE* file) {
    const std::size_t size = m_reader.header().size;
    void* const block = size < buffered_file_size ? nullptr : std::malloc(size);
    if (size >= buffered_file_size && !block) {
        fail("Failed to allocate buffer to write %s: %s\n", path, std::strerror(errno));
        return no_memory_for_file;
    }
    void* const data = block ? block : m_small_file.get();
    Result result = done;
    if (!m_reader.read(data, size))
        result = fail("Error reading file data for %s from buffer\n", path);
    else if (std::fwrite(data, 1, size, file) != size)
        result = fail("Failed to write to %s: %s\n", path, std::strerror(errno));
    std::free(block);
    return result;
}

// Unpacks from what readers are made of: a file, or bytes and their number.
template <class... Source>
Result unpack(const char* caller, const char* directory, Source... source) {
    try {
        StreamReader reader(source...);
        return Unpacker(reader, caller, directory).run();
    } catch (const std::bad_alloc&) { // which callers in C can't catch
        std::fprintf(stderr, "%s: No memory to read from buffer\n", caller);
        return failed;
    }
}

} // namespace

int zan_pkg_unpack(const char* filename, const char* directory) {
    constexpr const char* caller = "zan_pkg_unpack";
    if (!filename || !directory)
        return failed;
    const bool is_stdin = std::strcmp(filename, "-") == 0;
    std::FILE* const input = is_stdin ? stdin : std::fopen(filename, "rb");
    if (!input) {
        std::fprintf(stderr, "%s: Unable to open %s for reading: %s\n", caller, filename,
                     std::strerror(errno));
        return failed;
    }
    const Result result = unpack(caller, directory, input);
    if (!is_stdin)
        std::fclose(input);
    return result;
}

int zan_pkg_unpack_buffer(const void* buffer, size_t size, const char* directory) {
    if (!directory)
        return failed;
    const void* const input = buffer;
    ZAN_CONTRACT(input != nullptr, "input != ((void *)0)");
    return unpack("zan_pkg_unpack_buffer", directory, input, size);
}
