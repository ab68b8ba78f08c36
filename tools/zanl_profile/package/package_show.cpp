// SPDX-License-Identifier: Apache-2.0
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <memory>

#include "package_arguments.h"
#include "package_commands.h"
#include "package_file.h"

namespace zan::tool {

namespace {

struct ShowOptions {
    std::string package;
    std::string section;
};

void show_section(const ShowOptions& options) {
    const PackageFile package(options.package);
    package.copy(package.section(options.section), STDOUT_FILENO, standard_output);
}

void define_show(CLI::App& app, Console&) {
    const auto options = std::make_shared<ShowOptions>();
    add_package_argument(app, options->package);
    app.add_option("SECTION", options->section, "the section")->required();
    app.callback([options] { show_section(*options); });
}

} // namespace

const Command show_command = {"show", "write a section's bytes to standard output", define_show,
                              "zanl-profile package show design.zanx .zan.board_spec.xml",
                              "the section isn't in the package"};

} // namespace zan::tool
