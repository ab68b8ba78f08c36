// SPDX-License-Identifier: Apache-2.0
// Any names of sections, with a NUL between them, as names of files: each must be safe in any folder, and
// unlike all others.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <unordered_set>

#include "file_names.h"

namespace {

constexpr std::size_t max_file_name = 255;
constexpr std::string_view usual = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._-";

void expect(bool holds) {
    if (!holds)
        std::abort();
}

void check(const std::string& section, const std::string& name, bool is_first) {
    expect(!name.empty() && name.size() <= max_file_name && name != "." && name != "..");
    for (const char c : name)
        expect(static_cast<unsigned char>(c) >= 0x20 && c != 0x7F && c != '/');
    const bool is_usual = section.find_first_not_of(usual) == std::string::npos && section.size() <= 200;
    if (is_usual && is_first && section != "." && section != "..")
        expect(name == section);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view rest(reinterpret_cast<const char*>(data), size);
    zan::tool::FileNames names;
    std::unordered_set<std::string> sections, made;
    while (!rest.empty()) {
        const std::string section(rest.substr(0, rest.find('\0')));
        rest.remove_prefix(std::min(section.size() + 1, rest.size()));
        if (section.empty()) // no list has one
            continue;
        const std::string name = names.next(section);
        check(section, name, sections.insert(section).second);
        expect(made.insert(name).second);
    }
    return 0;
}
