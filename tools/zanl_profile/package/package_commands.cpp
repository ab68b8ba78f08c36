// The command line of `zanl-profile package`.
#include "package_commands.h"

#include <CLI/CLI.hpp>
#include <memory>

#include "command_line.h"

namespace zan::tool {

namespace {

constexpr const char* named_file = "NAME=FILE";
constexpr const char* named_file_help = "a section's name and the file with its bytes; '-' is standard input";

CLI::Option* add_package(CLI::App& app, std::string& package) {
    return app.add_option("FILE", package, "the package")->required();
}

void define_create(CLI::App& app) {
    const auto options = std::make_shared<CreateOptions>();
    app.add_option("OUT", options->package, "the package to make; a file of its name is replaced")
        ->required();
    app.add_option(named_file, options->sections, named_file_help);
    app.add_option("--from", options->from,
                   "take the files in DIR/sections: 'version' becomes '.zan.version'")
        ->type_name("DIR");
    app.callback([options] { create_package(*options); });
}

void define_list(CLI::App& app) {
    const auto options = std::make_shared<ListOptions>();
    add_package(app, options->package);
    app.add_flag("--json", options->json, "print JSON");
    app.callback([options] { list_package(*options); });
}

void define_show(CLI::App& app) {
    const auto options = std::make_shared<ShowOptions>();
    add_package(app, options->package);
    app.add_option("SECTION", options->section, "the section")->required();
    app.callback([options] { show_section(*options); });
}

void define_extract(CLI::App& app) {
    const auto options = std::make_shared<ExtractOptions>();
    add_package(app, options->package);
    app.add_option("SECTION", options->sections, "the sections; all if none is named");
    app.add_option("-o,--output", options->folder, "the folder for the files; made if it isn't there")
        ->type_name("DIR")
        ->required();
    app.callback([options] { extract_sections(*options); });
}

template <void edit(const EditOptions&)>
void define_edit(CLI::App& app) {
    const auto options = std::make_shared<EditOptions>();
    add_package(app, options->package);
    app.add_option(named_file, options->sections, named_file_help)->required();
    app.callback([options] { edit(*options); });
}

void define_copy(CLI::App& app) {
    const auto options = std::make_shared<CopyOptions>();
    app.add_option("A", options->from, "the package to copy from")->required();
    app.add_option("B", options->to, "the package to copy to")->required();
    app.add_option("SECTION", options->sections, "the sections; those that B has already are replaced")
        ->required();
    app.callback([options] { copy_sections(*options); });
}

void define_pack(CLI::App& app) {
    const auto options = std::make_shared<PackOptions>();
    app.add_option("OUT", options->output,
                   "the stream to make: a file, PACKAGE:SECTION, or '-' for standard output")
        ->required();
    app.add_option("DIR", options->paths, "the folders, or files, to pack")->required();
    app.add_option("-C,--directory", options->directory, "take DIR from this folder")->type_name("DIR");
    app.callback([options] { pack_stream(*options); });
}

void define_unpack(CLI::App& app) {
    const auto options = std::make_shared<UnpackOptions>();
    app.add_option("STREAM", options->stream, "a file, PACKAGE:SECTION, or '-' for standard input")
        ->required();
    app.add_option("-o,--output", options->folder, "the folder to unpack into; made if it isn't there")
        ->type_name("DIR")
        ->required();
    app.add_flag("--trust-names", options->trust_names,
                 "also write where absolute names, '..' and symbolic links lead");
    CLI::Option* const dry_run =
        app.add_flag("--dry-run", options->dry_run, "list what would be written, and write nothing");
    app.add_flag("--json", options->json, "print the list as JSON")->needs(dry_run);
    app.callback([options] { unpack_stream(*options); });
}

constexpr Command commands[] = {
    {"create", "make a package of files", define_create},
    {"list", "list the sections: their sizes, and what each is", define_list},
    {"show", "write a section's bytes to standard output", define_show},
    {"extract", "write sections into files", define_extract},
    {"add", "add sections", define_edit<add_sections>},
    {"update", "replace the contents of sections", define_edit<update_sections>},
    {"copy", "copy sections from package A to package B", define_copy},
    {"pack", "pack folders into a directory stream", define_pack},
    {"unpack", "unpack a directory stream", define_unpack},
};

} // namespace

void define_package_commands(CLI::App& app) {
    add_commands(app, commands);
}

} // namespace zan::tool
