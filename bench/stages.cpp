// stages PACKAGE MONITOR REPORT: does what a run does, and prints how many milliseconds each stage took.
#include <chrono>
#include <cstdio>
#include <map>

#include "monitor_reader.h"
#include "package_sections.h"
#include "tly_exe.h"

namespace {

template <class Stage>
void measure(const char* name, Stage stage) {
    const auto begin = std::chrono::steady_clock::now();
    stage();
    const std::chrono::duration<double, std::milli> passed = std::chrono::steady_clock::now() - begin;
    std::printf("%s %.3f\n", name, passed.count());
}

} // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): a benchmark whose files are not there may end in any way
int main(int argc, char** argv) {
    if (argc != 4)
        return 2;
    auto* const owned_tree = new ptree; // until it is freed, in a stage of its own
    ptree& tree = *owned_tree;
    for (const char* list : {"kernels.nodes", "boards.nodes", "memtransfers.nodes"})
        tree.put(list, "");
    tree.put("run_info.nodes", "").push_back({"", ptree()});
    auto* const owned_kernels = new std::map<std::string, TlyKernel*>;
    auto& kernels = *owned_kernels;
    std::map<std::string, std::string> original_names;
    std::unordered_map<std::string, TlyExtMem*> ext_mems;
    measure("design", [&] {
        Package package(argv[1]);
        parse_version(tree, package);
        parse_board(tree, package, ext_mems);
        parse_timing_report(tree, package);
        parse_description(kernels, tree, package, original_names);
    });
    measure("reading", [&] {
        FoldedMonitorNodes nodes;
        read_monitor_file(kernels, nodes, argv[2], original_names, ext_mems, false);
        nodes.append_to(tree);
    });
    measure("writing", [&] { write_report(argv[3], tree); });
    measure("freeing", [&] { clean_up(owned_tree, owned_kernels, ext_mems); });
    return 0;
}
