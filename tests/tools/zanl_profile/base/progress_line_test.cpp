// SPDX-License-Identifier: Apache-2.0
#include "progress_line.h"

#include <gtest/gtest.h>

#include "capture.h"

namespace {

using namespace zan::tool;

TEST(ProgressLine, IsWrittenOverAndRemovedOnce) {
    EXPECT_EQ(stderr_of([] {
                  remove_progress_line(); // there is none
                  show_progress_line("1%");
                  show_progress_line("2%");
                  remove_progress_line();
                  remove_progress_line();
              }),
              "\r1%\x1b[K\r2%\x1b[K\r\x1b[K");
}

} // namespace
