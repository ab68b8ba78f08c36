// SPDX-License-Identifier: Apache-2.0
#include "console.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "progress_line.h"

namespace zan::tool {

bool Console::has_colors(int stream) const {
    if (color != ColorChoice::automatic)
        return color == ColorChoice::always;
    const char* const no_color = std::getenv("NO_COLOR");
    return (!no_color || *no_color == '\0') && ::isatty(stream) == 1;
}

std::size_t line_columns(int stream) {
    winsize size = {};
    const bool known = ::ioctl(stream, TIOCGWINSZ, &size) == 0 && size.ws_col != 0;
    return known ? size.ws_col : default_columns;
}

bool has_utf8() {
    for (const char* const name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const char* const value = std::getenv(name);
        if (!value || *value == '\0')
            continue;
        std::string locale;
        for (const char* c = value; *c != '\0'; ++c) {
            if (*c != '-')
                locale += *c >= 'A' && *c <= 'Z' ? static_cast<char>(*c - 'A' + 'a') : *c;
        }
        return locale.find("utf8") != std::string::npos;
    }
    return false;
}

void print_note(const Console& console, const std::string& text) {
    if (console.quiet)
        return;
    remove_progress_line();
    std::fprintf(stderr, "%s\n", text.c_str());
}

} // namespace zan::tool
