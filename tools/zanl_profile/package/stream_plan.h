// SPDX-License-Identifier: Apache-2.0
// Plans: which entries a new directory stream will have.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zan::tool {

struct PlannedEntry {
    std::string path; // where the entry is
    std::string name; // its name in the stream: relative, without "." and ".."
    bool is_folder;
    std::uint32_t mode; // of a file; 0 for a folder
    std::uint32_t size; // of a file, in bytes
};

// The entries for these paths, each relative to the folder `directory` if that isn't empty: the folders that
// lead to it, then the path itself, then for a folder everything below it, in the order of names. A name is
// the path without a leading "/" or "./". Symbolic links count as what they point to. `output` is the file
// that the stream is written to; empty for none.
//
// Throws Failure for what a stream can't hold, before anything is written: files of 4 GiB and more, paths
// with "..", long names, sockets and the like, links that lead nowhere or back to a folder that they are in,
// and the folder that the output is in.
std::vector<PlannedEntry> plan_stream(const std::vector<std::string>& paths, const std::string& directory,
                                      const std::string& output);

} // namespace zan::tool
