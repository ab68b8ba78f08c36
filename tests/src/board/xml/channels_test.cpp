// SPDX-License-Identifier: Apache-2.0
// Channels: their interfaces and identifiers.
#include "board_document.h"

namespace zan::test {
namespace {

// A channel with these attributes in place of, or beside, the good ones.
std::string channel(const std::string& attributes) {
    return "<interface name='n' port='p' type='streamsource' width='8' " + attributes + "/>";
}

INSTANTIATE_TEST_SUITE_P(
    Channels, BoardFault,
    testing::Values(
        FaultCase{"StrayAttribute",
                  [](D& d) { d.channels = "<channels x=''/>"; },
                  {at_line(6, "Unexpected attribute 'x'.")}},
        FaultCase{"ChannelsInChannels",
                  [](D& d) { d.channels = "<channels><channels/></channels>"; },
                  {at_line(6, "Unexpected element 'channels'.")}},
        FaultCase{"StrayElement",
                  [](D& d) { d.channels = "<channels><x/></channels>"; },
                  {at_line(6, "Unexpected element 'x'.")}},
        FaultCase{"NoName",
                  [](D& d) {
                      d.channels = "<channels><interface port='' type='' width='' chan_id=''/></channels>";
                  },
                  {at_line(6, "Expected attribute 'name' on element 'interface'.")}},
        FaultCase{"NoPort",
                  [](D& d) {
                      d.channels = "<channels><interface name='' type='' width='' chan_id=''/></channels>";
                  },
                  {at_line(6, "Expected attribute 'port' on element 'interface'.")}},
        FaultCase{"NoType",
                  [](D& d) {
                      d.channels = "<channels><interface name='' port='' width='' chan_id=''/></channels>";
                  },
                  {at_line(6, "Expected attribute 'type' on element 'interface'.")}},
        FaultCase{
            "NoWidth",
            [](D& d) { d.channels = "<channels><interface name='' port='' type='' chan_id=''/></channels>"; },
            {at_line(6, "Expected attribute 'width' on element 'interface'.")}},
        FaultCase{"NoId",
                  [](D& d) { d.channels = "<channels>" + channel("") + "</channels>"; },
                  {at_line(6, "Expected attribute 'chan_id' on element 'interface'.")}},
        FaultCase{"NoneAtAll",
                  [](D& d) { d.channels = "<channels><interface/></channels>"; },
                  {at_line(6, "Expected attribute 'name' on element 'interface'.")}},
        FaultCase{"NoStream",
                  [](D& d) {
                      d.channels =
                          "<channels>\n<interface name='n' port='p' type='agent' width='8' "
                          "chan_id='c'/></channels>";
                  },
                  {at_line(7, "Channel interface must be a stream.")}},
        FaultCase{"EmptyId",
                  [](D& d) { d.channels = "<channels>\n" + channel("chan_id=''") + "</channels>"; },
                  {at_line(6, "Empty channel ID name.")}},
        FaultCase{"OneIdTwice",
                  [](D& d) {
                      d.channels = "<channels>" + channel("chan_id='a'") + channel("chan_id='b'") +
                                   channel("chan_id='a'") + "</channels>";
                  },
                  {at_line(6, "Two or more channels share the same channel ID.")}},
        // Channels name their port in the attribute.
        FaultCase{"PortElement",
                  [](D& d) {
                      d.channels =
                          "<channels><interface name='n' port='p' type='streamsource' width='8' "
                          "chan_id='c'>\n<port name='x' direction='r'/></interface></channels>";
                  },
                  {at_line(7, "Unexpected element 'port'.")}}),
    name_of);

TEST(BoardChannels, ChannelsStandInTheOrderOfTheFile) {
    BoardDocument document;
    document.channels = "<channels>" + channel("chan_id='b'") + channel("chan_id='a'") + "</channels>";
    const auto spec = load_good(document);
    const auto& channels = spec->get_channel_config();
    ASSERT_EQ(channels.get_num_intfs(), 2u);
    EXPECT_EQ(channels.get_intf(0).get_chan_id(), "b");
    EXPECT_EQ(channels.get_intf(1).get_chan_id(), "a");
    EXPECT_EQ(channels.get_intf(0).get_type(), board::Interface::StreamSource);
}

} // namespace
} // namespace zan::test
