// SPDX-License-Identifier: Apache-2.0
// Part of each program of the coverage build. What a program ran through is written when it exits; here it is
// written also where the program ends by a signal on purpose, or a process of a test without ado.
#include <csignal>

extern "C" int __llvm_profile_write_file(); // of the compiler's runtime, which has no header for it

namespace {

void write_counts_and_abort(int) {
    __llvm_profile_write_file();
    std::signal(SIGABRT, SIG_DFL);
    std::raise(SIGABRT);
}

// Before main(): abort() raises this signal, and an uncaught exception ends in abort().
[[maybe_unused]] const auto previous = std::signal(SIGABRT, write_counts_and_abort);

} // namespace

extern "C" {

// The linker puts these in place of the functions that they are named after.
int __real_raise(int signal);
[[noreturn]] void __real__exit(int status);

int __wrap_raise(int signal) {
    if (signal != SIGABRT)
        __llvm_profile_write_file();
    return __real_raise(signal);
}

void __wrap__exit(int status) {
    __llvm_profile_write_file();
    __real__exit(status);
}

} // extern "C"
