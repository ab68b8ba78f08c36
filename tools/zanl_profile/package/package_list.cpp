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
    bool json = false;
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

void list_package(const ListOptions& options) {
    const PackageFile package(options.package);
    Listing listing{"package", options.package, "sections", {"name", "size", "kind", "meaning"},
                    {},        {"kind"}};
    for (const SectionInfo& section : package.sections()) {
        const SectionKind kind = kind_of(package, section);
        listing.rows.push_back(
            {section.name, std::uint64_t{section.size}, std::string(kind.key), std::string(kind.meaning)});
    }
    print(listing, options.json);
}

void define_list(CLI::App& app) {
    const auto options = std::make_shared<ListOptions>();
    add_package_argument(app, options->package);
    app.add_flag("--json", options->json, "print JSON");
    app.callback([options] { list_package(*options); });
}

} // namespace

const Command list_command = {"list", "list the sections: their sizes, and what each is", define_list};

} // namespace zan::tool
