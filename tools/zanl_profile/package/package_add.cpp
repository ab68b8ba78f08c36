#include <algorithm>

#include "package_arguments.h"
#include "package_commands.h"
#include "package_file.h"

namespace zan::tool {

namespace {

using Change = void (PackageEdit::*)(const std::string& name, FileBytes bytes);

void edit(const EditOptions& options, Change change) {
    std::vector<NamedFile> sections;
    std::ranges::transform(options.sections, std::back_inserter(sections), parse_named_file);
    PackageEdit package = PackageEdit::change(options.package);
    for (const NamedFile& section : sections)
        (package.*change)(section.name, read_bytes(section.file, max_section_size));
    package.commit();
}

} // namespace

void add_sections(const EditOptions& options) {
    edit(options, &PackageEdit::add);
}

void update_sections(const EditOptions& options) {
    edit(options, &PackageEdit::update);
}

void copy_sections(const CopyOptions& options) {
    const PackageFile from(options.from);
    const auto sections = from.sections_named(options.sections);
    PackageEdit to = PackageEdit::change(options.to);
    for (const SectionInfo* section : sections)
        to.put(section->name, from.bytes(*section));
    to.commit();
}

} // namespace zan::tool
