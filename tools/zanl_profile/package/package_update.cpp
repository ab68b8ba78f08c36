// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <memory>

#include "package_arguments.h"
#include "package_commands.h"
#include "package_edit.h"

namespace zan::tool {

namespace {

struct UpdateOptions {
    std::string package;
    std::vector<std::string> sections; // NAME=FILE
};

void update_sections(const UpdateOptions& options) {
    const std::vector<NamedFile> sections = parse_named_files(options.sections);
    PackageEdit package = PackageEdit::change(options.package);
    for (const NamedFile& section : sections)
        package.update(section.name, read_bytes(section.file, max_section_size));
    package.commit();
}

void define_update(CLI::App& app, Console&) {
    const auto options = std::make_shared<UpdateOptions>();
    add_package_argument(app, options->package);
    add_named_files(app, options->sections)->required();
    app.callback([options] { update_sections(*options); });
}

} // namespace

const Command update_command = {"update", "replace the contents of sections", define_update,
                                "zanl-profile package update design.zanx .zan.version=version.txt",
                                "a section isn't in the package"};

} // namespace zan::tool
