#include "BoardInterfaceVisitor.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>

#include "contract.h"

namespace zan::board::xml {

using zan::xml::unsigned64_hex;

namespace {

template <typename Value>
struct Word {
    std::string_view text;
    Value value;
};

constexpr Word<Interface::Type> types[] = {
    {"agent", Interface::Agent},
    {"slave", Interface::Agent},
    {"host", Interface::Host},
    {"master", Interface::Host},
    {"irq", Interface::Irq},
    {"streamsource", Interface::StreamSource},
    {"streamsink", Interface::StreamSink},
};
constexpr Word<Interface::LatencyType> latency_types[] = {
    {"average", Interface::Average},
    {"fixed", Interface::Fixed},
};
constexpr Word<unsigned int> cra_wrapper_types[] = {
    {"high_fmax", Interface::cra_wrapper_high_fmax},
    {"low_latency", Interface::cra_wrapper_low_latency},
};
constexpr Word<bool> booleans[] = {{"true", true}, {"false", false}};

void add_attribute_port(Interface& intf, const std::string& name) {
    intf.add_port(name, Port::ReadWrite);
}

void set_given_misc(Interface& intf, unsigned int misc) {
    intf.set_misc(misc);
    intf.set_has_misc(true);
}

void set_given_latency(Interface& intf, unsigned int latency) {
    intf.set_latency(latency);
    intf.set_has_latency(true);
}

void set_write_ack(Interface& intf, unsigned int ack) {
    intf.set_bsp_lmnmm_write_ack(ack != 0);
}

} // namespace

// A step of reading an interface.
struct InterfaceVisitor::Row {
    const char* name; // of the attribute; null if the step reads none
    bool (InterfaceVisitor::*read)(const XMLElement& elem, const Row& row);
    bool is_required = false;
    const char* message = nullptr; // what a bad value gets; {} stands for the value
};

bool InterfaceVisitor::VisitEnter(const XMLElement& elem, const XMLAttribute* first_attribute) {
    BaseVisitor::VisitEnter(elem, first_attribute);
    if (m_elem_stack.size() == 1)
        return visit_lmn_interface_elem(elem);
    if (std::string_view(elem.Value()) == "port")
        return false; // read already
    return report_unexpected_elem(elem, "");
}

template <typename Value, auto setter>
bool InterfaceVisitor::read_value(const XMLElement& elem, const Row& row) {
    Value value{};
    if (!query_attribute(elem, row.name, &value, true, true))
        return false;
    std::invoke(setter, *m_intf, value);
    return true;
}

template <typename Value, auto setter>
bool InterfaceVisitor::read_positive(const XMLElement& elem, const Row& row) {
    Value value{};
    if (!query_attribute(elem, row.name, &value, true, true))
        return false;
    if (!(value > 0)) // a NaN isn't either
        return report_attr_error(elem, row.name, row.message);
    std::invoke(setter, *m_intf, value);
    return true;
}

template <const auto& words, auto setter>
bool InterfaceVisitor::read_word(const XMLElement& elem, const Row& row) {
    std::string text;
    if (!query_attribute(elem, row.name, &text, true, true))
        return false;
    const auto found =
        std::find_if(std::begin(words), std::end(words), [&](const auto& word) { return word.text == text; });
    if (found == std::end(words))
        return report_attr_error(elem, row.name, fmt::format(fmt::runtime(row.message), text));
    std::invoke(setter, *m_intf, found->value);
    return true;
}

bool InterfaceVisitor::read_ports(const XMLElement& elem, const Row&) {
    PortVisitor child(this, m_intf.get());
    hand_over(elem, &child);
    return !m_has_error;
}

// The order is that of the reading, and so of the errors. Of the yes-or-no words some tell the valid values
// and some don't.
bool InterfaceVisitor::visit_lmn_interface_elem(const XMLElement& elem) {
    using Self = InterfaceVisitor;
    using I = Interface;
    static constexpr Row rows[] = {
        {"name", &Self::read_value<std::string, &I::set_name>, true},
        {"port", &Self::read_value<std::string, add_attribute_port>},
        {nullptr, &Self::read_ports},
        {"type", &Self::read_word<types, &I::set_type>, true, "Unrecognized Lumen interface type '{}'."},
        {"width", &Self::read_positive<unsigned int, &I::set_data_width>, false, "Data width must be > 0."},
        {"maxburst", &Self::read_positive<unsigned int, &I::set_max_burst_count>, false,
         "Max burst count must be > 0."},
        {"address", &Self::read_value<unsigned64_hex, &I::set_address>},
        {"size", &Self::read_positive<unsigned64_hex, &I::set_size>, false, "Interface size must be > 0."},
        {"chan_id", &Self::read_value<std::string, &I::set_chan_id>},
        {"enable", &Self::read_value<std::string, &I::set_enable>},
        {"clock", &Self::read_value<std::string, &I::set_clock>},
        {"misc", &Self::read_value<unsigned int, set_given_misc>},
        {"latency", &Self::read_value<unsigned int, set_given_latency>},
        {"latency_type", &Self::read_word<latency_types, &I::set_latency_type>, false,
         "Unrecognized latency type in Lumen interface '{}'."},
        {"waitrequest", &Self::read_value<unsigned int, &I::set_waitrequest>},
        {"waitrequest_allowance", &Self::read_value<unsigned int, &I::set_waitrequest_allowance>},
        {"bsp_lmnmm_write_ack", &Self::read_value<unsigned int, set_write_ack>},
        {"addpipe", &Self::read_value<unsigned int, &I::set_addpipe>},
        {"sampling_rate", &Self::read_positive<float, &I::set_sampling_rate>, false,
         "Interface sampling rate must be > 0."},
        {"hostpipe", &Self::read_word<booleans, &I::set_hostpipe>, false,
         "Unrecognized hostpipe setting in Lumen interface '{}'."},
        {"max_buffer_depth", &Self::read_value<unsigned int, &I::set_max_buffer_depth>},
        {"uses_packets", &Self::read_word<booleans, &I::set_uses_packets>, false,
         "Unrecognized uses_packets setting in Lumen interface '{}'; valid values are 'true' and 'false'."},
        {"uses_empty", &Self::read_word<booleans, &I::set_uses_empty>, false,
         "Unrecognized uses_empty setting in Lumen interface '{}'; valid values are 'true' and 'false'."},
        {"bits_per_symbol", &Self::read_value<unsigned int, &I::set_bits_per_symbol>},
        {"stall_free", &Self::read_word<booleans, &I::set_stall_free>, false,
         "Unrecognized stall_free setting in Lumen interface '{}'; valid values are 'true' and 'false'."},
        {"ready_latency", &Self::read_value<unsigned int, &I::set_ready_latency>},
        {"first_symbol_in_high_order_bits",
         &Self::read_word<booleans, &I::set_first_symbol_in_high_order_bits>, false,
         "Unrecognized first_symbol_in_high_order_bits setting in Lumen interface '{}'; valid values are "
         "'true' and 'false'."},
        {"conduit", &Self::read_word<booleans, &I::set_conduit>, false,
         "Unrecognized conduit setting in Lumen interface '{}'."},
        {"interrupt_on_write", &Self::read_word<booleans, &I::set_interrupt_on_write>, false,
         "Unrecognized interrupt_on_write setting in Lumen interface '{}'."},
        {"used_for_streaming_control", &Self::read_word<booleans, &I::set_used_for_streaming_control>, false,
         "Unrecognized used_for_streaming_control setting in Lumen interface '{}'."},
        {"allow_true_byte_width", &Self::read_word<booleans, &I::set_allow_true_byte_width>, false,
         "Unrecognized allow_true_byte_width setting in Lumen interface '{}'."},
        {"cra_wrapper_type", &Self::read_word<cra_wrapper_types, &I::set_cra_wrapper_type>, false,
         "Unrecognized cra_wrapper_type setting in Lumen interface '{}'."},
    };
    std::vector<std::string> names;
    for (const Row& row : rows) {
        if (row.name)
            names.emplace_back(row.name);
    }
    if (!report_unexpected_elem_stack(elem, 0) || !report_unexpected_attrs(elem, names))
        return !m_has_error;
    m_intf = std::make_unique<Interface>();
    for (const Row& row : rows) {
        const bool is_absent = row.name && !row.is_required && !attribute_exists(elem, row.name);
        if (!is_absent && !(this->*row.read)(elem, row))
            break;
    }
    return !m_has_error;
}

bool InterfaceVisitor::VisitExit(const XMLElement& elem) {
    if (!m_intf)
        return BaseVisitor::VisitExit(elem);
    // The texts end in a blank, and the first names no interface.
    if (m_intf->get_num_ports() == 0)
        return report_attr_error(elem, "port", "At least one port is required in interface ");
    if (m_intf->get_uses_empty() && !m_intf->get_uses_packets())
        return report_attr_error(
            elem, "uses_empty",
            "The uses_packets attribute must be set to 'true' if uses_empty is set to 'true' ");
    if (m_intf->get_stall_free() && m_intf->get_ready_latency() != 0)
        return report_attr_error(elem, "stall_free",
                                 "The ready_latency attribute must be zero if stall_free is set to 'true' ");
    return BaseVisitor::VisitExit(elem);
}

} // namespace zan::board::xml
