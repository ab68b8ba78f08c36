// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <memory>
#include <unordered_map>

#include "failure.h"
#include "package_arguments.h"
#include "package_commands.h"
#include "package_edit.h"
#include "replaced_file.h"

namespace zan::tool {

namespace {

namespace fs = std::filesystem;

struct CreateOptions {
    std::string package;
    std::vector<std::string> sections; // NAME=FILE
    std::string from;                  // a folder laid out as a sample is; may be empty
    bool force = false;
};

// The folder with the files of a sample: `sections` in it, or the folder itself if that is its name.
fs::path sections_folder(const fs::path& sample) {
    std::error_code ignored;
    const fs::path below = sample / "sections";
    const bool is_itself =
        !fs::exists(below, ignored) && fs::canonical(sample, ignored).filename() == "sections";
    return is_itself ? sample : below;
}

// The files of a sample's sections, by name. Hidden files are left out: editors and version
// control make them, and they are no part of the design.
std::vector<fs::path> sample_files(const fs::path& sample) {
    const fs::path folder = sections_folder(sample);
    std::error_code error;
    std::vector<fs::path> files;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        if (entry->path().filename().string().starts_with('.'))
            continue;
        if (!entry->is_regular_file())
            throw Failure(in_quotes(entry->path()) + " is no file");
        files.push_back(entry->path());
    }
    if (error)
        throw Failure("can't read the folder " + in_quotes(folder) + ": " + error.message());
    if (files.empty())
        throw Failure("there is no section in " + in_quotes(folder));
    std::ranges::sort(files); // the system lists them in any order
    return files;
}

// The file `version` holds the section ".zan.version", and so on.
std::string section_name(const fs::path& file) {
    return ".zan." + file.filename().string();
}

// The sections of the sample, each of which a section of the same name on the command line replaces, and then
// the others.
std::vector<NamedFile> planned_sections(const CreateOptions& options) {
    std::vector<NamedFile> sections;
    std::unordered_map<std::string, std::size_t> from_sample;
    if (!options.from.empty()) {
        for (const fs::path& file : sample_files(options.from)) {
            from_sample[section_name(file)] = sections.size();
            sections.push_back({section_name(file), file});
        }
    }
    for (NamedFile& named : parse_named_files(options.sections)) {
        const auto replaced = from_sample.extract(named.name); // a second one is one too many
        if (replaced.empty())
            sections.push_back(std::move(named));
        else
            sections[replaced.mapped()].file = named.file;
    }
    return sections;
}

void create_package(const CreateOptions& options) {
    const std::vector<NamedFile> sections = planned_sections(options);
    if (sections.empty())
        throw Failure("nothing to make " + in_quotes(options.package) + " of; give NAME=FILE or --from DIR");
    PackageEdit package = PackageEdit::create(options.package);
    if (!options.force)
        check_replaceable(options.package, FileKind::package);
    for (const NamedFile& section : sections)
        package.add(section.name, read_bytes(section.file, max_section_size));
    package.commit();
}

void define_create(CLI::App& app, Console&) {
    const auto options = std::make_shared<CreateOptions>();
    app.add_option("OUT", options->package, "the package to make; a package of its name is replaced")
        ->required();
    add_named_files(app, options->sections);
    app.add_option("--from", options->from,
                   "take the files in DIR/sections, or in DIR: 'version' is '.zan.version'")
        ->type_name("DIR");
    app.add_flag("-f,--force", options->force, "replace a file that is no package, too");
    app.callback([options] { create_package(*options); });
}

} // namespace

const Command create_command = {"create", "make a package of files", define_create,
                                "zanl-profile package create design.zanx .zan.version=version.txt\n"
                                "zanl-profile package create design.zanx --from samples/vector_add"};

} // namespace zan::tool
