// SPDX-License-Identifier: Apache-2.0
// workloads SHAPE FOLDER [NAME=NUMBER...]: makes FOLDER/design.zanx and FOLDER/profile.mon of a shape.
// workloads pipeline|pipeline_aligned FOLDER [frames=NUMBER]: the same of a pipeline, in one of two versions.
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "pipeline.h"
#include "workload.h"

namespace {

int usage() {
    std::fprintf(stderr,
                 "usage: workloads SHAPE FOLDER [NAME=NUMBER...]\n"
                 "Makes design.zanx and profile.mon of the shape S, L, M, W, A or X in FOLDER.\n"
                 "NAME is kernels, insts_per_kernel, lines or samples. SHAPE may also be pipeline\n"
                 "or pipeline_aligned, a real pipeline in two versions, and NAME then frames.\n");
    return 2;
}

// A workload of either kind; a shape has no num_frames.
struct Workload {
    std::optional<Shape> shape;
    Pipeline pipeline;
};

bool choose(Workload& workload, std::string_view name) {
    workload.shape = shape_of(name);
    workload.pipeline.aligned = name == "pipeline_aligned";
    return workload.shape || workload.pipeline.aligned || name == "pipeline";
}

bool change(Workload& workload, std::string_view argument) {
    const std::size_t equals = argument.find('=');
    if (equals == std::string_view::npos)
        return false;
    const char* const end = argument.data() + argument.size();
    int number = 0;
    const auto [last, error] = std::from_chars(argument.data() + equals + 1, end, number);
    if (error != std::errc() || last != end || number <= 0)
        return false;
    const std::string_view name = argument.substr(0, equals);
    if (workload.shape)
        return set_number(*workload.shape, name, number);
    workload.pipeline.num_frames = number;
    return name == "frames";
}

} // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): a benchmark whose files are not there may end in any way
int main(int argc, char** argv) {
    Workload workload;
    if (argc < 3 || !choose(workload, argv[1]))
        return usage();
    for (int i = 3; i < argc; ++i) {
        if (!change(workload, argv[i]))
            return usage();
    }
    const std::filesystem::path folder = argv[2];
    std::filesystem::create_directories(folder);
    make_package(folder / "design.zanx",
                 workload.shape ? sections_of(*workload.shape) : sections_of(workload.pipeline));
    std::ofstream monitor(folder / "profile.mon", std::ios::binary);
    if (workload.shape)
        write_monitor(*workload.shape, monitor);
    else
        write_monitor(workload.pipeline, monitor);
    if (!monitor.flush()) {
        std::fprintf(stderr, "workloads: can't write '%s'\n", (folder / "profile.mon").c_str());
        return 1;
    }
    return 0;
}
