// SPDX-License-Identifier: Apache-2.0
// Interfaces and their ports, as they stand in a document.
#include <functional>

#include "board_document.h"
#include "contract_death.h"

namespace zan::test {
namespace {

using board::Interface;
using board::Port;
using testing::ElementsAre;
using testing::IsEmpty;

// A document whose line 8 is this interface, under `interfaces`.
BoardDocument with_interface(const std::string& element) {
    BoardDocument document;
    document.interfaces = "<interfaces><kernel_clk_reset clk='' reset=''/>\n" + element + "</interfaces>";
    return document;
}

// What only has to be there, and what the test is about.
BoardDocument with_attributes(const std::string& attributes) {
    return with_interface("<interface name='n' port='p' type='irq' " + attributes + "/>");
}

std::unique_ptr<board::BoardSpec> load_attributes(const std::string& attributes) {
    return load_good(with_attributes(attributes));
}

const Interface& only_interface(const board::BoardSpec& spec) {
    return spec.get_interface_config().get_intf(0);
}

struct ValueCase {
    const char* attribute;
    const char* text;
    std::function<bool(const Interface&)> holds;

    friend void PrintTo(const ValueCase& value, std::ostream* os) {
        *os << value.attribute << "='" << value.text << "'";
    }
};

class InterfaceValue : public testing::TestWithParam<ValueCase> {};

TEST_P(InterfaceValue, GoesToItsField) {
    const auto spec = load_attributes(std::string(GetParam().attribute) + "='" + GetParam().text + "'");
    ASSERT_TRUE(spec);
    EXPECT_TRUE(GetParam().holds(only_interface(*spec)));
}

using I = const Interface&;

INSTANTIATE_TEST_SUITE_P(
    Interface, InterfaceValue,
    testing::Values(
        ValueCase{"width", "512", [](I i) { return i.get_data_width() == 512; }},
        ValueCase{"maxburst", "16", [](I i) { return i.get_max_burst_count() == 16; }},
        ValueCase{"address", "0x100000000", [](I i) { return i.get_address() == 0x100000000ull; }},
        ValueCase{"size", "0x200000000", [](I i) { return i.get_size() == 0x200000000ull; }},
        ValueCase{"chan_id", "c", [](I i) { return i.get_chan_id() == "c"; }},
        ValueCase{"enable", "e", [](I i) { return i.get_enable() == "e"; }},
        ValueCase{"clock", "k", [](I i) { return i.get_clock() == "k"; }},
        ValueCase{"misc", "0", [](I i) { return i.get_misc() == 0 && i.get_has_misc(); }},
        ValueCase{"misc", "7", [](I i) { return i.get_misc() == 7 && i.get_has_misc(); }},
        ValueCase{"latency", "240", [](I i) { return i.get_latency() == 240 && i.get_has_latency(); }},
        ValueCase{"latency", "1", [](I i) { return i.get_latency() == 1 && i.get_has_latency(); }},
        ValueCase{"latency_type", "fixed", [](I i) { return i.get_latency_type() == Interface::Fixed; }},
        ValueCase{"latency_type", "average", [](I i) { return i.get_latency_type() == Interface::Average; }},
        ValueCase{"waitrequest", "3", [](I i) { return i.get_waitrequest() == 3; }},
        ValueCase{"waitrequest_allowance", "4", [](I i) { return i.get_waitrequest_allowance() == 4; }},
        ValueCase{"bsp_lmnmm_write_ack", "7", [](I i) { return i.get_bsp_lmnmm_write_ack(); }},
        ValueCase{"bsp_lmnmm_write_ack", "0", [](I i) { return !i.get_bsp_lmnmm_write_ack(); }},
        ValueCase{"addpipe", "2", [](I i) { return i.get_addpipe() == 2; }},
        ValueCase{"sampling_rate", "0.5", [](I i) { return i.get_sampling_rate() == 0.5f; }},
        ValueCase{"hostpipe", "true", [](I i) { return i.get_hostpipe(); }},
        ValueCase{"hostpipe", "false", [](I i) { return !i.get_hostpipe(); }},
        ValueCase{"max_buffer_depth", "0", [](I i) { return i.get_max_buffer_depth() == 0; }},
        ValueCase{"uses_packets", "true", [](I i) { return i.get_uses_packets(); }},
        ValueCase{"bits_per_symbol", "9", [](I i) { return i.get_bits_per_symbol() == 9; }},
        ValueCase{"stall_free", "true", [](I i) { return i.get_stall_free(); }},
        ValueCase{"ready_latency", "5", [](I i) { return i.get_ready_latency() == 5; }},
        ValueCase{"first_symbol_in_high_order_bits", "true",
                  [](I i) { return i.get_first_symbol_in_high_order_bits(); }},
        ValueCase{"conduit", "true", [](I i) { return i.get_conduit(); }},
        ValueCase{"interrupt_on_write", "true", [](I i) { return i.get_interrupt_on_write(); }},
        ValueCase{"used_for_streaming_control", "true",
                  [](I i) { return i.get_used_for_streaming_control(); }},
        ValueCase{"allow_true_byte_width", "true", [](I i) { return i.get_allow_true_byte_width(); }},
        ValueCase{"cra_wrapper_type", "high_fmax", [](I i) { return i.get_cra_wrapper_type() == 1; }},
        ValueCase{"cra_wrapper_type", "low_latency", [](I i) { return i.get_cra_wrapper_type() == 2; }}));

TEST(Interface, WhatIsNotGivenHasItsDefault) {
    const auto spec = load_attributes("");
    const Interface& intf = only_interface(*spec);
    EXPECT_EQ(intf.get_data_width(), 0u);
    EXPECT_EQ(intf.get_max_burst_count(), 1u);
    EXPECT_EQ(intf.get_latency(), 240u);
    EXPECT_FALSE(intf.get_has_latency());
    EXPECT_FALSE(intf.get_has_misc());
    EXPECT_EQ(intf.get_max_buffer_depth(), 32768u);
    EXPECT_EQ(intf.get_bits_per_symbol(), 8u);
    EXPECT_EQ(intf.get_cra_wrapper_type(), 0u);
}

TEST(Interface, BusRolesHaveTwoSpellings) {
    const std::pair<const char*, Interface::Type> words[] = {{"agent", Interface::Agent},
                                                             {"slave", Interface::Agent},
                                                             {"host", Interface::Host},
                                                             {"master", Interface::Host},
                                                             {"irq", Interface::Irq},
                                                             {"streamsource", Interface::StreamSource},
                                                             {"streamsink", Interface::StreamSink}};
    for (const auto& [word, type] : words) {
        const auto spec =
            load_good(with_interface("<interface name='n' port='p' type='" + std::string(word) + "'/>"));
        EXPECT_EQ(only_interface(*spec).get_type(), type) << word;
    }
}

struct AttributeFault {
    const char* attribute;
    const char* text;
    std::string error;

