// SPDX-License-Identifier: Apache-2.0
// What a design shows without a capture.
#pragma once

#include <string>
#include <string_view>

#include "finding.h"
#include "profile_model.h"

namespace zan::profile {

// The block is an access of global memory or of a channel, or a loop.
bool is_global(const TlyModuleInst& inst);
bool is_channel(const TlyModuleInst& inst);
bool is_loop(const TlyModuleInst& inst);
// The name that reports show.
const std::string& shown_name(const TlyKernel& kernel);
// A clock in MHz; 0 if the text isn't one.
double stated_clock(const std::string& text);

// Adds what is found. `package` is the file's name, and `clock` what the timing report says.
void check_design(const ProfileModel& model, const std::string& clock, std::string_view package,
                  FindingLog& log);

} // namespace zan::profile
