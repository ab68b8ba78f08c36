#include <CLI/CLI.hpp>
#include <memory>

#include "listing.h"
#include "package_arguments.h"
#include "package_commands.h"
#include "package_file.h"
#include "section_kinds.h"

namespace zan::tool {

namespace {

struct ListOptions {
    std::string package;
};

constexpr SectionKind damaged_kind = {"damaged", "damaged: its bytes are not in the file"};

SectionKind kind_of(const PackageFile& package, const SectionInfo& section) {
    if (!section.in_file)
        return damaged_kind;
    const SectionKind kind = kind_of_name(section.name);
    if (!kind.meaning.empty())
        return kind;
    // Only sections that nothing else is known of are looked into, and only at their first bytes.
    const FileBytes beginning = package.first_bytes(section, stream_beginning);
    return begins_stream(beginning.data(), beginning.size()) ? stream_kind : kind;
}

void list_package(const ListOptions& options, const Console& console) {
    const PackageFile package(options.package);
    Listing listing{"zanl-profile/package-list",         1,  "package", options.package, "sections",
                    {"name", "size", "kind", "meaning"}, {}, {"kind"}};
    for (const SectionInfo& section : package.sections()) {
        const SectionKind kind = kind_of(package, section);
        listing.rows.push_back(
            {section.name, std::uint64_t{section.size}, std::string(kind.key), std::string(kind.meaning)});
    }
    print(listing, console.json);
}

void define_list(CLI::App& app, Console& console) {
    const auto options = std::make_shared<ListOptions>();
    add_package_argument(app, options->package);
    add_json_option(app, console);
    app.callback([options, &console] { list_package(*options, console); });
}

} // namespace

const Command list_command = {"list", "list the sections: their sizes, and what each is", define_list,
                              "zanl-profile package list design.zanx"};

} // namespace zan::tool
