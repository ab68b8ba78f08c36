// SPDX-License-Identifier: Apache-2.0
// The files of a run: what is wrong with a file as such, and standard input in place of one.
#pragma once

#include <string>

namespace zan::profile {

// The reason for an error number, as the system has it.
std::string reason_of(int error_number);

// A new file without a name, for reading and writing, in the folder that TMPDIR names, or else in /tmp; -1
// with errno set. The caller closes it.
int open_temporary();
// The same, in this folder.
int open_temporary_in(const std::string& folder);

// A file that is read from its start, as often as it is needed. "-" is standard input, from where it stands.
// What can't be read as it is needed, such as a pipe that is to be read twice, is copied to an unnamed
// temporary file first.
class RunInput {
  public:
    // path: as a package, by its path, anywhere in it. reading: once, from its start to its end. rereading:
    // the same, more than once.
    enum class Need { path, reading, rereading };

    RunInput(const std::string& name, Need need);
    RunInput(const RunInput&) = delete;
    RunInput& operator=(const RunInput&) = delete;
    ~RunInput();

    // Why it can't be used, for people; empty if it can.
    const std::string& fault() const { return m_fault; }
    // It can be read, but not be used.
    bool is_unusable() const { return m_is_unusable; }
    // A path that can be opened as long as this lives.
    const std::string& path() const { return m_path; }
    // A new descriptor at the start, which the caller closes; -1 if there is none.
    int descriptor() const;

  private:
    void open(const std::string& name);
    void copy();
    void check_package();

    int m_fd = -1;
    long long m_begin = 0; // where the data begins, for files that have places
    bool m_has_places = false;
    bool m_is_unusable = false;
    std::string m_path;
    std::string m_fault;
};

} // namespace zan::profile
