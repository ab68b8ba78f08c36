// SPDX-License-Identifier: Apache-2.0
// Names that packages have for themselves.
#pragma once

namespace zan::pkg {

// The section that holds the names of all sections. Lists leave it out, and it isn't for users to change.
constexpr char name_table_section[] = ".shstrtab";

} // namespace zan::pkg
