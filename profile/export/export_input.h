// SPDX-License-Identifier: Apache-2.0
// An input to an export.
#pragma once

#include <optional>

#include "export_writer.h"
#include "inputs.h"

namespace zan::profile {

// Reads the input, once, and hands all of it to the writer. Returns why it can't be used, if it can't: the
// writer then has a part of it. A saved summary can't, as it has no samples. What the writer throws is let
// through.
std::optional<InputFault> export_input(const Input& input, const InputOptions& options, ExportWriter& writer);

} // namespace zan::profile
