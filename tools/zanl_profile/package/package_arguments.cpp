// SPDX-License-Identifier: Apache-2.0
#include "package_arguments.h"

#include <CLI/CLI.hpp>
#include <filesystem>

#include "failure.h"

namespace zan::tool {

namespace {

NamedFile parse_named_file(const std::string& argument) {
    const std::size_t equals = argument.find('=');
    if (equals == std::string::npos || equals == 0 || equals + 1 == argument.size())
        throw Failure("a section is given as NAME=FILE, not as " + in_quotes(argument));
    return {argument.substr(0, equals), argument.substr(equals + 1)};
}

} // namespace

void add_package_argument(CLI::App& app, std::string& package) {
    app.add_option("FILE", package, "the package")->required();
}

CLI::Option* add_named_files(CLI::App& app, std::vector<std::string>& arguments) {
    return app.add_option("NAME=FILE", arguments,
                          "a section's name and the file with its bytes; '-' is standard input");
}

std::vector<NamedFile> parse_named_files(const std::vector<std::string>& arguments) {
    std::vector<NamedFile> files;
    files.reserve(arguments.size());
    for (const std::string& argument : arguments)
        files.push_back(parse_named_file(argument));
    return files;
}

// Names of packages may hold a ":" themselves, as may names of sections, so not any ":" will do.
std::optional<SectionPlace> parse_section_place(const std::string& argument) {
    std::error_code ignored;
    if (std::filesystem::exists(argument, ignored))
        return std::nullopt;
    for (std::size_t colon = argument.find(':'); colon != std::string::npos;
         colon = argument.find(':', colon + 1)) {
        const std::string package = argument.substr(0, colon);
        if (package.ends_with("zanx") || std::filesystem::is_regular_file(package, ignored))
            return SectionPlace{package, argument.substr(colon + 1)};
    }
    return std::nullopt;
}

} // namespace zan::tool
