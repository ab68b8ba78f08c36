// SPDX-License-Identifier: Apache-2.0
// How a command ends early.
#pragma once

#include <stdexcept>
#include <string>

#include "printable.h"

namespace zan::tool {

// Exit statuses of the toolbox; 0 is for all well.
constexpr int status_no = 1;      // what was asked for isn't there
constexpr int status_trouble = 2; // wrong use, or input and output that can't be read or written

// Ends the command with the status; the text is printed on standard error, after the program's name.
class Failure : public std::runtime_error {
  public:
    explicit Failure(const std::string& text, int status = status_trouble)
        : std::runtime_error(text), m_status(status) {}
    int status() const { return m_status; }

  private:
    int m_status;
};

// Ends the command with a status and without a message: what it has printed says why.
struct QuietEnd {
    int status = status_no;
};

// A failure that the system reported, and no fault of a file as such.
class SystemFailure : public Failure {
  public:
    using Failure::Failure;
};

// A failure of a system call, with errno's reason: "can't open 'design.zanx': No such file or directory".
SystemFailure system_failure(const std::string& what);

} // namespace zan::tool
