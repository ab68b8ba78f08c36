// SPDX-License-Identifier: Apache-2.0
#include "run_fault.h"

#include <algorithm>
#include <iterator>

namespace zan::profile {

namespace {

struct FaultRow {
    FaultKind kind;
    std::string_view name;
    FaultEffect effect;
};

constexpr FaultRow fault_rows[] = {
    {FaultKind::package_unreadable, "package-unreadable", FaultEffect::ends_run},
    {FaultKind::not_a_package, "not-a-package", FaultEffect::ends_run},
    {FaultKind::section_missing, "section-missing", FaultEffect::ends_run},
    {FaultKind::section_unreadable, "section-unreadable", FaultEffect::ends_run},
    {FaultKind::no_description, "no-description", FaultEffect::none},
    {FaultKind::not_xml, "not-xml", FaultEffect::ends_run},
    {FaultKind::xml_rule, "xml-rule", FaultEffect::ends_run},
    {FaultKind::same_memory, "same-memory", FaultEffect::none},
    {FaultKind::unknown_share, "unknown-share", FaultEffect::none},
    {FaultKind::autorun_without_kernel, "autorun-without-kernel", FaultEffect::none},
    {FaultKind::capture_unreadable, "capture-unreadable", FaultEffect::ends_run},
    {FaultKind::shared_in_design_only, "shared-in-design-only", FaultEffect::ends_run},
    {FaultKind::shared_in_capture_only, "shared-in-capture-only", FaultEffect::ends_run},
    {FaultKind::kernel_without_data, "kernel-without-data", FaultEffect::none},
    {FaultKind::empty_line, "empty-line", FaultEffect::leaves_line_out},
    {FaultKind::nameless_line, "nameless-line", FaultEffect::leaves_line_out},
    {FaultKind::bad_number, "bad-number", FaultEffect::leaves_line_out},
    {FaultKind::wrong_field_count, "wrong-field-count", FaultEffect::leaves_line_out},
    {FaultKind::wrong_counter_count, "wrong-counter-count", FaultEffect::leaves_line_out},
    {FaultKind::unknown_kernel, "unknown-kernel", FaultEffect::leaves_line_out},
    {FaultKind::kernel_without_counters, "kernel-without-counters", FaultEffect::leaves_line_out},
    {FaultKind::taken_for_transfer, "taken-for-transfer", FaultEffect::none},
    {FaultKind::bad_counter, "bad-counter", FaultEffect::none},
    {FaultKind::tag_fault, "tag-fault", FaultEffect::none},
    {FaultKind::no_cycles, "no-cycles", FaultEffect::none},
    {FaultKind::no_width, "no-width", FaultEffect::none},
    {FaultKind::sample_mismatch, "sample-mismatch", FaultEffect::none},
    {FaultKind::unknown_memory, "unknown-memory", FaultEffect::none},
    {FaultKind::failure, "failure", FaultEffect::ends_run},
};
static_assert(std::size(fault_rows) == static_cast<std::size_t>(FaultKind::count));
static_assert(std::ranges::is_sorted(fault_rows, {}, &FaultRow::kind));

} // namespace

std::string_view name_of(FaultKind kind) {
    return fault_rows[static_cast<std::size_t>(kind)].name;
}

FaultEffect effect_of(FaultKind kind) {
    return fault_rows[static_cast<std::size_t>(kind)].effect;
}

} // namespace zan::profile
