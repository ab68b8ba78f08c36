// SPDX-License-Identifier: Apache-2.0
// Where commands read from and write to: a file, a pipe, or "-".
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "files.h"
#include "unfinished_file.h"

namespace zan::tool {

// Whether the name of a file means standard input, or standard output: it is "-". A file of that name is
// "./-".
bool is_standard_stream(const std::string& name);

// An input that is read piece by piece; read_bytes() is for those that are wanted whole.
class InputFile {
  public:
    // A file, a pipe, or standard input for "-". Throws Failure if it can't be opened.
    explicit InputFile(const std::string& name);

    // The position is at its beginning. Standard input stays open when the object goes.
    int fd() const { return m_file.get() >= 0 ? m_file.get() : m_fd; }
    // What messages call it: "standard input" for "-".
    const std::string& name() const { return m_name; }

  private:
    std::string m_name;
    Descriptor m_file; // none for standard input
    int m_fd = -1;
};

// An output: standard output for "-"; a new file, or one in place of another, which is there when it is
// whole; or a pipe or device, which is written to as it is.
class OutputFile {
  public:
    // Throws Failure if the name is a folder's, or can't be written.
    explicit OutputFile(const std::string& name);

    int fd() const;
    // What messages call it: "standard output" for "-".
    const std::string& name() const { return m_name; }
    void write(std::string_view bytes) { write_all(fd(), bytes.data(), bytes.size(), m_name); }
    // All was written. Waits for the disk, and puts a file in its place. Throws Failure.
    void commit();

  private:
    std::string m_name;
    std::optional<UnfinishedFile> m_file; // of a file
    Descriptor m_special;                 // of a pipe or a device
};

} // namespace zan::tool
