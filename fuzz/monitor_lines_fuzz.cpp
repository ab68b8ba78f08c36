// Any lines as the monitor file of a design with blocks of every kind.
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "pkg_editor.h"
#include "run_in_process.h"
#include "temp_dir.h"

namespace {

std::string make_package(const TempDir& folder) {
    std::string path = folder.path("design.zanx");
    zan_pkg_file* const package = zan_pkg_open_file(path.c_str(), ZAN_PKG_READ_WRITE | ZAN_PKG_CREATE);
    for (const auto& file :
         std::filesystem::directory_iterator(ZAN_SAMPLES_FOLDER "/image_pipeline/sections")) {
        const std::string name = ".zan." + file.path().filename().string();
        if (!zan_pkg_add_data_section_from_file(package, name.c_str(), file.path().c_str()))
            __builtin_trap();
    }
    zan_pkg_close_file(package);
    return path;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const TempDir folder;
    static const std::string package = make_package(folder);
    run_in_process(package, {reinterpret_cast<const char*>(data), size});
    return 0;
}
