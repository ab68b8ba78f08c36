// SPDX-License-Identifier: Apache-2.0
#include "expected_stop.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <iterator>
#include <string_view>

namespace {

// A compile configuration has to have each of its three parts once; a description where that isn't so stops
// the process.
constexpr std::string_view breakable_contracts[] = {
    "m_config->has_automigrate()", "!m_config->has_automigrate()", "m_config->has_generate()",
    "!m_config->has_generate()",   "m_config->has_synthesis()",    "!m_config->has_synthesis()",
};

// Says whether a message is that of such a contract: file, line, function, text.
bool is_breakable(const char* format, std::va_list arguments) {
    if (!std::string_view(format).ends_with("Assertion `%s' failed.\n"))
        return false;
    va_arg(arguments, const char*);
    va_arg(arguments, int);
    va_arg(arguments, const char*);
    const std::string_view text = va_arg(arguments, const char*);
    return std::ranges::find(breakable_contracts, text) != std::end(breakable_contracts);
}

} // namespace

extern "C" {

// The linker puts this in place of the function that it is named after.
int __wrap_fprintf(std::FILE* file, const char* format, ...) {
    std::va_list arguments, copy;
    va_start(arguments, format);
    va_copy(copy, arguments);
    const bool stops = is_breakable(format, copy);
    va_end(copy);
    const int count = stops ? 0 : std::vfprintf(file, format, arguments);
    va_end(arguments);
    if (stops)
        throw ExpectedStop();
    return count;
}

} // extern "C"
