// SPDX-License-Identifier: Apache-2.0
// Summaries with as many digits as they are good for.
#pragma once

#include "profile_summary.h"

namespace zan::profile {

// Rounds all values that aren't whole to five digits. Reports have seven digits of bandwidths and ratios, and
// a run has all of them: so both have the same summary. It makes a saved summary a third shorter, too.
void round_values(ProfileSummary& summary);

// The nearest number of five decimal digits; whole numbers stay.
double rounded_value(double value);

} // namespace zan::profile
