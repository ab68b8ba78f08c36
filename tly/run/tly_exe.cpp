#include "tly_exe.h"

#include "diagnostics.h"
#include "document.h"
#include "monitor_reader.h"
#include "package_sections.h"

namespace {

struct FileArgument {
    const char* type;
    const char* position;
};

constexpr FileArgument file_arguments[] = {{"zanx", "first"}, {"mon", "second"}, {"json", "third"}};
constexpr int num_file_arguments = 3;

int refuse(const std::string& reason) {
    diagnose("ABORT: {}\n", reason);
    printUsage();
    return 0;
}

// What lives as long as a run.
struct Run {
    Run(const char* zanx_path, const char* mon_path) : package(zanx_path), mon_path(mon_path) {}

    Package package;
    const char* mon_path;
    ptree* tree = new ptree(empty_document());
    std::map<std::string, TlyKernel*>* kernels = new std::map<std::string, TlyKernel*>;
    std::unordered_map<std::string, TlyExtMem*> ext_mems;
    std::map<std::string, std::string> original_names;
    bool no_profiler = false;
};

int read_monitor_file(Run& run) {
    FoldedMonitorNodes lists;
    const int status = read_monitor_file(*run.kernels, lists, run.mon_path, run.original_names, run.ext_mems,
                                         run.no_profiler);
    lists.append_to(*run.tree);
    return status;
}

// A stage gives its status, 0 for success; `failure` is what ends the run otherwise.
struct Stage {
    int (*run)(Run& run);
    const char* failure;
};

// In the order of a run: the memories must be there before counters are read, and the clock must stand in the
// tree before the profiler description is.
constexpr Stage stages[] = {
    {[](Run& run) { return parse_version(*run.tree, run.package); }, "ABORT: Error parsing version."},
    {[](Run& run) { return parse_board(*run.tree, run.package, run.ext_mems); },
     "ABORT: Error parsing board .xml file."},
    {[](Run& run) { return parse_timing_report(*run.tree, run.package); },
     "ABORT: Error parsing Velmora report."},
    {[](Run& run) {
         constexpr int no_description = 2;
         const int status = parse_description(*run.kernels, *run.tree, run.package, run.original_names);
         run.no_profiler = status == no_description;
         return run.no_profiler ? 0 : status;
     },
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
    int status = 0;
    for (const Stage& stage : stages) {
        status = stage.run(run);
        if (status != 0) {
            diagnose("{}\n", stage.failure);
            break;
        }
    }
    if (status == 0)
        write_report(json_path, *run.tree);
    clean_up(run.tree, run.kernels, run.ext_mems);
    return status;
}

void clean_up(ptree* tree, std::map<std::string, TlyKernel*>* kernels,
              // cppcheck-suppress constParameter ; callers pass what they own, and it is gone afterwards
              std::unordered_map<std::string, TlyExtMem*>& ext_mems) {
    if (tree) {
        dismantle(*tree); // call chains may be deeper than the stack
        delete tree;
    }
    for (const auto& [name, kernel] : *kernels) {
        for (TlyModuleInst* inst : kernel->module_insts())
            delete inst;
        delete kernel;
    }
    delete kernels;
    for (const auto& [name, memory] : ext_mems)
        delete memory;
}
