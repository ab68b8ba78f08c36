// SPDX-License-Identifier: Apache-2.0
// Input as a file that is in no folder.
#pragma once

#include <string>
#include <string_view>

// A file in memory; `path` opens it for as long as the object lives.
class MemoryFile {
  public:
    explicit MemoryFile(std::string_view bytes);
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile();
    std::string path() const;

  private:
    int m_fd;
};
