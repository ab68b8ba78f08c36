// Sections of a package as texts that free themselves.
#pragma once

#include <memory>

#include "tly_parse.h"

// What get_zanx_sect gave: its status, and the text, which is null unless the status is 0.
struct PackageSection {
    int status;
    std::unique_ptr<const char[]> text;
};

inline PackageSection readSection(const char* section, const char* packagePath) {
    char* buffer = nullptr;
    const int status = get_zanx_sect(section, packagePath, &buffer);
    return {status, std::unique_ptr<const char[]>(buffer)};
}
