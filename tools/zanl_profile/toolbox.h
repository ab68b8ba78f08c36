// SPDX-License-Identifier: Apache-2.0
// The toolbox as a whole.
#pragma once

namespace zan::tool {

// Runs `zanl-profile` with these arguments, and returns its exit status. No exception leaves it.
int run_toolbox(int argc, const char* const* argv);

} // namespace zan::tool
