// SPDX-License-Identifier: Apache-2.0
#include "tly_exe.h"

// NOLINTNEXTLINE(bugprone-exception-escape): an exception ends the process, as callers expect
int main(int argc, char** argv) {
    return tly_main(argc, argv);
}
