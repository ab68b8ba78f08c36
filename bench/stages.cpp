// SPDX-License-Identifier: Apache-2.0
// stages PACKAGE MONITOR REPORT: does what a run does, and prints how many milliseconds each stage took.
#include <chrono>
#include <cstdio>
#include <memory>

#include "board_import.h"
#include "document.h"
#include "monitor_reader.h"
#include "package_sections.h"
#include "profiler_import.h"

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
    ptree tree = empty_document();
    auto model = std::make_unique<ProfileModel>();
    measure("design", [&] {
        Package package(argv[1]);
        parse_version(tree, package);
        import_board(*model, tree, package);
        parse_timing_report(tree, package);
        import_profiler(*model, tree, package);
    });
    measure("reading", [&] {
        FoldedMonitorNodes nodes;
        read_monitor_file(*model, nodes, argv[2], LineDecoding::in_blocks, AfterInvocation::release);
        nodes.append_to(tree);
    });
    measure("writing", [&] { write_report(argv[3], tree); });
    measure("freeing", [&] {
        dismantle(tree);
        model.reset();
    });
    return 0;
}
