// SPDX-License-Identifier: Apache-2.0
// A whole run, of which each byte comes from the input.
#include <cstdint>
#include <string>
#include <string_view>

#include "memory_file.h"
#include "run_files.h"
#include "run_in_process.h"
#include "temp_dir.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const TempDir folder;
    static const std::string path = folder.path("design.zanx");
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    if (!has_sections(input)) {
        const MemoryFile package(input);
        run_in_process(package.path(), "0,0,kernel,1,2,-1,0\n");
        return 0;
    }
    const std::string_view monitor_lines = write_package(input, path);
    run_in_process(path, monitor_lines);
    return 0;
}
