// SPDX-License-Identifier: Apache-2.0
#include "BoardSpecXml.h"

namespace zan::board {

BoardSpec* BoardSpecXmlLoader::load_file(const char* path) {
    return load_board_spec(parse_file(path));
}

BoardSpec* BoardSpecXmlLoader::load_xml(const char* text) {
    return load_board_spec(parse_xml(text));
}

BoardSpec* BoardSpecXmlLoader::load_board_spec(zan::xml::XMLDocument* doc) {
    return load_model<BoardSpec, xml::BoardVisitor>(doc, m_debug, m_skip_global_mem_checks);
}

} // namespace zan::board
