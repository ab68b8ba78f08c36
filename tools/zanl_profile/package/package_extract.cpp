#include <filesystem>

#include "failure.h"
#include "file_names.h"
#include "package_commands.h"
#include "package_file.h"

namespace zan::tool {

void extract_sections(const ExtractOptions& options) {
    const PackageFile package(options.package);
    const auto sections = package.sections_named(options.sections);
    std::error_code error;
    std::filesystem::create_directories(options.folder, error);
    if (error)
        throw Failure("can't make the folder " + in_quotes(options.folder) + ": " + error.message());
    FileNames names;
    for (const SectionInfo* section : sections) {
        const std::string path = options.folder + "/" + names.next(section->name);
        UnfinishedFile file(path);
        package.copy(*section, file.fd(), path);
        file.commit();
    }
}

} // namespace zan::tool
