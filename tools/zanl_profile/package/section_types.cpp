#include "section_types.h"

#include <elf.h>
#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace zan::tool {

namespace {

constexpr std::pair<std::uint32_t, const char*> type_names[] = {
    {SHT_NULL, "NULL"},
    {SHT_PROGBITS, "PROGBITS"},
    {SHT_SYMTAB, "SYMTAB"},
    {SHT_STRTAB, "STRTAB"},
    {SHT_RELA, "RELA"},
    {SHT_HASH, "HASH"},
    {SHT_DYNAMIC, "DYNAMIC"},
    {SHT_NOTE, "NOTE"},
    {SHT_NOBITS, "NOBITS"},
    {SHT_REL, "REL"},
    {SHT_SHLIB, "SHLIB"},
    {SHT_DYNSYM, "DYNSYM"},
    {SHT_INIT_ARRAY, "INIT_ARRAY"},
    {SHT_FINI_ARRAY, "FINI_ARRAY"},
    {SHT_PREINIT_ARRAY, "PREINIT_ARRAY"},
    {SHT_GROUP, "GROUP"},
    {SHT_SYMTAB_SHNDX, "SYMTAB_SHNDX"},
};

} // namespace

std::string section_type_name(std::uint32_t type) {
    const auto* const found =
        std::ranges::find(type_names, type, &std::pair<std::uint32_t, const char*>::first);
    return found == std::end(type_names) ? fmt::format("0x{:08X}", type) : found->second;
}

} // namespace zan::tool
