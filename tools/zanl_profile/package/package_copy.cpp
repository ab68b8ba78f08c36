// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <memory>

#include "package_commands.h"
#include "package_edit.h"

namespace zan::tool {

namespace {

struct CopyOptions {
    std::string from;
    std::string to;
    std::vector<std::string> sections;
};

void copy_sections(const CopyOptions& options) {
    const PackageFile from(options.from);
    const auto sections = from.sections_named(options.sections);
    PackageEdit to = PackageEdit::change(options.to);
    for (const SectionInfo* section : sections)
        to.put(section->name, from.bytes(*section));
    to.commit();
}

void define_copy(CLI::App& app, Console&) {
    const auto options = std::make_shared<CopyOptions>();
    app.add_option("A", options->from, "the package to copy from")->required();
    app.add_option("B", options->to, "the package to copy to")->required();
    app.add_option("SECTION", options->sections, "the sections; those that B has already are replaced")
        ->required();
    app.callback([options] { copy_sections(*options); });
}

} // namespace

const Command copy_command = {"copy", "copy sections from package A to package B", define_copy,
                              "zanl-profile package copy base.zanx new.zanx .zan.board_spec.xml",
                              "a section isn't in package A"};

} // namespace zan::tool
