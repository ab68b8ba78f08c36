// SPDX-License-Identifier: Apache-2.0
// Any lines as the monitor file of a design with blocks of every kind. The design is loaded once, and what an
// input has left in it is removed before the next one.
#include <cstdint>
#include <exception>
#include <filesystem>
#include <string>

#include "board_import.h"
#include "document.h"
#include "memory_file.h"
#include "monitor_reader.h"
#include "package_sections.h"
#include "pkg_editor.h"
#include "profiler_import.h"
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

// The design, as a run has it when it comes to the monitor file.
struct Design {
    Design() {
        const TempDir folder;
        const std::string path = make_package(folder);
        Package package(path.c_str());
        for (const StageResult result :
             {parse_version(tree, package), import_board(model, tree, package),
              parse_timing_report(tree, package), import_profiler(model, tree, package)}) {
            if (result != StageResult::done)
                __builtin_trap();
        }
    }

    // Lines change kernels and their instances, and nothing else of a design that is described.
    void reset() {
        for (const auto& [name, kernel] : model.kernels) {
            kernel->resetKernel();
            kernel->set_in_mon(false);
            kernel->set_start_time(-1);
        }
    }

    ptree tree = empty_document();
    ProfileModel model;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Design design;
    const MemoryFile monitor({reinterpret_cast<const char*>(data), size});
    ptree tree = design.tree;
    try {
        FoldedMonitorNodes nodes;
        if (read_monitor_file(design.model, nodes, monitor.path()) == StageResult::done) {
            nodes.append_to(tree);
            write_report("/dev/null", tree);
        }
    } catch (const std::exception&) { // a line without a name
    }
    dismantle(tree);
    design.reset();
    return 0;
}
