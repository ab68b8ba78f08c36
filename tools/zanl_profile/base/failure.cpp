#include "failure.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>

namespace zan::tool {

Failure system_failure(const std::string& what) {
    return Failure(what + ": " + std::strerror(errno));
}

std::string in_quotes(const std::string& text) {
    return "'" + printable(text) + "'";
}

std::string printable(const std::string& text) {
    // Bytes from 0x80 on are left alone, as names are usually UTF-8.
    constexpr unsigned char first_printable = 0x20, del = 0x7F;
    std::string shown;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < first_printable || byte == del)
            shown += fmt::format("\\x{:02X}", byte);
        else
            shown += c;
    }
    return shown;
}

} // namespace zan::tool
