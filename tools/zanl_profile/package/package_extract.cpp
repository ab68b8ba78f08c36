#include <CLI/CLI.hpp>
#include <filesystem>
#include <memory>

#include "failure.h"
#include "file_names.h"
#include "package_arguments.h"
#include "package_commands.h"
#include "package_file.h"
#include "unfinished_file.h"

namespace zan::tool {

namespace {

struct ExtractOptions {
    std::string package;
    std::string folder;
    std::vector<std::string> sections; // all of them if it is empty
};

void extract_sections(const ExtractOptions& options) {
    const PackageFile package(options.package);
    const auto sections = package.sections_named(options.sections);
    std::error_code error;
    std::filesystem::create_directories(options.folder, error);
    if (error)
        throw Failure("can't make the folder " + in_quotes(options.folder) + ": " + error.message());
    // Each file is whole or not there; a failure leaves those that came before it.
    FileNames names;
    for (const SectionInfo* section : sections) {
        const std::string path = options.folder + "/" + names.next(section->name);
        UnfinishedFile file(path);
        package.copy(*section, file.fd(), path);
        file.commit();
    }
}

void define_extract(CLI::App& app, Console&) {
    const auto options = std::make_shared<ExtractOptions>();
    add_package_argument(app, options->package);
    app.add_option("SECTION", options->sections, "the sections; all if none is named");
    app.add_option("-o,--output", options->folder, "the folder for the files; made if it isn't there")
        ->type_name("DIR")
        ->required();
    app.callback([options] { extract_sections(*options); });
}

} // namespace

const Command extract_command = {"extract", "write sections into files", define_extract,
                                 "zanl-profile package extract design.zanx -o sections",
                                 "a section isn't in the package"};

} // namespace zan::tool
