// SPDX-License-Identifier: Apache-2.0
// A page shown to the user who has just made it.
#pragma once

#include <string>

namespace zan::tool {

// Starts xdg-open, which PATH finds, on the file, and doesn't wait for it: a browser may stay open for days.
// What xdg-open has to say goes to standard error. Throws Failure if it can't be started; the page stays.
void open_page(const std::string& path);

} // namespace zan::tool
