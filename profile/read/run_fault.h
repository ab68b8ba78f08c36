// SPDX-License-Identifier: Apache-2.0
// What is wrong with the inputs of a run, as values.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zan::profile {

enum class FaultKind {
    // Of the package.
    package_unreadable,
    not_a_package,
    section_missing,
    section_unreadable,
    no_description,
    not_xml,       // the XML of a section can't be parsed
    xml_rule,      // the XML of a section breaks a rule of its format
    same_memory,   // two memories of a board have one name
    unknown_share, // a connection shares a counter that isn't there
    autorun_without_kernel,
    // Of the capture as a whole.
    capture_unreadable,
    shared_in_design_only,
    shared_in_capture_only,
    kernel_without_data,
    // Of a line of the capture, which is left out.
    empty_line,
    nameless_line,
    bad_number,
    wrong_field_count,
    wrong_counter_count,
    unknown_kernel,
    kernel_without_counters,
    // Of a line that is used.
    taken_for_transfer, // a line after a faulty transfer
    bad_counter,
    // Of what the lines make.
    tag_fault,
    no_cycles,
    no_width,
    sample_mismatch,
    unknown_memory,
    // An exception, such as one for want of memory.
    failure,
    count // how many there are
};

// What a fault does to the run.
enum class FaultEffect {
    ends_run,
    leaves_line_out,
    none, // the report may be misleading
};

// A fault with its place. Views hold until the call that hands it over returns. Texts are those of the files,
// whatever bytes they hold: outputs for people have to escape them.
struct Fault {
    FaultKind kind = FaultKind::failure;
    std::string_view file = {};    // as the caller named it
    std::string_view section = {}; // of the package; empty elsewhere
    std::uint64_t line = 0;        // of the capture, or of the section's text, from 1; 0 for the whole of it
    std::size_t column = 0;        // of the section's line, in bytes from 1; 0 if it isn't known
    std::string_view line_text = {}; // that line
    std::string_view kernel = {};    // that it is about; empty if it isn't known
    std::string_view block = {};     // that it is about; empty if it isn't known
    std::string_view message = {};   // a sentence for people without its place and without a newline
};

class FaultReceiver {
  public:
    virtual ~FaultReceiver() = default;
    virtual void take(const Fault& fault) = 0;
};

// The name of a kind: "empty-line". Commands print it, and docs/check.md lists it.
std::string_view name_of(FaultKind kind);
FaultEffect effect_of(FaultKind kind);

} // namespace zan::profile
