#include <unistd.h>

#include "package_commands.h"
#include "package_file.h"

namespace zan::tool {

void show_section(const ShowOptions& options) {
    const PackageFile package(options.package);
    package.copy(package.section(options.section), STDOUT_FILENO, "standard output");
}

} // namespace zan::tool
