// SPDX-License-Identifier: Apache-2.0
#include "run_program.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

#include "default_signals.h"
#include "temp_dir.h"
#include "whole_file.h"

namespace {

constexpr unsigned time_limit_seconds = 120;
constexpr int status_not_started = 127;

bool redirect(int descriptor, const char* path, int flags) {
    const int file = ::open(path, flags, 0600);
    return file >= 0 && ::dup2(file, descriptor) == descriptor;
}

// What a process needs to become a program.
struct Start {
    const char* program;
    char* const* arguments;
    const char* folder;
    const char* out;
    const char* err;
};

// Runs in a process that shares the memory of the test, so it must not change it.
[[noreturn]] void become(const Start& start) {
    use_default_signals();
    constexpr rlimit no_core_file = {0, 0};
    ::setrlimit(RLIMIT_CORE, &no_core_file);
    ::alarm(time_limit_seconds);
    if (redirect(STDIN_FILENO, "/dev/null", O_RDONLY) &&
        redirect(STDOUT_FILENO, start.out, O_WRONLY | O_CREAT) &&
        redirect(STDERR_FILENO, start.err, O_WRONLY | O_CREAT) && ::chdir(start.folder) == 0)
        // Not execv: where runs are counted, the compiler puts a function in its place that writes the counts
        // of the test, which the test could not do again.
        ::syscall(SYS_execve, start.program, start.arguments, environ);
    ::_exit(status_not_started);
}

std::string status_text(int status) {
    if (!WIFSIGNALED(status))
        return std::to_string(WEXITSTATUS(status));
    if (WTERMSIG(status) == SIGALRM)
        throw std::runtime_error("the program did not end in time");
    return WTERMSIG(status) == SIGSEGV ? "SIGSEGV" : "signal";
}

int checked(int process) {
    if (process < 0)
        throw std::runtime_error("can't start a process");
    return process;
}

int wait_for(int process) {
    int status = 0;
    if (::waitpid(process, &status, 0) != process)
        throw std::runtime_error("can't wait for the program");
    return status;
}

} // namespace

Outcome run_program(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                    const std::filesystem::path& folder) {
    const TempDir output;
    std::vector<std::string> texts = arguments;
    texts.insert(texts.begin(), program.filename().string());
    std::vector<char*> pointers;
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);

    const std::string out = output.path("out");
    const std::string err = output.path("err");
    const Start start = {program.c_str(), pointers.data(), folder.c_str(), out.c_str(), err.c_str()};
    // Under a sanitizer a copy of this process's memory costs more than the run.
    const int process = checked(::vfork());
    if (process == 0)
        become(start);
    const std::string status = status_text(wait_for(process));
    return {read_file(out), read_file(err), status};
}

PipeWriter::PipeWriter(const std::filesystem::path& path, const std::string& bytes) {
    if (::mkfifo(path.c_str(), 0600) != 0)
        throw std::runtime_error("can't make the pipe " + path.string());
    m_process = checked(::fork());
    if (m_process != 0)
        return;
    // Opening waits for a reader. The odd size of a piece makes lines arrive in parts.
    constexpr std::size_t piece = 7;
    const int pipe = ::open(path.c_str(), O_WRONLY);
    for (std::size_t i = 0; i < bytes.size(); i += piece) {
        if (::write(pipe, bytes.data() + i, std::min(piece, bytes.size() - i)) < 0)
            break;
    }
    ::_exit(0);
}

PipeWriter::~PipeWriter() {
    ::kill(m_process, SIGKILL);
    ::waitpid(m_process, nullptr, 0);
}
