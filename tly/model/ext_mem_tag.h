// SPDX-License-Identifier: Apache-2.0
// Tags of external memory ports. Such a tag carries the memory's name, the bank, the port and the operation:
// "profile_extmem_KERNEL_function_MEMORY_bank1_port2_read_data_inc_en_REST".
#pragma once

#include <string>
#include <string_view>

#include "tly_constants.h"

// The port of an external memory that a tag names, or the fault of the tag.
struct ExtMemTag {
    enum class Fault { none, properties, bank, port };

    std::string memory;
    ExtMemOpType op = EXT_MEM_READ_BURST;
    bool names_op = true; // a tag without an operation is recorded all the same, with the `op` above
    int bank = 0;
    int port = 0;
    Fault fault = Fault::none;
    std::string fault_text; // the text that the message about the fault shows
};

// Whether a tag that isn't one of the fixed counter tags is that of an external memory port.
bool is_ext_mem_tag(std::string_view tag);

// Takes apart a tag for which is_ext_mem_tag holds.
ExtMemTag decode_ext_mem_tag(std::string_view tag);
