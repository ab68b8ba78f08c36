// workloads SHAPE FOLDER [NAME=NUMBER...]: makes FOLDER/design.zanx and FOLDER/profile.mon of a shape.
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "workload.h"

namespace {

int usage() {
    std::fprintf(stderr,
                 "usage: workloads SHAPE FOLDER [NAME=NUMBER...]\n"
                 "Makes design.zanx and profile.mon of the shape S, L, M, W, A or X in FOLDER.\n"
                 "NAME is kernels, insts_per_kernel, lines or samples.\n");
    return 2;
}

bool change(Shape& shape, std::string_view argument) {
    const std::size_t equals = argument.find('=');
    if (equals == std::string_view::npos)
        return false;
    const char* const end = argument.data() + argument.size();
    int number = 0;
    const auto [last, error] = std::from_chars(argument.data() + equals + 1, end, number);
    return error == std::errc() && last == end && number > 0 &&
           set_number(shape, argument.substr(0, equals), number);
}

} // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): a benchmark whose files are not there may end in any way
int main(int argc, char** argv) {
    std::optional<Shape> shape;
    if (argc < 3 || !(shape = shape_of(argv[1])))
        return usage();
    for (int i = 3; i < argc; ++i) {
        if (!change(*shape, argv[i]))
            return usage();
    }
    const std::filesystem::path folder = argv[2];
    std::filesystem::create_directories(folder);
    make_package(folder / "design.zanx", sections_of(*shape));
    std::ofstream monitor(folder / "profile.mon", std::ios::binary);
    write_monitor(*shape, monitor);
    if (!monitor.flush()) {
        std::fprintf(stderr, "workloads: can't write '%s'\n", (folder / "profile.mon").c_str());
        return 1;
    }
    return 0;
}
