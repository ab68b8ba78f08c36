// SPDX-License-Identifier: Apache-2.0
// The system calls that a traced process makes on its files.
#pragma once

#include <sys/types.h>

#include <array>
#include <cstdint>
#include <span>
#include <string>

// System calls by what they do. What removes a file isn't among them: without it nothing can be cleaned up.
enum class Calls { reads, folder_reads, writes, opens, closes, others };

// How a call names its file, and where its size stands among its arguments.
struct KnownCall {
    static constexpr int none = -1;

    std::uint64_t number;
    const char* name;
    Calls calls;
    int descriptor; // the argument's index; or
    int path;       // that of a path
    int size;
};

std::span<const KnownCall> all_calls();
// Null for a call that touches no file, or only removes one.
const KnownCall* find_call(std::uint64_t number);

// One call as a process is about to make it.
class CurrentCall {
  public:
    CurrentCall(pid_t process, const KnownCall& known, const std::array<std::uint64_t, 6>& arguments)
        : m_process(process), m_known(known), m_arguments(arguments) {}

    // The file as tests name it: relative to `folder`, "standard output", "(temporary)", "(unfinished)" for
    // one in the folder without a name; empty for files that are not the process's own.
    std::string file(const std::string& folder, const std::string& output) const;

  private:
    std::string descriptor_path(std::uint64_t argument) const;
    std::string path_argument() const;
    std::string text_at(std::uint64_t address) const;

    pid_t m_process;
    const KnownCall& m_known;
    const std::array<std::uint64_t, 6>& m_arguments;
};
