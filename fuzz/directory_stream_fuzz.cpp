// SPDX-License-Identifier: Apache-2.0
// Any bytes as a directory stream, in memory and in a file. Nothing reaches the disk: files go to /dev/null.
#include <fcntl.h>
#include <sys/stat.h>
#include <zlib.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "pkg_editor.h"

namespace {

constexpr const char* input_name = "fuzzed input";
constexpr const char* target_name = "fuzzed target";
// Streams may ask for up to 4 GiB in one block; larger ones than this are refused, which is a case as well.
constexpr std::size_t max_block = 1 << 24;

std::string_view input;

bool is_target(std::string_view path) {
    return path.starts_with(target_name);
}

// Makes a stream of these contents: a fuzzer takes long to find records that are compressed.
std::string as_stream(std::string_view contents) {
    uLongf size = compressBound(contents.size()) + 100;
    std::string stream(size, '\0');
    compress2(reinterpret_cast<Bytef*>(stream.data()), &size, reinterpret_cast<const Bytef*>(contents.data()),
              contents.size(), Z_NO_COMPRESSION);
    stream.resize(size);
    return stream;
}

} // namespace

extern "C" {

// The linker puts these in place of the functions that they are named after.
std::FILE* __real_fopen(const char* path, const char* mode);
int __real_mkdir(const char* path, mode_t mode);
void* __real_malloc(std::size_t size);

std::FILE* __wrap_fopen(const char* path, const char* mode) {
    if (std::string_view(path) == input_name)
        return input.empty() ? __real_fopen("/dev/null", mode)
                             : ::fmemopen(const_cast<char*>(input.data()), input.size(), mode);
    return __real_fopen(is_target(path) ? "/dev/null" : path, mode);
}

int __wrap_mkdir(const char* path, mode_t mode) {
    return is_target(path) ? 0 : __real_mkdir(path, mode);
}

void* __wrap_malloc(std::size_t size) {
    return size > max_block ? nullptr : __real_malloc(size);
}

// The first byte says whether the others are a stream or the contents of one.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    const std::string_view rest(reinterpret_cast<const char*>(data) + 1, size - 1);
    const std::string stream = data[0] == 's' ? std::string(rest) : as_stream(rest);
    input = stream;
    // cppcheck-suppress danglingLifetime ; looked at in these two calls alone
    const int from_memory = zan_pkg_unpack_buffer(input.data(), input.size(), target_name);
    const int from_file = zan_pkg_unpack(input_name, target_name);
    if (from_memory != from_file && input.size() % 32768 != 0)
        std::abort(); // they differ only where a file's end is met later than a buffer's
    return 0;
}

} // extern "C"
