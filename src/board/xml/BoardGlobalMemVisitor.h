// The visitor of a board's global memory.
#pragma once

#include "BoardVisitor.h"

namespace zan::board::xml {

class GlobalMemVisitor : public BoardSectionVisitor {
  public:
    GlobalMemVisitor(BaseVisitor* parent, BoardSpec* spec) : BoardSectionVisitor(parent, spec) {}

    using BaseVisitor::VisitEnter;
    using BaseVisitor::VisitExit;
    bool VisitEnter(const XMLElement& elem, const XMLAttribute* first_attribute) override;
    bool VisitExit(const XMLElement& elem) override;

  private:
    // How the reading of the attributes ended; `failed` where one is missing or not of its type.
    enum class Reading { done, failed, refused };

    bool visit_global_mem_elem(const XMLElement& elem);
    bool visit_interface_elem(const XMLElement& elem);
    bool pass_over(const XMLElement& elem);

    bool add_memory(const XMLElement& elem);
    Reading read_values(const XMLElement& elem);
    bool set_max_bandwidth(const XMLElement& elem, float bandwidth);
    bool read_lists(const XMLElement& elem);
    bool read_allocation_type(const XMLElement& elem);
    bool read_type(const XMLElement& elem);
    bool read_interleaving_and_name(const XMLElement& elem);
    bool read_id(const XMLElement& elem);
    bool check_names(const XMLElement& elem);
    bool read_config_addr(const XMLElement& elem);
    bool check_interfaces(const XMLElement& elem);

    GlobalMemConfig* m_gmem = nullptr; // the one that is being read; the board owns it
};

} // namespace zan::board::xml
