#include "diagnostics.h"

#include <fmt/format.h>

#include <iterator>

void write_formatted(std::FILE* stream, fmt::string_view format, fmt::format_args args) {
    fmt::memory_buffer text;
    fmt::vformat_to(std::back_inserter(text), format, args);
    std::fwrite(text.data(), 1, text.size(), stream);
    std::fflush(stream);
}
