// SPDX-License-Identifier: Apache-2.0
// The programs under test.
#pragma once

#include <filesystem>

inline const std::filesystem::path program = ZAN_PROGRAM;
inline const std::filesystem::path toolbox = ZAN_TOOLBOX;
