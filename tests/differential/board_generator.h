// SPDX-License-Identifier: Apache-2.0
// Random board descriptions. Most can be loaded; the others break a rule that the slow model knows.
#pragma once

#include <string>
#include <vector>

#include "dice.h"

namespace slow {

struct Board {
    std::string xml;
    std::vector<std::string> memories;
};

Board make_board(Dice& dice);

} // namespace slow
