#include <algorithm>
#include <filesystem>

#include "failure.h"
#include "package_arguments.h"
#include "package_commands.h"
#include "package_file.h"

namespace zan::tool {

namespace {

namespace fs = std::filesystem;

// The files of the folder `sections` of a sample, by name. Hidden files are somebody's editor's, not the
// design's.
std::vector<fs::path> sample_files(const fs::path& sample) {
    const fs::path folder = sample / "sections";
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
    std::ranges::sort(files);
    return files;
}

// The file `version` holds the section ".zan.version", and so on.
std::string section_of(const fs::path& file) {
    return ".zan." + file.filename().string();
}

} // namespace

void create_package(const CreateOptions& options) {
    std::vector<NamedFile> sections;
    if (!options.from.empty()) {
        for (const fs::path& file : sample_files(options.from))
            sections.push_back({section_of(file), file});
    }
    std::ranges::transform(options.sections, std::back_inserter(sections), parse_named_file);
    if (sections.empty())
        throw Failure("nothing to make " + in_quotes(options.package) + " of; give NAME=FILE or --from DIR");
    PackageEdit package = PackageEdit::create(options.package);
    for (const NamedFile& section : sections)
        package.add(section.name, read_bytes(section.file, max_section_size));
    package.commit();
}

} // namespace zan::tool
