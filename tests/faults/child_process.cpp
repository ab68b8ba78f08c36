// SPDX-License-Identifier: Apache-2.0
#include "child_process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "default_signals.h"

namespace {

constexpr unsigned time_limit_seconds = 60;

bool redirect(int descriptor, const std::string& path, int flags) {
    const int file = ::open(path.c_str(), flags, 0600);
    const bool done = file >= 0 && ::dup2(file, descriptor) == descriptor;
    if (file != descriptor)
        ::close(file);
    return done;
}

} // namespace

pid_t start_child(const std::string& folder, const std::string& out, const std::string& err,
                  const std::function<int()>& work, ChildMemory memory) {
    std::fflush(nullptr);
    const pid_t process = memory == ChildMemory::copied ? ::fork() : ::vfork();
    if (process < 0)
        throw std::runtime_error("can't start a process");
    if (process != 0)
        return process;
    use_default_signals();
    constexpr rlimit no_core_file = {0, 0};
    ::setrlimit(RLIMIT_CORE, &no_core_file);
    ::alarm(time_limit_seconds);
    if (!redirect(STDIN_FILENO, "/dev/null", O_RDONLY) || !redirect(STDOUT_FILENO, out, O_WRONLY | O_CREAT) ||
        !redirect(STDERR_FILENO, err, O_WRONLY | O_CREAT | O_APPEND) || ::chdir(folder.c_str()) != 0)
        ::_exit(status_not_started);
    const int status = work();
    if (memory == ChildMemory::copied)
        std::fflush(nullptr);
    ::_exit(status);
}

int wait_for_child(pid_t process) {
    int status = 0;
    while (::waitpid(process, &status, 0) != process) {
        if (errno != EINTR)
            throw std::runtime_error("can't wait for a process");
    }
    return status;
}

std::string status_text(int wait_status) {
    if (WIFEXITED(wait_status))
        return std::to_string(WEXITSTATUS(wait_status));
    if (WTERMSIG(wait_status) == SIGALRM)
        throw std::runtime_error("the process did not end in time");
    return std::string("SIG") + ::sigabbrev_np(WTERMSIG(wait_status));
}
