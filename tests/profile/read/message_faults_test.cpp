// SPDX-License-Identifier: Apache-2.0
#include "message_faults.h"

#include <gtest/gtest.h>

namespace {

using namespace zan::profile;

TEST(MessageFaults, HaveAKindAPlaceAndAText) {
    const auto fault = fault_of(Message::kernel_unknown, {.line = 3, .kernel = "x"});
    ASSERT_TRUE(fault);
    EXPECT_EQ(fault->kind, FaultKind::unknown_kernel);
    EXPECT_EQ(fault->place, FaultPlace::capture_line);
    EXPECT_EQ(fault->section, nullptr);
    EXPECT_EQ(fault->text, "the design has no kernel x");

    const auto board = fault_of(Message::memory_twice, {.subject = "DDR"});
    ASSERT_TRUE(board);
    EXPECT_EQ(board->place, FaultPlace::package);
    EXPECT_STREQ(board->section, ".zan.board_spec.xml");
    EXPECT_EQ(board->text, "two memories have the name DDR; the first one counts");
}

// The width's first message says it, and the loader's list of errors says more than that it has failed.
TEST(MessageFaults, WhatAnotherSaysIsNoFault) {
    for (int i = 0; i < static_cast<int>(Message::count); ++i) {
        const auto message = static_cast<Message>(i);
        const bool is_said =
            message == Message::width_replaced || message == Message::description_not_loadable;
        EXPECT_EQ(fault_of(message, {}).has_value(), !is_said) << i;
    }
}

TEST(MessageFaults, ThoseOfThePackageNameASection) {
    for (int i = 0; i < static_cast<int>(Message::count); ++i) {
        const auto fault = fault_of(static_cast<Message>(i), {});
        if (!fault)
            continue;
        EXPECT_EQ(fault->place == FaultPlace::package, fault->section != nullptr) << i;
        EXPECT_EQ(fault->text.find('\n'), std::string::npos) << i;
    }
}

} // namespace