    friend void PrintTo(const AttributeFault& fault, std::ostream* os) {
        *os << fault.attribute << "='" << fault.text << "'";
    }
};

class InterfaceFault : public testing::TestWithParam<AttributeFault> {};

TEST_P(InterfaceFault, IsTheOnlyErrorAtTheLineOfTheAttribute) {
    const std::string attribute = std::string("\n") + GetParam().attribute + "='" + GetParam().text + "'";
    const LoadedBoard loaded = load(with_attributes(attribute));
    EXPECT_THAT(loaded.errors, ElementsAre(at_line(9, GetParam().error)));
    EXPECT_FALSE(loaded.model);
}

std::string wrong_type(const std::string& attribute) {
    return "Incorrect type for attribute '" + attribute + "' on element 'interface'.";
}
std::string form_a(const std::string& attribute, const std::string& value) {
    return "Unrecognized " + attribute + " setting in Lumen interface '" + value + "'.";
}
std::string form_b(const std::string& attribute, const std::string& value) {
    return "Unrecognized " + attribute + " setting in Lumen interface '" + value +
           "'; valid values are 'true' and 'false'.";
}

INSTANTIATE_TEST_SUITE_P(
    Interface, InterfaceFault,
    testing::Values(
        AttributeFault{"width", "0", "Data width must be > 0."},
        AttributeFault{"width", "abc", wrong_type("width")},
        AttributeFault{"maxburst", "0", "Max burst count must be > 0."},
        AttributeFault{"maxburst", "0x1", wrong_type("maxburst")},
        AttributeFault{"address", "x", wrong_type("address")},
        AttributeFault{"size", "0", "Interface size must be > 0."},
        AttributeFault{"size", "", wrong_type("size")}, AttributeFault{"misc", "-1", wrong_type("misc")},
        AttributeFault{"latency", "1.5", wrong_type("latency")},
        AttributeFault{"latency_type", "AVERAGE", "Unrecognized latency type in Lumen interface 'AVERAGE'."},
        AttributeFault{"waitrequest", "x", wrong_type("waitrequest")},
        AttributeFault{"waitrequest_allowance", "x", wrong_type("waitrequest_allowance")},
        AttributeFault{"bsp_lmnmm_write_ack", "true", wrong_type("bsp_lmnmm_write_ack")},
        AttributeFault{"addpipe", "x", wrong_type("addpipe")},
        AttributeFault{"sampling_rate", "0", "Interface sampling rate must be > 0."},
        AttributeFault{"sampling_rate", "-1", "Interface sampling rate must be > 0."},
        AttributeFault{"sampling_rate", "nan", "Interface sampling rate must be > 0."},
        AttributeFault{"sampling_rate", "x", wrong_type("sampling_rate")},
        AttributeFault{"hostpipe", "1", form_a("hostpipe", "1")},
        AttributeFault{"max_buffer_depth", "x", wrong_type("max_buffer_depth")},
        AttributeFault{"uses_packets", "1", form_b("uses_packets", "1")},
        AttributeFault{"uses_empty", "", form_b("uses_empty", "")},
        AttributeFault{"bits_per_symbol", "x", wrong_type("bits_per_symbol")},
        AttributeFault{"stall_free", "yes", form_b("stall_free", "yes")},
        AttributeFault{"ready_latency", "x", wrong_type("ready_latency")},
        AttributeFault{"first_symbol_in_high_order_bits", "TRUE",
                       form_b("first_symbol_in_high_order_bits", "TRUE")},
        AttributeFault{"conduit", "0", form_a("conduit", "0")},
        AttributeFault{"interrupt_on_write", "{}", form_a("interrupt_on_write", "{}")},
        AttributeFault{"used_for_streaming_control", "no", form_a("used_for_streaming_control", "no")},
        AttributeFault{"allow_true_byte_width", " true", form_a("allow_true_byte_width", " true")},
        AttributeFault{"cra_wrapper_type", "true", form_a("cra_wrapper_type", "true")},
        AttributeFault{"unknown", "", "Unexpected attribute 'unknown'."}));

TEST(Interface, NameAndTypeAreRequired) {
    EXPECT_THAT(load(with_interface("<interface port='p' type='irq'/>")).errors,
                ElementsAre(at_line(8, "Expected attribute 'name' on element 'interface'."),
                            at_line(8, "At least one port is required in interface ")));
    EXPECT_THAT(load(with_interface("<interface name='n' port='p'/>")).errors,
                ElementsAre(at_line(8, "Expected attribute 'type' on element 'interface'.")));
}

TEST(Interface, TheSpellingOfTheOutputIsNoType) {
    EXPECT_THAT(load(with_interface("<interface name='n' port='p' type='stream-source'/>")).errors,
                ElementsAre(at_line(8, "Unrecognized Lumen interface type 'stream-source'.")));
}

TEST(Interface, TheFirstBadAttributeInTheOrderOfReadingEndsIt) {
    EXPECT_THAT(load(with_attributes("hostpipe='1' width='0'")).errors,
                ElementsAre(at_line(8, "Data width must be > 0.")));
}

TEST(Interface, WithoutAPortTheErrorIsAtTheElement) {
    EXPECT_THAT(load(with_interface("<interface name='n' type='irq'/>")).errors,
                ElementsAre(at_line(8, "At least one port is required in interface ")));
}

TEST(Interface, EmptyNeedsPackets) {
    EXPECT_THAT(load(with_attributes("\nuses_empty='true'")).errors,
                ElementsAre(at_line(
                    9, "The uses_packets attribute must be set to 'true' if uses_empty is set to 'true' ")));
    EXPECT_TRUE(load_attributes("uses_empty='true' uses_packets='true'"));
}

TEST(Interface, StallFreeNeedsNoReadyLatency) {
    EXPECT_THAT(
        load(with_attributes("\nstall_free='true' ready_latency='1'")).errors,
        ElementsAre(at_line(9, "The ready_latency attribute must be zero if stall_free is set to 'true' ")));
    EXPECT_TRUE(load_attributes("stall_free='true' ready_latency='0'"));
}

const std::string port_of_memory =
    "<global_mem max_bandwidth='1'>\n<interface name='i' type='agent' width='512' "
    "address='0' size='1'";

// Line 6 begins with the ports.
BoardDocument with_ports(const std::string& ports, const std::string& attributes = "") {
    BoardDocument document;
    document.memory = port_of_memory + attributes + ">\n" + ports + "</interface></global_mem>";
    return document;
}

const Interface& interface_of_memory(const board::BoardSpec& spec) {
    return spec.get_global_mem_config().get_intf(0);
}

TEST(InterfacePort, TheAttributesPortComesFirst) {
    const auto spec =
        load_good(with_ports("<port name='r' direction='r'/><port name='w' direction='w'/>", " port='a'"));
    const Interface& intf = interface_of_memory(*spec);
    ASSERT_EQ(intf.get_num_ports(), 3u);
    EXPECT_EQ(intf.get_port_name(0), "a");
    EXPECT_EQ(intf.get_port_direction(0), Port::ReadWrite);
    EXPECT_EQ(intf.get_port_name(1), "r");
    EXPECT_EQ(intf.get_port_direction(1), Port::Read);
    EXPECT_EQ(intf.get_port_name(2), "w");
    EXPECT_EQ(intf.get_port_direction(2), Port::Write);
    EXPECT_TRUE(intf.has_separate_rw_ports());
}

TEST(InterfacePort, Values) {
    const auto spec =
        load_good(with_ports("<port name='p' direction='rw' hazard_free_attributes='false' "
                             "attribute_width='3'><attribute name='a' encoding='7'/>"
                             "<attribute name='b' encoding='0'/></port>"));
    const Port& port = interface_of_memory(*spec).get_port(0);
    EXPECT_EQ(port.get_direction(), Port::ReadWrite);
    EXPECT_FALSE(port.get_hazard_free_attributes());
    EXPECT_EQ(port.get_attribute_width(), 3u);
    EXPECT_EQ(port.get_attribute("a"), 7u);
    EXPECT_EQ(port.get_attribute("b"), 0u);
}

TEST(InterfacePort, HazardFreeIsTrueOrOneAndTheDefault) {
    for (const char* text : {"", "hazard_free_attributes='true'", "hazard_free_attributes='1'"}) {
        const auto spec = load_good(with_ports("<port name='p' direction='r' " + std::string(text) + "/>"));
        EXPECT_TRUE(interface_of_memory(*spec).get_port(0).get_hazard_free_attributes()) << text;
    }
    const auto spec = load_good(with_ports("<port name='p' direction='r' hazard_free_attributes='0'/>"));
    EXPECT_FALSE(interface_of_memory(*spec).get_port(0).get_hazard_free_attributes());
}

TEST(InterfacePort, Faults) {
    const auto errors = [](const std::string& port) { return load(with_ports(port)).errors; };
    // An interface whose only port failed has none.
    const std::string none = "At least one port is required in interface ";
    EXPECT_THAT(errors("<port direction='r'/>"),
                ElementsAre(at_line(6, "Expected attribute 'name' on element 'port'."), at_line(5, none)));
    EXPECT_THAT(
        errors("<port name=''/>"),
        ElementsAre(at_line(6, "Expected attribute 'direction' on element 'port'."), at_line(5, none)));
    EXPECT_THAT(
        errors("<port name=''\ndirection='read'/>"),
        ElementsAre(at_line(7, "Unrecognized direction in interface port 'read'."), at_line(5, none)));
    EXPECT_THAT(errors("<port name='' direction='r' x=''/>"),
                ElementsAre(at_line(6, "Unexpected attribute 'x'."), at_line(5, none)));
    EXPECT_THAT(errors("<port name='' direction='r'\nhazard_free_attributes='yes'/>"),
                ElementsAre(at_line(7, "hazard_free_attributes should be a boolean (true or false)."),
                            at_line(5, none)));
    EXPECT_THAT(errors("<port name='' direction='r'\nattribute_width='3'/>"),
                ElementsAre(at_line(7,
                                    "Cannot specify additional attributes without specifying "
                                    "hazard_free_attributes=false"),
                            at_line(5, none)));
    EXPECT_THAT(errors("<port name='' direction='r' hazard_free_attributes='false'\nattribute_width='x'/>"),
                ElementsAre(at_line(7, "Incorrect type for attribute 'attribute_width' on element 'port'."),
                            at_line(5, none)));
    EXPECT_THAT(errors("<other/>"), ElementsAre(at_line(6, "Unexpected element 'other'."), at_line(5, none)));
    EXPECT_THAT(errors("<port name='' direction='r'><other/></port>"),
                ElementsAre(at_line(6, "Unexpected element 'other'."), at_line(5, none)));
    EXPECT_THAT(errors("<port name='' direction='r'>\n<port/></port>"),
                ElementsAre(at_line(7, "Unexpected element 'port'."), at_line(5, none)));
}

TEST(InterfacePort, AttributeFaults) {
    const auto errors = [](const std::string& attribute) {
        return load(with_ports("<port name='' direction='r'>\n" + attribute + "</port>", " port='a'")).errors;
    };
    EXPECT_THAT(errors("<attribute encoding='0'/>"),
                ElementsAre(at_line(7, "Expected attribute 'name' on element 'attribute'.")));
    EXPECT_THAT(errors("<attribute name=''/>"),
                ElementsAre(at_line(7, "Expected attribute 'encoding' on element 'attribute'.")));
    EXPECT_THAT(errors("<attribute name=''\nencoding='x'/>"),
                ElementsAre(at_line(8, "Incorrect type for attribute 'encoding' on element 'attribute'.")));
    EXPECT_THAT(errors("<attribute name='' encoding='0' x=''/>"),
                ElementsAre(at_line(7, "Unexpected attribute 'x'.")));
    EXPECT_THAT(errors("<attribute name='' encoding='0'><attribute/></attribute>"),
                ElementsAre(at_line(7, "Unexpected element 'attribute'.")));
}

TEST(InterfacePort, AnEncodingThatIsTooLargeFailsWithoutAWord) {
    const auto with_encoding = [](const std::string& port, const std::string& encoding) {
        return load(with_ports("<port name='' direction='r' " + port + "><attribute name='a' encoding='" +
                                   encoding + "'/></port>",
                               " port='a'"));
    };
    const std::string three_bits = "hazard_free_attributes='false' attribute_width='3'";
    EXPECT_TRUE(with_encoding(three_bits, "7").model);
    EXPECT_FALSE(with_encoding(three_bits, "8").model);
    EXPECT_THAT(with_encoding(three_bits, "8").errors, IsEmpty());
    EXPECT_TRUE(with_encoding("", "0").model);
    EXPECT_FALSE(with_encoding("", "1").model);
    EXPECT_THAT(with_encoding("", "1").errors, IsEmpty());
}

// The checks of an interface run where each of its ports is left, and where it is left itself.
TEST(InterfacePort, AFaultOfTheInterfaceIsReportedForAPortToo) {
    const std::string message =
        "The uses_packets attribute must be set to 'true' if uses_empty is set to 'true' ";
    EXPECT_THAT(load(with_ports("<port name='' direction='r'/>", "\nuses_empty='true'")).errors,
                ElementsAre(at_line(7, message), at_line(6, message)));
}

} // namespace
} // namespace zan::test
