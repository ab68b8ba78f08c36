// Names of files for the sections of a package.
#pragma once

#include <string>
#include <unordered_map>

namespace zan::tool {

// Gives each section a file name of its own that is safe in any folder: without slashes and bytes that a
// terminal would take for commands, never "." or "..", and no longer than file systems allow. Usual names
// stay as they are.
class FileNames {
  public:
    // The name of the next section. What can't stand in a file name stands there as %XX, as does "%" itself.
    // A name that is too long is cut, and ends in "%~" and a number, as does one that was given already.
    std::string next(const std::string& section);

  private:
    std::unordered_map<std::string, int> m_given; // how often
};

} // namespace zan::tool
