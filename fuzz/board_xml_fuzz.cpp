// SPDX-License-Identifier: Apache-2.0
// Any text as a board description.
#include <cstdint>
#include <memory>
#include <sstream>
#include <string>

#include "BoardSpecXml.h"
#include "expected_stop.h"

namespace {

void load_and_print(const std::string& text) {
    zan::board::BoardSpecXmlLoader loader(false, false);
    const std::unique_ptr<zan::board::BoardSpec> board(loader.load_xml(text.c_str()));
    if (!board && loader.get_num_errors() == 0)
        __builtin_trap(); // a failure must have a reason
    if (board) {
        std::ostringstream out;
        out << *board;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        load_and_print(std::string(reinterpret_cast<const char*>(data), size));
    } catch (const ExpectedStop&) {
    }
    return 0;
}
