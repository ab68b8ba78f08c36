// SPDX-License-Identifier: Apache-2.0
// A bar that shows how far long work is.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "console.h"

namespace zan::tool {

// Shows on standard error how much of the work is done, if that is a terminal, isn't quiet, and the work has
// taken over a second. The bar goes away with the object, and before each message.
class Progress {
  public:
    static constexpr std::chrono::milliseconds usual_delay{1000};

    // `what` is the work, in a word or two: "reading". `total` is in any unit; 0 if it isn't known. There is
    // no bar before the `delay` is over.
    Progress(const Console& console, std::string what, std::uint64_t total,
             std::chrono::milliseconds delay = usual_delay);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    // That much of the total is done. Cheap enough for each piece of some KiB, not for each line: it looks at
    // the clock.
    void at(std::uint64_t done);

  private:
    using Clock = std::chrono::steady_clock;

    bool m_enabled;
    std::string m_what;
    std::uint64_t m_total;
    Clock::time_point m_next; // when the bar is drawn again
};

// The bar's text, `columns` wide at most: "reading [#####.....] 50%"; without a total "reading ...".
std::string progress_text(const std::string& what, std::uint64_t done, std::uint64_t total,
                          std::size_t columns);

} // namespace zan::tool
