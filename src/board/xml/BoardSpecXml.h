// SPDX-License-Identifier: Apache-2.0
// Loading board descriptions from XML, and the visitors that do it. The format is in docs/board.md.
#pragma once

#include "BaseXmlLoader.h"
#include "BoardChannelsVisitor.h"
#include "BoardCompileVisitor.h"
#include "BoardDeviceVisitor.h"
#include "BoardGlobalMemVisitor.h"
#include "BoardHostVisitor.h"
#include "BoardInterfaceVisitor.h"
#include "BoardInterfacesVisitor.h"
#include "BoardPortVisitor.h"
#include "BoardSpec.h"
#include "BoardVisitor.h"

namespace zan::board {

// Loads descriptions, one after the other. Each load returns a model that the caller owns, or null with the
// reasons in the error list.
class BoardSpecXmlLoader : public zan::xml::BaseXmlLoader {
  public:
    // With `debug` the loads print their progress on standard error. With `skip_global_mem_checks` the global
    // memories aren't compared with each other.
    BoardSpecXmlLoader(bool debug, bool skip_global_mem_checks)
        : m_debug(debug), m_skip_global_mem_checks(skip_global_mem_checks) {}

    // `path` isn't copied and has to live as long as the load.
    BoardSpec* load_file(const char* path);
    BoardSpec* load_xml(const char* text);
    // Deletes the document. For a null one it returns null and reports nothing.
    BoardSpec* load_board_spec(zan::xml::XMLDocument* doc);

  private:
    bool m_debug;
    bool m_skip_global_mem_checks;
};

} // namespace zan::board
