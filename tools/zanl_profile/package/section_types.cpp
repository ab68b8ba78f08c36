// SPDX-License-Identifier: Apache-2.0
#include "section_types.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace zan::tool {

namespace {

constexpr std::pair<std::uint32_t, const char*> type_names[] = {
    {0, "NULL"},   {1, "PROGBITS"},      {2, "SYMTAB"},      {3, "STRTAB"},      {4, "RELA"},
    {5, "HASH"},   {6, "DYNAMIC"},       {7, "NOTE"},        {8, "NOBITS"},      {9, "REL"},
    {10, "SHLIB"}, {11, "DYNSYM"},       {14, "INIT_ARRAY"}, {15, "FINI_ARRAY"}, {16, "PREINIT_ARRAY"},
    {17, "GROUP"}, {18, "SYMTAB_SHNDX"},
};

} // namespace

std::string section_type_name(std::uint32_t type) {
    const auto* const found =
        std::ranges::find(type_names, type, &std::pair<std::uint32_t, const char*>::first);
    return found == std::end(type_names) ? fmt::format("0x{:08X}", type) : found->second;
}

} // namespace zan::tool
