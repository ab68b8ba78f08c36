// SPDX-License-Identifier: Apache-2.0
// The visitor of a board's compile configuration. What the element must hold depends on the document's
// version.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "BoardSectionVisitor.h"

namespace zan::board::xml {

// For the arguments see BoardSectionVisitor. The version of `spec` must have been set.
class CompileVisitor : public BoardSectionVisitor {
  public:
    CompileVisitor(BaseVisitor* parent, BoardSpec* spec);

    using BoardSectionVisitor::VisitEnter;
    bool VisitEnter(const XMLElement& elem, const XMLAttribute* first_attribute) override;

    // The boolean of the attribute `additional_args`, true for an empty text. Any other text is reported, and
    // false.
    bool has_additional_args(const XMLElement& elem, const std::string& value);

  private:
    struct Part;

    static Rows elements();
    static const Part* find_part(std::string_view element);

    bool visit_compile_elem(const XMLElement& elem);
    bool leave_compile_elem(const XMLElement& elem);
    bool visit_auto_migration_elem(const XMLElement& elem);
    bool leave_auto_migration_elem(const XMLElement& elem);
    bool visit_auto_migration_single_elem(const XMLElement& elem);
    template <auto set_cmd, auto set_additional_args>
    bool visit_command(const XMLElement& elem);
    bool leave_part(const XMLElement& elem);
    void add_config(const std::string& name);
    bool has_named_configs() const;

    CompileConfig* m_config = nullptr; // the one that is being read; the board owns it
};

// The configuration that a document of version 0.9 stands for.
std::unique_ptr<CompileConfig> make_default_compile_config();

} // namespace zan::board::xml
