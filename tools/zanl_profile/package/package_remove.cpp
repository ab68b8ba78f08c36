// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <memory>
#include <unordered_set>

#include "failure.h"
#include "package_arguments.h"
#include "package_commands.h"
#include "package_file.h"
#include "pkg_names.h"
#include "unfinished_file.h"

namespace zan::tool {

namespace {

struct RemoveOptions {
    std::string package;
    std::vector<std::string> sections;
};

void check_removed(const PackageFile& package, const std::vector<std::string>& names) {
    package.check_editable();
    for (const std::string& name : names) {
        if (name == zan::pkg::name_table_section)
            throw Failure("section " + in_quotes(name) +
                          " holds the names of all sections; it can't be removed");
        package.section(name);
    }
}

// The last look before the old package is gone: the others are there, with their sizes.
bool has_others(const PackageFile& before, const PackageFile& after,
                const std::unordered_set<std::string_view>& removed) {
    auto found = after.sections().begin();
    for (const SectionInfo& section : before.sections()) {
        if (removed.contains(section.name))
            continue;
        if (found == after.sections().end() || found->name != section.name || found->size != section.size ||
            found->contents != section.contents)
            return false;
        ++found;
    }
    return found == after.sections().end();
}

void remove_sections(const RemoveOptions& options) {
    const PackageFile package(options.package);
    check_removed(package, options.sections);
    const std::unordered_set<std::string_view> names(options.sections.begin(), options.sections.end());
    UnfinishedFile file(options.package);
    const std::string failure = package.write_without(names, file.fd());
    if (!failure.empty())
        throw Failure("can't write " + in_quotes(options.package) + ": " + failure);
    if (!has_others(package, PackageFile(file.path(), options.package), names))
        throw Failure("can't write " + in_quotes(options.package) + ": a section did not reach the file");
    file.commit();
}

void define_remove(CLI::App& app, Console&) {
    const auto options = std::make_shared<RemoveOptions>();
    add_package_argument(app, options->package);
    app.add_option("SECTION", options->sections, "the sections; of a name that occurs twice, both")
        ->required();
    app.callback([options] { remove_sections(*options); });
}

} // namespace

const Command remove_command = {"remove", "remove sections", define_remove,
                                "zanl-profile package remove design.zanx .zan.notes",
                                "a section isn't there"};

} // namespace zan::tool
