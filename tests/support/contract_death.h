// SPDX-License-Identifier: Apache-2.0
// Death tests on contracts.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

// Expects that `statement` stops the process on the contract with exactly this text.
#define EXPECT_CONTRACT(statement, text) \
    EXPECT_DEATH(statement, ::testing::HasSubstr(std::string("Assertion `") + (text) + "' failed.\n"))
