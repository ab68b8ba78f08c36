// SPDX-License-Identifier: Apache-2.0
// Room on the disk for what needn't be held in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace zan::profile {

// A file without a name, which is gone with the object, and with the process.
class ScratchFile {
  public:
    // In that folder. Throws std::system_error, as all calls do when the system fails.
    explicit ScratchFile(const std::string& folder);
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;
    ~ScratchFile();

    // Adds bytes at the end, and returns where they are.
    std::uint64_t append(const void* data, std::size_t size);
    void read(std::uint64_t offset, void* data, std::size_t size) const;

  private:
    int m_fd = -1;
    std::uint64_t m_size = 0;
};

} // namespace zan::profile
