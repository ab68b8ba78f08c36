// SPDX-License-Identifier: Apache-2.0
// measure COMMAND ARGUMENT...: runs a command and prints its wall time and its processor time in seconds and
// the most memory that it held in KiB. Small itself, because a process starts with the memory of the one that
// made it.
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>

static double seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: measure COMMAND ARGUMENT...\n");
        return 2;
    }
    const auto begin = std::chrono::steady_clock::now();
    pid_t process = 0;
    if (::posix_spawn(&process, argv[1], nullptr, nullptr, argv + 1, environ) != 0) {
        std::fprintf(stderr, "measure: can't run '%s'\n", argv[1]);
        return 1;
    }
    int status = 0;
    struct rusage usage {};
    ::wait4(process, &status, 0, &usage);
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begin;
    std::printf("%.6f %.6f %ld\n", passed.count(), seconds(usage.ru_utime) + seconds(usage.ru_stime),
                usage.ru_maxrss);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}
