// The visitor of a board's compile configuration. What the element must hold depends on the document's
// version.
#pragma once

#include "BoardVisitor.h"

namespace zan::board::xml {

class CompileVisitor : public BoardSectionVisitor {
  public:
    CompileVisitor(BaseVisitor* parent, BoardSpec* spec) : BoardSectionVisitor(parent, spec) {}

    using BaseVisitor::VisitEnter;
    using BaseVisitor::VisitExit;
    bool VisitEnter(const XMLElement& elem, const XMLAttribute* first_attribute) override;
    bool VisitExit(const XMLElement& elem) override;

    // What the attribute `additional_args` says. Any text that is no boolean is reported, and gives false.
    bool has_additional_args(const XMLElement& elem, const std::string& value);

  private:
    struct Compile;
    struct Part;

    static const Part* find_part(std::string_view element);

    bool visit_compile_elem(const XMLElement& elem);
    bool visit_auto_migration_elem(const XMLElement& elem);
    bool visit_auto_migration_single_elem(const XMLElement& elem);
    bool read_generic_kernel(const XMLElement& elem);
    template <auto set_cmd, auto set_additional_args>
    bool visit_command(const XMLElement& elem);
    void add_config(const std::string& name);
    bool leave_compile_elem(const XMLElement& elem);
    bool leave_auto_migration_elem(const XMLElement& elem);
    bool has_named_configs() const;

    CompileConfig* m_config = nullptr; // the one that is being read; the board owns it
};

// The configuration that a document of version 0.9 stands for.
std::unique_ptr<CompileConfig> make_default_compile_config();

} // namespace zan::board::xml
