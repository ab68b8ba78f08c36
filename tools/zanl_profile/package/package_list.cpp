// SPDX-License-Identifier: Apache-2.0
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <memory>

#include "files.h"
#include "listing.h"
#include "package_arguments.h"
#include "package_commands.h"
#include "package_file.h"
#include "printable.h"
#include "section_kinds.h"
#include "section_types.h"

namespace zan::tool {

namespace {

struct ListOptions {
    std::string package;
    bool is_long = false;
    bool only_names = false;
};

constexpr SectionKind damaged_kind = {"damaged", "damaged: its bytes are not in the file"};
constexpr SectionKind nobits_kind = {"nobits", "no contents"};

SectionKind kind_of(const PackageFile& package, const SectionInfo& section) {
    if (section.contents != Contents::in_file)
        return section.contents == Contents::none ? nobits_kind : damaged_kind;
    const SectionKind kind = kind_of_name(section.name);
    if (!kind.meaning.empty())
        return kind;
    // Only sections that nothing else is known of are looked into, and only at their first bytes.
    const FileBytes beginning = package.first_bytes(section, stream_beginning);
    return begins_stream(beginning.data(), beginning.size()) ? stream_kind : kind;
}

// In the order of the table.
struct SectionColumn {
    const char* key;
    bool is_long; // only of the long list
    Cell (*cell)(const SectionInfo& section, const SectionKind& kind);
};

constexpr SectionColumn columns[] = {
    {"index", true, [](const SectionInfo& s, const SectionKind&) -> Cell { return std::uint64_t{s.index}; }},
    {"name", false, [](const SectionInfo& s, const SectionKind&) -> Cell { return s.name; }},
    {"type", true,
     [](const SectionInfo& s, const SectionKind&) -> Cell { return section_type_name(s.type); }},
    {"offset", true, [](const SectionInfo& s, const SectionKind&) -> Cell { return s.offset; }},
    {"size", false, [](const SectionInfo& s, const SectionKind&) -> Cell { return std::uint64_t{s.size}; }},
    {"kind", false,
     [](const SectionInfo&, const SectionKind& kind) -> Cell { return std::string(kind.key); }},
    {"meaning", false,
     [](const SectionInfo&, const SectionKind& kind) -> Cell { return std::string(kind.meaning); }},
};

void print_names(const PackageFile& package) {
    std::string names;
    for (const SectionInfo& section : package.sections())
        names += printable(section.name) + "\n";
    write_all(STDOUT_FILENO, names.data(), names.size(), standard_output);
}

void list_package(const ListOptions& options, const Console& console) {
    const PackageFile package(options.package);
    if (options.only_names) {
        print_names(package);
        return;
    }
    Listing listing{"zanl-profile/package-list", 1, "package", options.package, "sections", {}, {}, {"kind"}};
    std::vector<const SectionColumn*> shown;
    for (const SectionColumn& column : columns) {
        if (options.is_long || !column.is_long) {
            shown.push_back(&column);
            listing.columns.emplace_back(column.key);
        }
    }
    for (const SectionInfo& section : package.sections()) {
        const SectionKind kind = kind_of(package, section);
        auto& row = listing.rows.emplace_back();
        for (const SectionColumn* column : shown)
            row.push_back(column->cell(section, kind));
    }
    print(listing, console.json);
}

void define_list(CLI::App& app, Console& console) {
    const auto options = std::make_shared<ListOptions>();
    add_package_argument(app, options->package);
    CLI::Option* const json = add_json_option(app, console);
    app.add_flag("-l,--long", options->is_long, "also list index, type and offset, as ELF tools do");
    app.add_flag("--names", options->only_names, "print the names alone, one on a line")->excludes(json);
    app.callback([options, &console] { list_package(*options, console); });
}

} // namespace

const Command list_command = {"list", "list the sections: their sizes, and what each is", define_list,
                              "zanl-profile package list design.zanx"};

} // namespace zan::tool
