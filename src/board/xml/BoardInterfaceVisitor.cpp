// SPDX-License-Identifier: Apache-2.0
#include "BoardInterfaceVisitor.h"

#include "BaseAttributeTable.h"
#include "BoardPortVisitor.h"

namespace zan::board::xml {

using zan::xml::any_name;
using zan::xml::anywhere;
using zan::xml::AttributeRow;
using zan::xml::AttributeState;
using zan::xml::booleans;
using zan::xml::call;
using zan::xml::check_attributes;
using zan::xml::is_positive;
using zan::xml::outermost;
using zan::xml::read_if;
using zan::xml::read_rows;
using zan::xml::read_to;
using zan::xml::read_word;
using zan::xml::skip;
using zan::xml::unsigned64_hex;
using zan::xml::Word;
using enum zan::xml::AttributeNeed;
using enum zan::xml::Occurrence;

namespace {

using I = Interface;
using InterfaceRow = AttributeRow<BaseVisitor, Interface>;

constexpr Word<I::Type> types[] = {
    {"agent", I::Agent},           {"slave", I::Agent}, {"host", I::Host},
    {"master", I::Host},           {"irq", I::Irq},     {"streamsource", I::StreamSource},
    {"streamsink", I::StreamSink},
};
constexpr Word<I::LatencyType> latency_types[] = {
    {"average", I::Average},
    {"fixed", I::Fixed},
};
constexpr Word<unsigned int> cra_wrapper_types[] = {
    {"high_fmax", I::cra_wrapper_high_fmax},
    {"low_latency", I::cra_wrapper_low_latency},
};

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

// The order of both tables is that of the reading, and so of the errors. The ports are read between them: one
// that an attribute names comes before those of child elements.
constexpr InterfaceRow name_and_port[] = {
    {"name", required, read_to<&I::set_name>},
    {"port", optional, read_to<add_attribute_port>},
};

// Some messages on booleans list the valid values and some don't. Tools know these texts.
constexpr InterfaceRow other_attributes[] = {
    {"type", required, read_word<types, &I::set_type>, "Unrecognized Lumen interface type '{}'."},
    {"width", optional, read_if<is_positive, &I::set_data_width>, "Data width must be > 0."},
    {"maxburst", optional, read_if<is_positive, &I::set_max_burst_count>, "Max burst count must be > 0."},
    {"address", optional, read_to<&I::set_address, unsigned64_hex>},
    {"size", optional, read_if<is_positive, &I::set_size, unsigned64_hex>, "Interface size must be > 0."},
    {"chan_id", optional, read_to<&I::set_chan_id>},
    {"enable", optional, read_to<&I::set_enable>},
    {"clock", optional, read_to<&I::set_clock>},
    {"misc", optional, read_to<set_given_misc>},
    {"latency", optional, read_to<set_given_latency>},
    {"latency_type", optional, read_word<latency_types, &I::set_latency_type>,
     "Unrecognized latency type in Lumen interface '{}'."},
    {"waitrequest", optional, read_to<&I::set_waitrequest>},
    {"waitrequest_allowance", optional, read_to<&I::set_waitrequest_allowance>},
    {"bsp_lmnmm_write_ack", optional, read_to<set_write_ack>},
    {"addpipe", optional, read_to<&I::set_addpipe>},
    {"sampling_rate", optional, read_if<is_positive, &I::set_sampling_rate>,
     "Interface sampling rate must be > 0."},
    {"hostpipe", optional, read_word<booleans, &I::set_hostpipe>,
     "Unrecognized hostpipe setting in Lumen interface '{}'."},
    {"max_buffer_depth", optional, read_to<&I::set_max_buffer_depth>},
    {"uses_packets", optional, read_word<booleans, &I::set_uses_packets>,
     "Unrecognized uses_packets setting in Lumen interface '{}'; valid values are 'true' and 'false'."},
    {"uses_empty", optional, read_word<booleans, &I::set_uses_empty>,
     "Unrecognized uses_empty setting in Lumen interface '{}'; valid values are 'true' and 'false'."},
    {"bits_per_symbol", optional, read_to<&I::set_bits_per_symbol>},
    {"stall_free", optional, read_word<booleans, &I::set_stall_free>,
     "Unrecognized stall_free setting in Lumen interface '{}'; valid values are 'true' and 'false'."},
    {"ready_latency", optional, read_to<&I::set_ready_latency>},
    {"first_symbol_in_high_order_bits", optional,
     read_word<booleans, &I::set_first_symbol_in_high_order_bits>,
     "Unrecognized first_symbol_in_high_order_bits setting in Lumen interface '{}';"
     " valid values are 'true' and 'false'."},
    {"conduit", optional, read_word<booleans, &I::set_conduit>,
     "Unrecognized conduit setting in Lumen interface '{}'."},
    {"interrupt_on_write", optional, read_word<booleans, &I::set_interrupt_on_write>,
     "Unrecognized interrupt_on_write setting in Lumen interface '{}'."},
    {"used_for_streaming_control", optional, read_word<booleans, &I::set_used_for_streaming_control>,
     "Unrecognized used_for_streaming_control setting in Lumen interface '{}'."},
    {"allow_true_byte_width", optional, read_word<booleans, &I::set_allow_true_byte_width>,
     "Unrecognized allow_true_byte_width setting in Lumen interface '{}'."},
    {"cra_wrapper_type", optional, read_word<cra_wrapper_types, &I::set_cra_wrapper_type>,
     "Unrecognized cra_wrapper_type setting in Lumen interface '{}'."},
};

} // namespace

InterfaceVisitor::InterfaceVisitor(BaseVisitor* parent) : TableVisitor(elements(), parent) {
}

// The element that the walk began at is the interface, whatever its name.
InterfaceVisitor::Rows InterfaceVisitor::elements() {
    static constexpr ElementRow rows[] = {
        {any_name, outermost, any, call<&InterfaceVisitor::visit_lmn_interface_elem>},
        {"port", anywhere, any, skip},
    };
    return rows;
}

bool InterfaceVisitor::visit_lmn_interface_elem(const XMLElement& elem) {
    if (!check_attributes(*this, elem, other_attributes, {"name", "port"}))
        return false;
    m_intf = std::make_unique<Interface>();
    return read_rows(*this, elem, name_and_port, *m_intf) == AttributeState::good && read_ports(elem) &&
           read_rows(*this, elem, other_attributes, *m_intf) == AttributeState::good;
}

bool InterfaceVisitor::read_ports(const XMLElement& elem) {
    PortVisitor child(this, m_intf.get());
    hand_over(elem, &child);
    return !m_has_error;
}

bool InterfaceVisitor::VisitExit(const XMLElement& elem) {
    if (!m_intf)
        return TableVisitor::VisitExit(elem);
    // The texts end in a blank, and the first names no interface. Tools know these texts.
    if (m_intf->get_num_ports() == 0)
        return report_attr_error(elem, "port", "At least one port is required in interface ");
    if (m_intf->get_uses_empty() && !m_intf->get_uses_packets())
        return report_attr_error(
            elem, "uses_empty",
            "The uses_packets attribute must be set to 'true' if uses_empty is set to 'true' ");
    if (m_intf->get_stall_free() && m_intf->get_ready_latency() != 0)
        return report_attr_error(elem, "stall_free",
                                 "The ready_latency attribute must be zero if stall_free is set to 'true' ");
    return TableVisitor::VisitExit(elem);
}

} // namespace zan::board::xml
