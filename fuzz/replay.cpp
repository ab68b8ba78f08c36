// SPDX-License-Identifier: Apache-2.0
// replay FILE...: hands each file to the fuzz target that this is linked with, as the fuzzer would.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

int replay(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(file), {});
    if (!file) {
        std::fprintf(stderr, "can't read %s\n", path.c_str());
        return 1;
    }
    std::printf("%s: %zu bytes\n", path.c_str(), bytes.size());
    std::fflush(stdout);
    return LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

} // namespace

// Folders stand for all files below them. Without any file at all there is something wrong.
// NOLINTNEXTLINE(bugprone-exception-escape): a replay that throws has failed
int main(int argc, char** argv) {
    int num_files = 0;
    int failures = 0;
    for (int i = 1; i < argc; ++i) {
        if (!fs::is_directory(argv[i])) {
            ++num_files;
            failures += replay(argv[i]) != 0;
            continue;
        }
        for (const auto& entry : fs::recursive_directory_iterator(argv[i])) {
            if (entry.is_regular_file()) {
                ++num_files;
                failures += replay(entry.path()) != 0;
            }
        }
    }
    return num_files == 0 || failures != 0;
}
