// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <memory>

#include "package_arguments.h"
#include "package_commands.h"
#include "package_edit.h"

namespace zan::tool {

namespace {

struct AddOptions {
    std::string package;
    std::vector<std::string> sections; // NAME=FILE
};

void add_sections(const AddOptions& options) {
    const std::vector<NamedFile> sections = parse_named_files(options.sections);
    PackageEdit package = PackageEdit::change(options.package);
    for (const NamedFile& section : sections)
        package.add(section.name, read_bytes(section.file, max_section_size));
    package.commit();
}

void define_add(CLI::App& app, Console&) {
    const auto options = std::make_shared<AddOptions>();
    add_package_argument(app, options->package);
    add_named_files(app, options->sections)->required();
    app.callback([options] { add_sections(*options); });
}

} // namespace

const Command add_command = {"add", "add sections", define_add,
                             "zanl-profile package add design.zanx .zan.notes=notes.txt"};

} // namespace zan::tool
