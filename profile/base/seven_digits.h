// SPDX-License-Identifier: Apache-2.0
// Decimal numbers as a report has them.
#pragma once

namespace zan::profile {

// The number that a reader of the report gets for `value`: the report writes 7 significant digits. So what is
// computed from a run equals what is computed from its report. Values that no report of a real run has, below
// 0.00001 and from 1e9 on, come back as they are.
float with_seven_digits(float value);

} // namespace zan::profile
