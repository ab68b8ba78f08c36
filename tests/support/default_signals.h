// SPDX-License-Identifier: Apache-2.0
// Signals as a program finds them that was started from a terminal.
#pragma once

#include <signal.h>

// For a new process before it becomes a program: what the parent ignores or holds back would stay so. nohup
// ignores SIGHUP, and shells ignore SIGINT in commands of the background.
inline void use_default_signals() {
    for (int signal = 1; signal < NSIG; ++signal)
        ::signal(signal, SIG_DFL); // fails for SIGKILL and the like, which are never ignored
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}
