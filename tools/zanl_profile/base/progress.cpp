// SPDX-License-Identifier: Apache-2.0
#include "progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <string_view>

#include "printable.h"
#include "progress_line.h"

namespace zan::tool {

namespace {

constexpr auto time_between_drawings = std::chrono::milliseconds(100);
constexpr std::size_t longest_bar = 40;
constexpr std::size_t around_bar = std::string_view(" [] 100%").size();

// Without an overflow where `done` is a number of bytes.
std::size_t part_of(std::size_t whole, std::uint64_t done, std::uint64_t total) {
    const double share = static_cast<double>(done) / static_cast<double>(total);
    return static_cast<std::size_t>(static_cast<double>(whole) * std::min(share, 1.0));
}

} // namespace

Progress::Progress(const Console& console, std::string what, std::uint64_t total,
                   std::chrono::milliseconds delay)
    : m_enabled(!console.quiet && ::isatty(STDERR_FILENO) == 1),
      m_what(std::move(what)),
      m_total(total),
      m_next(Clock::now() + delay) {
}

Progress::~Progress() {
    remove_progress_line();
}

void Progress::at(std::uint64_t done) {
    if (!m_enabled)
        return;
    const auto now = Clock::now();
    if (now < m_next)
        return;
    m_next = now + time_between_drawings;
    show_progress_line(progress_text(m_what, done, m_total, line_columns(STDERR_FILENO)));
}

// One column is left free: some terminals begin a new line after the last one.
std::string progress_text(const std::string& what, std::uint64_t done, std::uint64_t total,
                          std::size_t columns) {
    const std::size_t room = columns == 0 ? 0 : columns - 1;
    const std::size_t taken = display_width(what) + around_bar;
    if (total == 0 || taken >= room)
        return std::string(fitting(what + " ...", room));
    const std::size_t length = std::min(longest_bar, room - taken);
    const std::size_t full = part_of(length, done, total);
    return fmt::format("{} [{:#<{}}{:.<{}}] {:3}%", what, "", full, "", length - full,
                       part_of(100, done, total));
}

} // namespace zan::tool
