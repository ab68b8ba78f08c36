// SPDX-License-Identifier: Apache-2.0
// The handler removes by itself, in place of a flag that the work looks at: a read of a pipe or of a slow
// disk would not look for as long as it waits. A thread that waits for signals was rejected too: the work
// would go on making files while they are removed.
#include "signals.h"

#include <cerrno>

#include "progress_line.h"
#include "remove_tree.h"

namespace zan::tool {

namespace {

constexpr int ending_signals[] = {SIGTERM, SIGINT, SIGHUP};

sigset_t ending_set() {
    sigset_t set;
    ::sigemptyset(&set);
    for (const int signal : ending_signals)
        ::sigaddset(&set, signal);
    return set;
}

// The last one that was made. Changed only while the signals are held.
RemovedBySignal* last_registered = nullptr;

// The signal comes again when the handler returns, and ends the process as if there were no handler.
extern "C" void end_by_signal(int signal) {
    remove_unfinished();
    remove_progress_line();
    ::signal(signal, SIG_DFL);
    ::raise(signal);
}

void handle(int signal) {
    struct sigaction action = {};
    ::sigaction(signal, nullptr, &action);
    if (action.sa_handler == SIG_IGN) // as under nohup
        return;
    action = {};
    action.sa_handler = end_by_signal;
    action.sa_mask = ending_set();
    ::sigaction(signal, &action, nullptr);
}

} // namespace

void prepare_signals() {
    for (const int signal : ending_signals)
        handle(signal);
    for (const int signal : {SIGPIPE, SIGXFSZ})
        ::signal(signal, SIG_IGN);
}

SignalsHeld::SignalsHeld() {
    const sigset_t set = ending_set();
    ::sigprocmask(SIG_BLOCK, &set, &m_before);
}

SignalsHeld::~SignalsHeld() {
    const int error = errno; // of a call that was made meanwhile
    ::sigprocmask(SIG_SETMASK, &m_before, nullptr);
    errno = error;
}

RemovedBySignal::RemovedBySignal(const std::string& path) : m_path(path), m_previous(last_registered) {
    const SignalsHeld held;
    if (m_previous)
        m_previous->m_next = this;
    last_registered = this;
}

RemovedBySignal::~RemovedBySignal() {
    const SignalsHeld held;
    (m_next ? m_next->m_previous : last_registered) = m_previous;
    if (m_previous)
        m_previous->m_next = m_next;
}

void remove_unfinished() {
    for (const RemovedBySignal* each = last_registered; each; each = each->m_previous)
        remove_tree(each->m_path.c_str());
}

} // namespace zan::tool
