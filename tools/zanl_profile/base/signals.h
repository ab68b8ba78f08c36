// SPDX-License-Identifier: Apache-2.0
// Signals that end the process leave nothing unfinished.
#pragma once

#include <csignal>
#include <string>

namespace zan::tool {

// From now on SIGTERM, SIGINT and SIGHUP remove what is unfinished before they end the process; one that the
// caller ignores stays ignored. SIGPIPE and SIGXFSZ end nothing: the write fails, with a reason.
void prepare_signals();

// Keeps the signals that end the process waiting while it lives: for steps that belong together, and end
// soon.
class SignalsHeld {
  public:
    SignalsHeld();
    SignalsHeld(const SignalsHeld&) = delete;
    SignalsHeld& operator=(const SignalsHeld&) = delete;
    ~SignalsHeld();

  private:
    sigset_t m_before;
};

// A file, or a folder with all in it, that is removed if a signal ends the process. Make it under the
// SignalsHeld under which the file or folder is made. The process must not change its folder meanwhile.
class RemovedBySignal {
  public:
    // `path` belongs to the caller, and outlives the object: nothing is allocated here, so nothing can fail
    // after the file was made.
    explicit RemovedBySignal(const std::string& path);
    explicit RemovedBySignal(std::string&& path) = delete;
    RemovedBySignal(const RemovedBySignal&) = delete;
    RemovedBySignal& operator=(const RemovedBySignal&) = delete;
    // From now on it stays.
    ~RemovedBySignal();

  private:
    friend void remove_unfinished();

    const std::string& m_path;
    RemovedBySignal* m_previous;
    RemovedBySignal* m_next = nullptr;
};

// Removes all files and folders that are registered. Makes only calls that a signal handler may make.
void remove_unfinished();

} // namespace zan::tool
