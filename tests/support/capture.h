// SPDX-License-Identifier: Apache-2.0
// Catching what a test makes the program say.
#pragma once

#include <gtest/gtest.h>

#include <string>

// What `function` writes to standard error.
template <class Function>
std::string stderr_of(Function function) {
    testing::internal::CaptureStderr();
    function();
    return testing::internal::GetCapturedStderr();
}

// What `function` writes to standard output.
template <class Function>
std::string stdout_of(Function function) {
    testing::internal::CaptureStdout();
    function();
    return testing::internal::GetCapturedStdout();
}
