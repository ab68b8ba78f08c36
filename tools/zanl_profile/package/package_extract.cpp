// SPDX-License-Identifier: Apache-2.0
#include <sys/stat.h>

#include <CLI/CLI.hpp>
#include <memory>

#include "file_names.h"
#include "package_arguments.h"
#include "package_commands.h"
#include "package_file.h"
#include "staged_folder.h"
#include "target_folder.h"
#include "unfinished_file.h"

namespace zan::tool {

namespace {

struct ExtractOptions {
    std::string package;
    std::string folder;
    std::vector<std::string> sections; // all of them if it is empty
};

// The permissions of the file that is to be replaced, so that a private one stays private.
void keep_permissions(const std::string& path, int file) {
    struct stat status;
    if (::lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode))
        ::fchmod(file, status.st_mode & all_permissions);
}

void extract_sections(const ExtractOptions& options) {
    const PackageFile package(options.package);
    const auto sections = package.sections_named(options.sections);
    // Nothing is written through a link in the folder: it may be another's who expects that.
    TargetFolder target(options.folder);
    StagedFolder staged(options.folder);
    FileNames names;
    for (const SectionInfo* section : sections) {
        const std::string name = names.next(section->name);
        const std::string path = options.folder + "/" + name;
        target.check(name, false);
        Descriptor file = staged.add_file(name, 0);
        keep_permissions(path, file.get());
        package.copy(*section, file.get(), path);
        staged.end_file(std::move(file), name);
    }
    staged.commit();
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
