// SPDX-License-Identifier: Apache-2.0
// Runs a program as a shell would, and returns all that it wrote.
#pragma once

#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

struct Outcome {
    std::string out;    // standard output
    std::string err;    // standard error
    std::string status; // the exit status in decimal, "SIGSEGV", or "signal" for an end by another one

    friend bool operator==(const Outcome&, const Outcome&) = default;
    // How a failed test shows it.
    friend void PrintTo(const Outcome& outcome, std::ostream* os) {
        *os << "status " << outcome.status << "\n--- stdout\n"
            << outcome.out << "--- stderr\n"
            << outcome.err;
    }
};

// Runs `program` with the arguments in `folder`, with an empty standard input, and waits for it. Throws
// std::runtime_error if it takes longer than two minutes or can't be waited for; a program that can't be
// started has the status 127.
Outcome run_program(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                    const std::filesystem::path& folder);

// Writes bytes into a named pipe from a process of its own, in small pieces, for as long as it lives.
class PipeWriter {
  public:
    // Makes the pipe. Throws std::runtime_error if that fails.
    PipeWriter(const std::filesystem::path& path, const std::string& bytes);
    PipeWriter(const PipeWriter&) = delete;
    PipeWriter& operator=(const PipeWriter&) = delete;
    // Ends the writing, also if the pipe was never opened for reading.
    ~PipeWriter();

  private:
    int m_process;
};
