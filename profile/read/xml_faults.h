// SPDX-License-Identifier: Apache-2.0
// The messages of the loaders of descriptions, as faults.
#pragma once

#include <string_view>

#include "BaseXmlLoader.h"
#include "contract.h"
#include "run_fault.h"

namespace zan::profile {

// Hands over a fault for each error of the last load. `place` has the file and the section, and `text` is the
// text that was loaded.
void take_xml_errors(const zan::xml::BaseXmlLoader& loader, std::string_view text, const Fault& place,
                     FaultReceiver& faults);

// The same for a contract of the library that the text has broken.
void take_broken_contract(const BrokenContract& contract, std::string_view text, const Fault& place,
                          FaultReceiver& faults);

} // namespace zan::profile
