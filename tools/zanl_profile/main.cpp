// SPDX-License-Identifier: Apache-2.0
#include "toolbox.h"

int main(int argc, char** argv) {
    return zan::tool::run_toolbox(argc, argv);
}
