// SPDX-License-Identifier: Apache-2.0
#include "BoardChannelsVisitor.h"

#include <unordered_set>

#include "contract.h"

namespace zan::board::xml {

using zan::xml::call;
using zan::xml::outermost;
using enum zan::xml::Occurrence;

ChannelsVisitor::ChannelsVisitor(BaseVisitor* parent, BoardSpec* spec)
    : BoardSectionVisitor(elements(), parent, spec) {
}

// A channel names its port in an attribute, so a <port> in it is unexpected.
ChannelsVisitor::Rows ChannelsVisitor::elements() {
    using Self = ChannelsVisitor;
    static constexpr ElementRow rows[] = {
        {"channels", outermost, any, call<&Self::visit_channels_elem>, call<&Self::leave_channels_elem>},
        {"interface", "channels", any, call<&Self::visit_interface_elem>},
    };
    return rows;
}

bool ChannelsVisitor::visit_channels_elem(const XMLElement& elem) {
    if (!expect_no_attributes(elem))
        return false;
    ZAN_CONTRACT(!m_spec->has_channel_config(), "!m_spec->has_channel_config()");
    m_spec->set_channel_config(new ChannelConfig);
    return true;
}

bool ChannelsVisitor::visit_interface_elem(const XMLElement& elem) {
    if (!require_attributes(elem, {"name", "port", "type", "width", "chan_id"}))
        return false;
    auto intf = read_interface(elem);
    if (!intf)
        return false;
    if (intf->get_type() != Interface::StreamSource && intf->get_type() != Interface::StreamSink)
        return report_error(elem, "Channel interface must be a stream.");
    m_spec->get_channel_config().add_interface(intf.release());
    return true;
}

// Kernels connect to channels by these identifiers, so each has one and no two are equal.
bool ChannelsVisitor::leave_channels_elem(const XMLElement& elem) {
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

} // namespace zan::board::xml
