// SPDX-License-Identifier: Apache-2.0
// A pipe whose reader is interrupted by signals while it waits.
#pragma once

#include <pthread.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <string>
#include <thread>
#include <utility>

// Some signals reach the thread that makes this, a millisecond apart; then the pipe gets its bytes, and its
// end. Where a read is not made again after a signal it fails.
class InterruptedPipe {
  public:
    explicit InterruptedPipe(std::string bytes) {
        if (::pipe(m_ends) != 0)
            std::abort();
        struct sigaction action {};
        action.sa_handler = [](int) {};
        ::sigaction(SIGUSR1, &action, &m_old_action);
        m_writer = std::thread([this, bytes = std::move(bytes), reader = ::pthread_self()] {
            for (int i = 0; i < 20; ++i) {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
                ::pthread_kill(reader, SIGUSR1);
            }
            m_is_written = ::write(m_ends[1], bytes.data(), bytes.size()) >= 0;
            ::close(m_ends[1]);
        });
    }
    InterruptedPipe(const InterruptedPipe&) = delete;
    InterruptedPipe& operator=(const InterruptedPipe&) = delete;
    ~InterruptedPipe() {
        m_writer.join();
        ::close(m_ends[0]);
        ::sigaction(SIGUSR1, &m_old_action, nullptr);
    }

    int reading_end() const { return m_ends[0]; }

  private:
    int m_ends[2] = {-1, -1};
    struct sigaction m_old_action {};
    bool m_is_written = false;
    std::thread m_writer;
};
