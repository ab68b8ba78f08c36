// The visitors of a board's simple sections: device, host, channels and interfaces.
#pragma once

#include "BoardVisitor.h"

namespace zan::board::xml {

class DeviceVisitor : public BoardSectionVisitor {
  public:
    DeviceVisitor(BaseVisitor* parent, BoardSpec* spec) : BoardSectionVisitor(parent, spec) {}

    using BaseVisitor::VisitEnter;
    using BaseVisitor::VisitExit;
    bool VisitEnter(const XMLElement& elem, const XMLAttribute* first_attribute) override;
    bool VisitExit(const XMLElement& elem) override;

  private:
    bool visit_device_elem(const XMLElement& elem);
    bool visit_used_resources_elem(const XMLElement& elem);
    bool visit_used_resources_single_elem(const XMLElement& elem);
    bool leave_used_resources(const XMLElement& elem);
};

class HostVisitor : public BoardSectionVisitor {
  public:
    HostVisitor(BaseVisitor* parent, BoardSpec* spec) : BoardSectionVisitor(parent, spec) {}

    using BaseVisitor::VisitEnter;
    using BaseVisitor::VisitExit;
    bool VisitEnter(const XMLElement& elem, const XMLAttribute* first_attribute) override;
    bool VisitExit(const XMLElement& elem) override;

  private:
    struct KernelConfig;

    bool visit_host_elem(const XMLElement& elem);
    bool visit_kernel_config_elem(const XMLElement& elem);
    bool check_size(const XMLElement& elem, const KernelConfig& config);
};

class ChannelsVisitor : public BoardSectionVisitor {
  public:
    ChannelsVisitor(BaseVisitor* parent, BoardSpec* spec) : BoardSectionVisitor(parent, spec) {}

    using BaseVisitor::VisitEnter;
    using BaseVisitor::VisitExit;
    bool VisitEnter(const XMLElement& elem, const XMLAttribute* first_attribute) override;
    bool VisitExit(const XMLElement& elem) override;

  private:
    bool visit_channels_elem(const XMLElement& elem);
    bool visit_interface_elem(const XMLElement& elem);
    bool check_channel_ids(const XMLElement& elem);
};

class InterfacesVisitor : public BoardSectionVisitor {
  public:
    InterfacesVisitor(BaseVisitor* parent, BoardSpec* spec) : BoardSectionVisitor(parent, spec) {}

    using BaseVisitor::VisitEnter;
    using BaseVisitor::VisitExit;
    bool VisitEnter(const XMLElement& elem, const XMLAttribute* first_attribute) override;
    bool VisitExit(const XMLElement& elem) override;

  private:
    bool visit_interfaces_elem(const XMLElement& elem);
    bool visit_interface_elem(const XMLElement& elem);
    bool visit_kernel_clk_reset_elem(const XMLElement& elem);
};

} // namespace zan::board::xml
