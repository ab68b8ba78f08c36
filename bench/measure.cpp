// SPDX-License-Identifier: Apache-2.0
// measure [--faults] [--output FILE] COMMAND ARGUMENT...: runs a command and prints its wall time and its
// processor time in seconds, the most memory that it held in KiB, and with --faults how many pages it touched
// first. With --output the command's standard output goes to that file. Small itself, because a process
// starts with the memory of the one that made it.
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <string_view>

static double seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

int main(int argc, char** argv) {
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    char** command = argv + 1;
    const bool counts_faults = argc > 1 && std::string_view(*command) == "--faults";
    command += counts_faults ? 1 : 0;
    if (argv + argc - command > 2 && std::string_view(*command) == "--output") {
        ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, command[1], O_WRONLY | O_CREAT | O_TRUNC,
                                           0666);
        command += 2;
    }
    if (command >= argv + argc) {
        std::fprintf(stderr, "usage: measure [--faults] [--output FILE] COMMAND ARGUMENT...\n");
        return 2;
    }
    const auto begin = std::chrono::steady_clock::now();
    pid_t process = 0;
    if (::posix_spawn(&process, *command, &actions, nullptr, command, environ) != 0) {
        std::fprintf(stderr, "measure: can't run '%s'\n", *command);
        return 1;
    }
    int status = 0;
    struct rusage usage {};
    ::wait4(process, &status, 0, &usage);
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begin;
    std::printf("%.6f %.6f %ld", passed.count(), seconds(usage.ru_utime) + seconds(usage.ru_stime),
                usage.ru_maxrss);
    if (counts_faults)
        std::printf(" %ld", usage.ru_minflt);
    std::printf("\n");
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}
