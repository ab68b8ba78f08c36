// SPDX-License-Identifier: Apache-2.0
// Names of files for the sections of a package.
#pragma once

#include <string>
#include <unordered_map>

namespace zan::tool {

// Makes a file name for each section, which no other section has and which is safe in any folder: without
// slashes and bytes that terminals take for commands, never "." or "..", and no longer than file systems
// allow. Usual names stay as they are.
class FileNames {
  public:
    // The name of the next section. Bytes that aren't safe become %XX, as does "%" itself. A name that is too
    // long is cut; it ends in "%~" and a number, as does a name that was used before.
    std::string next(const std::string& section);

  private:
    std::unordered_map<std::string, int> m_uses; // how often each name was made
};

} // namespace zan::tool
