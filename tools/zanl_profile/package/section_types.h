// SPDX-License-Identifier: Apache-2.0
// The types of ELF sections, as ELF tools call them.
#pragma once

#include <cstdint>
#include <string>

namespace zan::tool {

// "PROGBITS" for 1; a number like "0x6FFF4700" for a type that ELF doesn't define.
std::string section_type_name(std::uint32_t type);

} // namespace zan::tool
