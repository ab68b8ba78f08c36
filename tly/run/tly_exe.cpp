// SPDX-License-Identifier: Apache-2.0
#include "tly_exe.h"

#include "board_import.h"
#include "diagnostics.h"
#include "document.h"
#include "monitor_reader.h"
#include "package_sections.h"
#include "profiler_import.h"

namespace {

struct FileArgument {
    const char* type;
    const char* position;
};

constexpr FileArgument file_arguments[] = {{"zanx", "first"}, {"mon", "second"}, {"json", "third"}};
constexpr int num_file_arguments = 3;

int refuse(const std::string& reason) {
    write_message(stderr, "ABORT: {}\n", reason);
    printUsage();
    return 0;
}

// All that lives as long as a run, and what a run has to free.
struct Run {
    Run(const char* zanx_path, const char* mon_path) : package(zanx_path), mon_path(mon_path) {}
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;
    ~Run() { dismantle(tree); } // call chains may be deeper than the stack

    Package package;
    const char* mon_path;
    ptree tree = empty_document();
    ProfileModel model;
};

StageResult read_monitor_file(Run& run) {
    FoldedMonitorNodes nodes;
    const StageResult result =
        read_monitor_file(run.model, nodes, run.mon_path, LineDecoding::in_blocks, AfterInvocation::release);
    nodes.append_to(run.tree);
    return result;
}

struct Stage {
    StageResult (*work)(Run& run);
    const char* failure; // the message if it fails, which ends the run
};

// In the order of a run: the memories must be there before counters are read, and the clock must be in the
// tree before the profiler description is read.
constexpr Stage stages[] = {
    {[](Run& run) { return parse_version(run.tree, run.package); }, "ABORT: Error parsing version."},
    {[](Run& run) { return import_board(run.model, run.tree, run.package); },
     "ABORT: Error parsing board .xml file."},
    {[](Run& run) { return parse_timing_report(run.tree, run.package); },
     "ABORT: Error parsing Velmora report."},
    {[](Run& run) { return import_profiler(run.model, run.tree, run.package); },
     "ABORT: Error parsing profiler .xml file."},
    {[](Run& run) { return read_monitor_file(run); }, "ABORT: Error parsing .mon file."},
};

} // namespace

int tly_main(int argc, char** argv) {
    if (argc < 2)
        return refuse("Missing arguments.");
    if (argc < 1 + num_file_arguments)
        return refuse("Not enough file arguments.");
    if (argc > 1 + num_file_arguments)
        return refuse("Too many arguments.");
    for (int i = 0; i < num_file_arguments; ++i) {
        const FileArgument& wanted = file_arguments[i];
        if (checkArgType(argv[1 + i]) != wanted.type)
            return refuse(
                fmt::format("Missing .{} file. Incorrect {} argument.", wanted.type, wanted.position));
    }
    return runTLY(argv[1], argv[2], argv[3]);
}

std::string checkArgType(std::string path) {
    for (const FileArgument& argument : file_arguments) {
        if (path.ends_with(argument.type))
            return argument.type;
    }
    return "";
}

void printUsage() {
    write_message(stdout, "   Usage: zanl-profile-tly <filename>.zanx <filename>.mon <filename>.json \n");
}

int runTLY(char* zanx_path, char* mon_path, char* json_path) {
    Run run(zanx_path, mon_path);
    for (const Stage& stage : stages) {
        const StageResult result = stage.work(run);
        if (result == StageResult::failed) {
            write_message(stderr, "{}\n", stage.failure);
            return static_cast<int>(result);
        }
    }
    write_report(json_path, run.tree);
    return 0;
}

void clean_up(ptree* tree, std::map<std::string, TlyKernel*>* kernels,
              // cppcheck-suppress constParameter ; callers pass what they own, and it is gone afterwards
              std::unordered_map<std::string, TlyExtMem*>& ext_mems) {
    if (tree)
        dismantle(*tree); // call chains may be deeper than the stack
    delete tree;
    delete_kernels(*kernels);
    delete kernels;
    delete_ext_mems(ext_mems);
}
