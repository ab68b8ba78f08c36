// SPDX-License-Identifier: Apache-2.0
// Contracts: conditions that only a fault of the program itself can break. They are checked in every build
// type, whatever NDEBUG says, because stopping with the stated text is part of the behaviour.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace zan {

// A contract that doesn't hold.
struct BrokenContract {
    const char* text; // the failed condition
    const char* file;
    int line;
};

// What a thread does about broken contracts in place of ending the process, where bad input breaks them: it
// throws. Null: the process ends.
inline thread_local void (*broken_contract_handler)(const BrokenContract& contract) = nullptr;

// As long as it lives, broken contracts of this thread are thrown, as BrokenContract.
class ThrowBrokenContracts {
  public:
    ThrowBrokenContracts() : m_before(broken_contract_handler) {
        broken_contract_handler = [](const BrokenContract& contract) { throw contract; };
    }
    ThrowBrokenContracts(const ThrowBrokenContracts&) = delete;
    ThrowBrokenContracts& operator=(const ThrowBrokenContracts&) = delete;
    ~ThrowBrokenContracts() { broken_contract_handler = m_before; }

  private:
    void (*m_before)(const BrokenContract& contract);
};

// Writes the line that the C library's assert would write, with `text` as the failed condition, and aborts.
[[noreturn]] inline void contract_failed(const char* text, const char* file, int line, const char* function) {
    if (broken_contract_handler)
        broken_contract_handler({text, file, line});
    std::fprintf(stderr, "%s:%d: %s: Assertion `%s' failed.\n", file, line, function, text);
    std::fflush(stderr);
    std::abort();
}

} // namespace zan

// Stops the process unless `condition` holds. `text` is shown as it stands: a condition's text is known to
// callers and tests, so it must not change when the condition is written in another way.
#define ZAN_CONTRACT(condition, text) \
    ((condition) ? static_cast<void>(0) : ::zan::contract_failed((text), __FILE__, __LINE__, __func__))
