// make_package FOLDER PACKAGE: makes a design package of the readable files of a sample.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "pkg_editor.h"

namespace {

namespace fs = std::filesystem;

constexpr int status_failure = 1;
constexpr int status_usage = 2;

// The files of the folder `sections`, by name. Hidden files are somebody's editor's, not the design's.
std::vector<fs::path> section_files(const fs::path& sample) {
    const fs::path folder = sample / "sections";
    if (!fs::is_directory(folder))
        throw std::runtime_error("there is no folder '" + folder.string() + "'");
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (entry.path().filename().string().starts_with('.'))
            continue;
        if (!entry.is_regular_file())
            throw std::runtime_error("'" + entry.path().string() + "' is no file");
        files.push_back(entry.path());
    }
    if (files.empty())
        throw std::runtime_error("there is no section in '" + folder.string() + "'");
    std::sort(files.begin(), files.end());
    return files;
}

// The file `version` holds the section ".zan.version", and so on.
std::string section_name(const fs::path& file) {
    return ".zan." + file.filename().string();
}

void write_package(const fs::path& path, const std::vector<fs::path>& files) {
    zan_pkg_file* const package =
        zan_pkg_open_file(path.c_str(), ZAN_PKG_READ_WRITE | ZAN_PKG_CREATE | ZAN_PKG_SHOW_ERROR);
    if (!package)
        throw std::runtime_error("can't make '" + path.string() + "'");
    std::string failed;
    for (const fs::path& file : files) {
        if (zan_pkg_add_data_section_from_file(package, section_name(file).c_str(), file.c_str()) != 1)
            failed = file.string();
    }
    zan_pkg_close_file(package);
    if (!failed.empty())
        throw std::runtime_error("can't add '" + failed + "'");
}

// Closing a package doesn't tell whether its bytes have reached the file, so look.
void check_package(const fs::path& path, const std::vector<fs::path>& files) {
    zan_pkg_file* const package = zan_pkg_open_file(path.c_str(), ZAN_PKG_READ);
    const bool good = std::all_of(files.begin(), files.end(), [&](const fs::path& file) {
        std::size_t size = 0;
        return zan_pkg_section_exists(package, section_name(file).c_str(), &size) == 1 &&
               size == fs::file_size(file);
    });
    zan_pkg_close_file(package);
    if (!good)
        throw std::runtime_error("can't write '" + path.string() + "'");
}

// A package appears under its name only when it is whole.
void make_package(const fs::path& sample, const fs::path& path) {
    const std::vector<fs::path> files = section_files(sample);
    fs::path unfinished = path;
    unfinished += ".unfinished";
    try {
        write_package(unfinished, files);
        check_package(unfinished, files);
        fs::rename(unfinished, path);
    } catch (...) {
        std::error_code ignored;
        fs::remove(unfinished, ignored);
        throw;
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr,
                     "usage: make_package FOLDER PACKAGE\n"
                     "Makes PACKAGE of the files in FOLDER/sections: the file `version` becomes the\n"
                     "section .zan.version, and so on.\n");
        return status_usage;
    }
    try {
        make_package(argv[1], argv[2]);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "make_package: %s\n", error.what());
        return status_failure;
    }
}
