// SPDX-License-Identifier: Apache-2.0
// Runs in which one system call after the other fails.
#pragma once

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <string>

#include "traced_run.h"

// A test that runs in a folder with a fixture's `dir`. Where nothing can be traced it is left out.
template <class Fixture>
class Traced : public Fixture {
  protected:
    void SetUp() override {
        static const std::string fault = tracing_fault();
        if (!fault.empty())
            GTEST_SKIP() << fault;
        this->start();
    }
    // Called after the check that processes can be traced.
    virtual void start() = 0;

    // Runs `body` with each of these calls in turn failing with the error; `lasting` as with a Fault.
    // Calls `prepare()` before each run and `check(run)` after it.
    template <typename Prepare, typename Check>
    void with_each_call_failing(const std::function<int()>& body, Calls calls, int error, bool lasting,
                                Prepare prepare, Check check) const {
        prepare();
        const int count = run_traced(body, this->dir.path(), {calls}).calls;
        for (int number = 1; number <= count; ++number) {
            prepare();
            const TracedRun run = run_traced(body, this->dir.path(), {calls, number, error, lasting});
            ASSERT_FALSE(run.struck.empty()) << "there is no call " << number;
            SCOPED_TRACE(run.struck + " (" + std::to_string(number) + ") fails: " + std::strerror(error) +
                         (lasting ? ", and so do those after it" : ""));
            check(run);
        }
    }

    TracedRun run_whole(const std::function<int()>& body) const {
        return run_traced(body, this->dir.path(), {});
    }
};
