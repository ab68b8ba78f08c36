#include "BoardDeviceVisitor.h"

#include <unordered_set>

#include "BaseAttributeTable.h"
#include "contract.h"

namespace zan::board::xml {

using dmodel::DeviceResources;
using zan::xml::AttributeRow;
using zan::xml::check_attributes;
using zan::xml::read_attributes;
using enum zan::xml::AttributeNeed;

namespace {

bool is_named(const XMLElement& elem, std::string_view name) {
    return elem.Value() == name;
}

} // namespace

// ---- device

bool DeviceVisitor::VisitEnter(const XMLElement& elem, const XMLAttribute* first_attribute) {
    static constexpr ElementHandler<DeviceVisitor> handlers[] = {
        {"device", &DeviceVisitor::visit_device_elem},
        {"used_resources", &DeviceVisitor::visit_used_resources_elem},
    };
    BaseVisitor::VisitEnter(elem, first_attribute);
    const bool is_section = is_named(elem, "device") || is_named(elem, "used_resources");
    if (!is_section && check_element_stack(2, "device", "used_resources"))
        return visit_used_resources_single_elem(elem);
    return visit_by_name(this, elem, handlers);
}

bool DeviceVisitor::visit_device_elem(const XMLElement& elem) {
    struct Device {
        std::string device_model;
    };
    static constexpr AttributeRow<DeviceVisitor, Device> rows[] = {
        {"device_model", &Device::device_model, required},
    };
    if (!report_unexpected_elem_stack(elem, 0) || !report_unexpected_elem_stack_count(elem, 1) ||
        !check_attributes(*this, elem, rows))
        return !m_has_error;
    ZAN_CONTRACT(!m_spec->has_device_config(), "!m_spec->has_device_config()");
    Device device;
    if (!read_attributes(*this, elem, rows, device))
        return !m_has_error;
    auto config = std::make_unique<DeviceConfig>();
    config->set_device_model(device.device_model);
    m_spec->set_device_config(config.release());
    return !m_has_error;
}

bool DeviceVisitor::visit_used_resources_elem(const XMLElement& elem) {
    if (!report_unexpected_elem_stack(elem, 1, "device") || !report_unexpected_elem_stack_count(elem, 1) ||
        !report_unexpected_attrs(elem, 0))
        return !m_has_error;
    DeviceConfig& device = m_spec->get_device_config();
    ZAN_CONTRACT(!device.has_used_resources(), "!device.has_used_resources()");
    device.set_used_resources(new DeviceResources);
    return !m_has_error;
}

bool DeviceVisitor::visit_used_resources_single_elem(const XMLElement& elem) {
    struct Count {
        unsigned int num = 0;
    };
    struct Resource {
        std::string_view element;
        unsigned int DeviceResources::*count;
        unsigned int times;
    };
    static constexpr AttributeRow<DeviceVisitor, Count> rows[] = {{"num", &Count::num, required}};
    static constexpr Resource resources[] = {
        {"lcells", &DeviceResources::les, 2}, {"les", &DeviceResources::les, 1},
        {"ffs", &DeviceResources::ffs, 1},    {"dsps", &DeviceResources::dsps, 1},
        {"rams", &DeviceResources::rams, 1},
    };
    Count count;
    if (!report_unexpected_elem_stack(elem, 2, "device", "used_resources") ||
        !report_unexpected_elem_stack_count(elem, 1) || !check_attributes(*this, elem, rows) ||
        !read_attributes(*this, elem, rows, count))
        return !m_has_error;
    for (const Resource& resource : resources) {
        if (is_named(elem, resource.element)) {
            m_spec->get_device_config().get_used_resources().*resource.count = resource.times * count.num;
            return !m_has_error;
        }
    }
    return report_unexpected_elem(elem, "");
}

bool DeviceVisitor::VisitExit(const XMLElement& elem) {
    if (!m_has_error && is_named(elem, "device") && !m_spec->get_device_config().has_used_resources())
        return report_error(elem, "Used device resources (<used_resources>) must be defined.");
    if (!m_has_error && is_named(elem, "used_resources") && !leave_used_resources(elem))
        return !m_has_error;
    return BaseVisitor::VisitExit(elem);
}

// Whether the base may leave the element. With both <lcells> and <les> it may not, though nothing is
// reported: the process then stops where `device` is left.
bool DeviceVisitor::leave_used_resources(const XMLElement& elem) {
    const auto count = [&](const char* name) {
        return get_element_count(3, "device", "used_resources", name);
    };
    const auto is_there_once = [&](const char* name) {
        return report_unexpected_elem_count(elem, 1, 3, "device", "used_resources", name);
    };
    if (!is_there_once("ffs") || !is_there_once("dsps") || !is_there_once("rams"))
        return false;
    if (count("les") + count("lcells") == 1)
        return true;
    is_there_once("lcells");
    return false;
}

// ---- host

struct HostVisitor::KernelConfig {
    zan::xml::unsigned_hex start;
    zan::xml::unsigned_hex size;
};

bool HostVisitor::VisitEnter(const XMLElement& elem, const XMLAttribute* first_attribute) {
    static constexpr ElementHandler<HostVisitor> handlers[] = {
        {"host", &HostVisitor::visit_host_elem},
        {"kernel_config", &HostVisitor::visit_kernel_config_elem},
    };
    BaseVisitor::VisitEnter(elem, first_attribute);
    return visit_by_name(this, elem, handlers);
}

bool HostVisitor::visit_host_elem(const XMLElement& elem) {
    if (!report_unexpected_elem_stack(elem, 0) || !report_unexpected_elem_stack_count(elem, 1) ||
        !report_unexpected_attrs(elem, 0))
        return !m_has_error;
    ZAN_CONTRACT(!m_spec->has_host_config(), "!m_spec->has_host_config()");
    m_spec->set_host_config(new HostConfig);
    return !m_has_error;
}

bool HostVisitor::check_size(const XMLElement& elem, const KernelConfig& config) {
    return config.size > 0 ||
           report_attr_error(elem, "size", "Kernel configuration size expected to be > 0.");
}

bool HostVisitor::visit_kernel_config_elem(const XMLElement& elem) {
    static constexpr AttributeRow<HostVisitor, KernelConfig> rows[] = {
        {"start", &KernelConfig::start, required},
        {"size", &KernelConfig::size, required, nullptr, &HostVisitor::check_size},
    };
    KernelConfig config;
    if (!report_unexpected_elem_stack(elem, 1, "host") || !report_unexpected_elem_stack_count(elem, 1) ||
        !check_attributes(*this, elem, rows) || !read_attributes(*this, elem, rows, config))
        return !m_has_error;
    m_spec->get_host_config().set_start(config.start);
    m_spec->get_host_config().set_kernel_config_size(config.size);
    return !m_has_error;
}

bool HostVisitor::VisitExit(const XMLElement& elem) {
    if (!m_has_error && is_named(elem, "host") && m_spec->get_host_config().get_kernel_config_size() == 0)
        return report_error("Missing kernel configuration (<kernel_config>) in host specification (<host>).");
    return BaseVisitor::VisitExit(elem);
}

// ---- channels

bool ChannelsVisitor::VisitEnter(const XMLElement& elem, const XMLAttribute* first_attribute) {
    static constexpr ElementHandler<ChannelsVisitor> handlers[] = {
        {"channels", &ChannelsVisitor::visit_channels_elem},
        {"interface", &ChannelsVisitor::visit_interface_elem},
    };
    BaseVisitor::VisitEnter(elem, first_attribute);
    return visit_by_name(this, elem, handlers);
}

bool ChannelsVisitor::visit_channels_elem(const XMLElement& elem) {
    if (!report_unexpected_elem_stack(elem, 0) || !report_unexpected_attrs(elem, 0))
        return !m_has_error;
    ZAN_CONTRACT(!m_spec->has_channel_config(), "!m_spec->has_channel_config()");
    m_spec->set_channel_config(new ChannelConfig);
    return !m_has_error;
}

bool ChannelsVisitor::visit_interface_elem(const XMLElement& elem) {
    if (!report_unexpected_elem_stack(elem, 1, "channels") ||
        !require_attributes(elem, {"name", "port", "type", "width", "chan_id"}))
        return !m_has_error;
    auto intf = read_interface(elem);
    if (!intf)
        return !m_has_error;
    if (intf->get_type() != Interface::StreamSource && intf->get_type() != Interface::StreamSink)
        return report_error(elem, "Channel interface must be a stream.");
    m_spec->get_channel_config().add_interface(intf.release());
    return !m_has_error;
}

bool ChannelsVisitor::check_channel_ids(const XMLElement& elem) {
    const ChannelConfig& channels = m_spec->get_channel_config();
    std::unordered_set<std::string> seen;
    for (unsigned int i = 0; i < channels.get_num_intfs(); ++i) {
        const std::string& id = channels.get_intf(i).get_chan_id();
        if (id.empty())
            return report_error(elem, "Empty channel ID name.");
        if (!seen.insert(id).second)
            return report_error(elem, "Two or more channels share the same channel ID.");
    }
    return true;
}

bool ChannelsVisitor::VisitExit(const XMLElement& elem) {
    if (!m_has_error && is_named(elem, "channels") && !check_channel_ids(elem))
        return false;
    return BaseVisitor::VisitExit(elem);
}

// ---- interfaces

bool InterfacesVisitor::VisitEnter(const XMLElement& elem, const XMLAttribute* first_attribute) {
    static constexpr ElementHandler<InterfacesVisitor> handlers[] = {
        {"interfaces", &InterfacesVisitor::visit_interfaces_elem},
        {"interface", &InterfacesVisitor::visit_interface_elem},
        {"kernel_clk_reset", &InterfacesVisitor::visit_kernel_clk_reset_elem},
    };
    BaseVisitor::VisitEnter(elem, first_attribute);
    return visit_by_name(this, elem, handlers);
}

bool InterfacesVisitor::visit_interfaces_elem(const XMLElement& elem) {
    if (!report_unexpected_elem_stack(elem, 0) || !report_unexpected_attrs(elem, 0))
        return !m_has_error;
    ZAN_CONTRACT(!m_spec->has_interface_config(), "!m_spec->has_interface_config()");
    m_spec->set_interface_config(new InterfaceConfig);
    return !m_has_error;
}

bool InterfacesVisitor::visit_interface_elem(const XMLElement& elem) {
    if (!report_unexpected_elem_stack(elem, 1, "interfaces"))
        return !m_has_error;
    if (auto intf = read_interface(elem))
        m_spec->get_interface_config().add_interface(intf.release());
    return !m_has_error;
}

bool InterfacesVisitor::visit_kernel_clk_reset_elem(const XMLElement& elem) {
    struct Signals {
        std::string clk;
        std::string clk2x;
        std::string reset;
    };
    static constexpr AttributeRow<InterfacesVisitor, Signals> rows[] = {
        {"clk", &Signals::clk, required},
        {"clk2x", &Signals::clk2x, optional},
        {"reset", &Signals::reset, required},
    };
    if (!report_unexpected_elem_stack(elem, 1, "interfaces") ||
        !report_unexpected_elem_stack_count(elem, 1) || !check_attributes(*this, elem, rows))
        return !m_has_error;
    InterfaceConfig& interfaces = m_spec->get_interface_config();
    ZAN_CONTRACT(!interfaces.has_kernel_clk_reset(), "!interfaces.has_kernel_clk_reset()");
    Signals signals;
    if (!read_attributes(*this, elem, rows, signals))
        return !m_has_error;
    auto clk_reset = std::make_unique<KernelClkReset>();
    clk_reset->set_clk(signals.clk);
    clk_reset->set_clk2x(signals.clk2x);
    clk_reset->set_reset(signals.reset);
    interfaces.set_kernel_clk_reset(clk_reset.release());
    return !m_has_error;
}

bool InterfacesVisitor::VisitExit(const XMLElement& elem) {
    if (!m_has_error && is_named(elem, "interfaces") &&
        !m_spec->get_interface_config().has_kernel_clk_reset())
        return report_error("Missing kernel clock-reset interface (<kernel_clk_reset>).");
    return BaseVisitor::VisitExit(elem);
}

} // namespace zan::board::xml
