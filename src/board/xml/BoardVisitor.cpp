// SPDX-License-Identifier: Apache-2.0
#include "BoardVisitor.h"

#include <cstdlib>

#include "BaseAttributeTable.h"
#include "BoardChannelsVisitor.h"
#include "BoardCompileVisitor.h"
#include "BoardDeviceVisitor.h"
#include "BoardGlobalMemChecks.h"
#include "BoardGlobalMemVisitor.h"
#include "BoardHostVisitor.h"
#include "BoardInterfacesVisitor.h"
#include "contract.h"

namespace zan::board::xml {

using zan::xml::AttributeRow;
using zan::xml::call;
using zan::xml::outermost;
using zan::xml::read_attributes;
using zan::xml::read_to;
using enum zan::xml::AttributeNeed;
using enum zan::xml::Occurrence;

namespace {

// A board of this name need not have a memory, nor memories that go together.
constexpr const char* board_without_checks = "custom_ipa";

BoardSpec::Version version_of(const std::string& text) {
    return BoardSpec::Version(static_cast<float>(std::strtod(text.c_str(), nullptr)));
}

} // namespace

struct BoardVisitor::Board {
    std::string version;
    std::string name;
};

BoardVisitor::BoardVisitor(BoardSpec* spec, VisitorCallbacks* callbacks, bool debug,
                           bool skip_global_mem_checks)
    : TableVisitor(elements(), callbacks, debug),
      m_spec(spec),
      m_skip_global_mem_checks(skip_global_mem_checks) {
    ZAN_CONTRACT(spec != nullptr, "spec != __null");
}

BoardVisitor::Rows BoardVisitor::elements() {
    using Self = BoardVisitor;
    static constexpr ElementRow rows[] = {
        {"board", outermost, once, call<&Self::visit_board_elem>},
        {"device", "board", once, call<&Self::visit_section<DeviceVisitor>>},
        {"compile", "board", any, call<&Self::visit_section<CompileVisitor>>},
        {"global_mem", "board", any, call<&Self::visit_section<GlobalMemVisitor>>},
        {"host", "board", once, call<&Self::visit_section<HostVisitor>>},
        {"channels", "board", once, call<&Self::visit_section<ChannelsVisitor>>},
        {"interfaces", "board", once, call<&Self::visit_section<InterfacesVisitor>>},
    };
    return rows;
}

// Between 0.9 and 14.1 there is no version, and what isn't a number is none.
bool BoardVisitor::check_version(const XMLElement& elem, const Board& board) {
    const BoardSpec::Version version = version_of(board.version);
    return version == BoardSpec::Version_0_9 || version >= BoardSpec::Version(14.1f) ||
           report_attr_error(elem, "version", "Unsupported version string.");
}

bool BoardVisitor::visit_board_elem(const XMLElement& elem) {
    static constexpr AttributeRow<BoardVisitor, Board> rows[] = {
        {"version", required, read_to<&Board::version>, nullptr, &BoardVisitor::check_version},
        {"name", required, read_to<&Board::name>},
    };
    Board board;
    if (!read_attributes(*this, elem, rows, board))
        return false;
    m_spec->set_version(version_of(board.version));
    m_spec->set_name(board.name);
    return true;
}

template <typename SectionVisitor>
bool BoardVisitor::visit_section(const XMLElement& elem) {
    SectionVisitor child(this, m_spec);
    return hand_over(elem, &child);
}

bool BoardVisitor::VisitExit(const XMLDocument&) {
    if (m_has_error)
        return false;
    return check_sections() && complete_compile_configs();
}

// The order decides which message a user sees: the first fault ends the checks.
bool BoardVisitor::check_sections() {
    if (!m_spec->has_device_config())
        return report_error("Missing device configuration (<device>) in board specification.");
    if (!check_global_mems())
        return false;
    if (!m_spec->has_host_config())
        return report_error("Missing host configuration (<host>) in board specification.");
    if (!m_spec->has_interface_config())
        return report_error("Missing interface configuration (<interfaces>) in board specification.");
    return true;
}

bool BoardVisitor::check_global_mems() {
    const bool checked = m_spec->get_name() != board_without_checks;
    if (checked && !m_spec->has_global_mem_config())
        return report_error("Missing global memory configuration (<global_mem>) in board specification.");
    if (checked && !m_skip_global_mem_checks) {
        if (const char* conflict = find_global_mem_conflict(*m_spec))
            return report_error(conflict);
    }
    // Unlike the other checks this one applies to every board.
    if (const std::string* unknown = find_unknown_can_access(*m_spec))
        return report_error("No valid memory interface matching can_access list entry '" + *unknown + "'.");
    return true;
}

// The oldest format has no compile configurations, and stands for one.
bool BoardVisitor::complete_compile_configs() {
    const bool has_config = m_spec->num_compile_configs() != 0;
    if (m_spec->get_version() == BoardSpec::Version_0_9) {
        if (has_config)
            return report_error(
                "Unexpected compile configuration (<compile>) found in 0.9 board specification.");
        m_spec->add_compile_config(make_default_compile_config(), CompileConfig::DEFAULT_CONFIG_NAME);
    } else if (!has_config) {
        return report_error("Missing compile configuration (<compile>) in board specification.");
    }
    return !m_has_error;
}

} // namespace zan::board::xml
