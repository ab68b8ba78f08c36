// SPDX-License-Identifier: Apache-2.0
// Folders on the disk that fuzzers make of their input, with something beside them that must stay as it is.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "temp_dir.h"

// A line of the input: what it asks for, and a name.
struct Step {
    char kind;
    std::string name; // has no NUL
};
std::vector<Step> steps_of_input(const std::uint8_t* data, std::size_t size);

void expect(bool holds); // ends the process if it doesn't

// "outside", with a file, and "to", with the folders (D), files (F) and links (L) that steps ask for.
class TargetTree {
  public:
    TargetTree();
    // Makes what the step asks for, if it names something in the tree that isn't there; 'N' takes "to" away.
    void make(const Step& step) const;
    std::string target() const { return m_dir.path("to"); }
    // Checks that nothing has changed outside of the target.
    void expect_outside_untouched() const;

  private:
    const TempDir m_dir;
};
