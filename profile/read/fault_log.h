// SPDX-License-Identifier: Apache-2.0
// The faults of a run, kept for people: the first ones of each kind, and how many there are.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "run_fault.h"

namespace zan::profile {

// A fault with copies of its texts. A line is cut to what people look at.
struct LoggedFault {
    FaultKind kind = FaultKind::failure;
    std::string file;
    std::string section;
    std::uint64_t line = 0;
    std::size_t column = 0;     // of the whole line, in bytes from 1; 0 if it isn't known
    std::string line_text = {}; // a part of the line if it is long
    std::size_t cut_size = 0;   // how many bytes of the line are before that
    bool is_cut = false;        // there are more after it
    std::string kernel;
    std::string block;
    std::string message;
};

LoggedFault logged(const Fault& fault);

// "design.zanx: .zan.board_spec.xml:3:14", "profile.mon:12", "profile.mon".
std::string place_of(const LoggedFault& fault);

// Faults of one kind.
struct FaultGroup {
    std::uint64_t count = 0;
    std::vector<LoggedFault> first; // up to `FaultLog::shown`
};

class FaultLog final : public FaultReceiver {
  public:
    static constexpr std::size_t shown = 5;

    void take(const Fault& fault) override;

    const FaultGroup& operator[](FaultKind kind) const { return m_groups[static_cast<std::size_t>(kind)]; }
    // "3 empty-line, 1,200 wrong-counter-count": the kinds that leave a line out. Empty if there are none.
    std::string left_out_by_kind() const;
    // The fault that ended the run; null if none did.
    const LoggedFault* end() const;

  private:
    std::array<FaultGroup, static_cast<std::size_t>(FaultKind::count)> m_groups;
};

} // namespace zan::profile
