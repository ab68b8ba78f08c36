// SPDX-License-Identifier: Apache-2.0
// The records of a board: what they derive, and their contracts.
#include "BoardSpec.h"
#include "contract_death.h"

namespace zan::board {
namespace {

using testing::ElementsAre;

// An interface over [address, address + size).
std::unique_ptr<Interface> interface_over(unsigned long long address, size_t size, unsigned int width = 512,
                                          unsigned int burst = 1) {
    auto intf = std::make_unique<Interface>();
    intf->set_address(address);
    intf->set_size(size);
    intf->set_data_width(width);
    intf->set_max_burst_count(burst);
    return intf;
}

std::unique_ptr<GlobalMemConfig> memory_named(const std::string& name) {
    auto memory = std::make_unique<GlobalMemConfig>();
    memory->set_name(name);
    return memory;
}

std::string names_of(const BoardSpec& spec) {
    std::string names;
    spec.get_string_of_board_global_interface_names(names);
    return names;
}

TEST(BoardPort, AnEncodingMustFitTheWidth) {
    Port port;
    EXPECT_TRUE(port.set_attribute("a", 0)); // a width of 0 has room for 0 alone
    EXPECT_FALSE(port.set_attribute("a", 1));
    port.set_attribute_width(3);
    EXPECT_TRUE(port.set_attribute("a", 7));
    EXPECT_FALSE(port.set_attribute("a", 8));
    EXPECT_EQ(port.get_attribute("a"), 7u);
    port.set_attribute_width(32); // modulo 32
    EXPECT_TRUE(port.set_attribute("b", 0));
    EXPECT_FALSE(port.set_attribute("b", 1));
    port.set_attribute_width(31);
    EXPECT_TRUE(port.set_attribute("b", 0x7fffffffu));
    EXPECT_FALSE(port.set_attribute("b", 0x80000000u));
    EXPECT_THROW(port.get_attribute("c"), std::out_of_range);
}

TEST(BoardPort, StartsAsAReaderAndWriter) {
    const Port port;
    EXPECT_EQ(port.get_direction(), Port::ReadWrite);
    EXPECT_TRUE(port.get_hazard_free_attributes());
}

TEST(BoardInterface, HasSeparatePortsOnlyWithAReaderAndAWriter) {
    Interface intf;
    EXPECT_FALSE(intf.has_separate_rw_ports());
    intf.add_port("rw", Port::ReadWrite);
    intf.add_port("r", Port::Read);
    EXPECT_FALSE(intf.has_separate_rw_ports());
    intf.add_port("w", Port::Write);
    EXPECT_TRUE(intf.has_separate_rw_ports());
}

TEST(BoardInterface, ADirectionThatIsNoneIsBoth) {
    Interface intf;
    intf.add_port("p", static_cast<Port::Direction>(3));
    EXPECT_EQ(intf.get_port_direction(0), Port::ReadWrite);
    EXPECT_EQ(intf.get_port_name(0), "p");
}

TEST(BoardInterface, APortIsTheSameOneForReadersAndWriters) {
    Interface intf;
    intf.add_port("p", Port::Read);
    const Interface& read_only = intf;
    EXPECT_EQ(&read_only.get_port(0), &intf.get_port(0));
    EXPECT_EQ(read_only.get_port(0).get_direction(), Port::Read);
}

TEST(BoardInterfaceDeathTest, Contracts) {
    Interface intf;
    EXPECT_CONTRACT(intf.set_type(Interface::TypeCount), "type < TypeCount");
    EXPECT_CONTRACT(intf.set_data_width(0), "width > 0");
    EXPECT_CONTRACT(intf.set_max_burst_count(0), "count > 0");
    EXPECT_CONTRACT(intf.set_size(0), "size > 0");
    EXPECT_CONTRACT(intf.set_sampling_rate(0.0f), "rate > 0.0f");
    EXPECT_CONTRACT(intf.add_port(nullptr), "port != nullptr");
    EXPECT_CONTRACT(intf.get_port(0), "port < m_port.size()");
    EXPECT_CONTRACT(intf.get_port_name(0), "port < m_port.size()");
    EXPECT_CONTRACT(intf.get_port_direction(0), "port < m_port.size()");
}

TEST(BoardGlobalMem, WithoutInterfacesItHasNoAddresses) {
    const GlobalMemConfig memory;
    EXPECT_EQ(memory.get_min_byte_address(), 0u);
    EXPECT_EQ(memory.get_max_byte_address(), 0u);
}

TEST(BoardGlobalMem, ItsLowestAddressIsThatOfTheFirstInterface) {
    GlobalMemConfig memory;
    memory.add_interface(interface_over(0x1000, 0x100).release());
    memory.add_interface(interface_over(0, 0x800).release());
    EXPECT_EQ(memory.get_min_byte_address(), 0x1000u);
    EXPECT_EQ(memory.get_max_byte_address(), 0x10ffu); // inclusive, the greatest of all
}

TEST(BoardGlobalMem, AnInterleaveStepTakesSeveralInterfaces) {
    GlobalMemConfig memory;
    memory.set_interleaved_bytes(1024);
    memory.add_interface(interface_over(0, 0x1000).release());
    EXPECT_EQ(memory.get_num_interleaved_bytes(), 4096u);
    memory.add_interface(interface_over(0x1000, 0x2000).release());
    EXPECT_EQ(memory.get_num_interleaved_bytes(), 1024u);
    memory.set_interleaved_bytes(0); // not given
    EXPECT_EQ(memory.get_num_interleaved_bytes(), 4096u);
}

TEST(BoardGlobalMem, HasTheWidthAndBurstCountOfAllInterfaces) {
    GlobalMemConfig memory;
    memory.add_interface(interface_over(0, 1, 512, 16).release());
    memory.add_interface(interface_over(1, 1, 512, 16).release());
    EXPECT_EQ(memory.get_data_width_bits(), 512u);
    EXPECT_EQ(memory.get_data_width_bytes(), 64u);
    EXPECT_EQ(memory.get_max_burst_count(), 16u);
}

TEST(BoardGlobalMem, FlagsSayWhatWasSet) {
    GlobalMemConfig memory;
    EXPECT_FALSE(memory.get_has_primary_interface());
    memory.set_primary_interface("");
    EXPECT_TRUE(memory.get_has_primary_interface());
    EXPECT_FALSE(memory.get_has_id());
    memory.set_id(0);
    EXPECT_TRUE(memory.get_has_id());
}

TEST(BoardGlobalMemDeathTest, Contracts) {
    GlobalMemConfig memory;
    EXPECT_CONTRACT(memory.set_max_bandwidth(-1.0f), "bandwidth >= 0.0f");
    EXPECT_CONTRACT(memory.set_type(GlobalMemConfig::TypeCount), "type < TypeCount");
    EXPECT_CONTRACT(memory.add_interface(nullptr), "intf != nullptr");
    EXPECT_CONTRACT(memory.get_intf(0), "i < m_interfaces.size()");
    EXPECT_CONTRACT(memory.get_data_width_bits(), "i < m_interfaces.size()");
    EXPECT_CONTRACT(memory.get_max_burst_count(), "i < m_interfaces.size()");
    EXPECT_CONTRACT(memory.get_num_interleaved_bytes(), "i < m_interfaces.size()");
    memory.add_interface(interface_over(0, 1, 12, 1).release());
    EXPECT_CONTRACT(memory.get_data_width_bytes(), "width % bits_of_byte == 0");
    memory.add_interface(interface_over(0, 1, 16, 2).release());
    EXPECT_CONTRACT(memory.get_data_width_bits(), "intf->get_data_width() == width");
    EXPECT_CONTRACT(memory.get_max_burst_count(), "intf->get_max_burst_count() == count");
}

TEST(BoardSpec, TheLatestDefaultMemoryIsTheFirst) {
    BoardSpec spec;
    spec.add_global_mem_config(memory_named("a").release(), false);
    spec.add_global_mem_config(memory_named("b").release(), true);
    spec.add_global_mem_config(memory_named("c").release(), true);
    EXPECT_EQ(names_of(spec), "c, b, a");
    EXPECT_TRUE(spec.is_default_global_mem("c"));
    EXPECT_FALSE(spec.is_default_global_mem("a"));
    EXPECT_EQ(&spec.get_global_mem_config(), &spec.get_global_mem_config("c"));
    EXPECT_EQ(spec.get_num_global_mem_definitions(), 3u);
}

TEST(BoardSpec, OfTwoMemoriesOfOneNameTheLaterIsFound) {
    BoardSpec spec;
    spec.add_global_mem_config(memory_named("a").release(), false);
    spec.add_global_mem_config(memory_named("a").release(), false);
    EXPECT_EQ(&spec.get_global_mem_config("a"), spec.get_global_mem_configs()[1].get());
}

TEST(BoardSpec, WhatIsFoundByNameIsTheSameForReadersAndWriters) {
    BoardSpec spec;
    spec.add_global_mem_config(memory_named("a").release(), false);
    spec.add_global_mem_config(memory_named("b").release(), false);
    CompileConfig* const config = new CompileConfig;
    spec.set_compile_config(config, "fast");
    const BoardSpec& read_only = spec;
    EXPECT_EQ(read_only.get_global_mem_config("b").get_name(), "b");
    EXPECT_EQ(&read_only.get_global_mem_config("b"), &spec.get_global_mem_config("b"));
    EXPECT_EQ(&read_only.get_compile_config("fast"), config);
}

TEST(BoardSpec, MemoriesCanBeCleared) {
    BoardSpec spec;
    EXPECT_FALSE(spec.is_valid_global_mem_interface("a"));
    spec.add_global_mem_config(memory_named("a").release(), false);
    EXPECT_TRUE(spec.is_valid_global_mem_interface("a"));
    EXPECT_TRUE(spec.has_global_mem_config());
    spec.clear_global_mem_config();
    EXPECT_FALSE(spec.has_global_mem_config());
}

TEST(BoardSpec, NamesOfMemoriesAreAppended) {
    BoardSpec spec;
    std::string names = "names: ";
    spec.get_string_of_board_global_interface_names(names);
    EXPECT_EQ(names, "names: ");
    spec.add_global_mem_config(memory_named("").release(), false);
    spec.add_global_mem_config(memory_named("b").release(), false);
    spec.get_string_of_board_global_interface_names(names);
    EXPECT_EQ(names, "names: , b");
}

TEST(BoardSpec, AConfigurationUnderATakenNameTakesItsPlace) {
    BoardSpec spec;
    const auto first = std::make_unique<CompileConfig>(); // the board doesn't delete it
    auto* second = new CompileConfig;
    spec.set_compile_config(first.get(), "n");
    spec.set_compile_config(second, "n");
    EXPECT_EQ(spec.num_compile_configs(), 1u);
    EXPECT_THAT(spec.get_compile_config_names(), ElementsAre("n", "n"));
    EXPECT_EQ(&spec.get_compile_config("n"), second);
}

// Run with a check of memory: each configuration is deleted once, by its owner.
TEST(BoardSpec, AnAddedConfigurationThatIsReplacedLivesAsLongAsTheBoard) {
    BoardSpec spec;
    const auto set_before = std::make_unique<CompileConfig>();
    spec.set_compile_config(set_before.get(), "n");
    for (const char* project : {"first", "second"}) {
        auto added = std::make_unique<CompileConfig>();
        added->set_project(project);
        spec.add_compile_config(std::move(added), "n");
    }
    const std::unique_ptr<CompileConfig> taken(&spec.get_compile_config("n"));
    auto* set_after = new CompileConfig;
    spec.set_compile_config(set_after, "n");
    EXPECT_EQ(taken->get_project(), "second");
    EXPECT_EQ(&spec.get_compile_config("n"), set_after);
    EXPECT_EQ(spec.num_compile_configs(), 1u);
    EXPECT_THAT(spec.get_compile_config_names(), ElementsAre("n", "n", "n", "n"));
}

TEST(BoardSpec, NamesOfConfigurationsAreSorted) {
    BoardSpec spec;
    EXPECT_EQ(spec.get_string_of_board_compile_config_names(), "");
    for (const char* name : {"b", "a", "C"})
        spec.set_compile_config(new CompileConfig, name);
    EXPECT_EQ(spec.get_string_of_board_compile_config_names(), "C, a, b");
    EXPECT_THAT(spec.get_compile_config_names(), ElementsAre("b", "a", "C"));
}

TEST(BoardSpec, ASectionReplacesTheOneBefore) {
    BoardSpec spec;
    spec.set_device_config(new DeviceConfig);
    auto* device = new DeviceConfig;
    spec.set_device_config(device);
    EXPECT_EQ(&spec.get_device_config(), device);
    device->set_used_resources(new dmodel::DeviceResources);
    auto* resources = new dmodel::DeviceResources;
    device->set_used_resources(resources);
    EXPECT_EQ(&device->get_used_resources(), resources);
    spec.set_host_config(new HostConfig);
    spec.set_host_config(new HostConfig);
    spec.set_channel_config(new ChannelConfig);
    spec.set_channel_config(new ChannelConfig);
    spec.set_interface_config(new InterfaceConfig);
    auto* interfaces = new InterfaceConfig;
    spec.set_interface_config(interfaces);
    interfaces->set_kernel_clk_reset(new KernelClkReset);
    interfaces->set_kernel_clk_reset(new KernelClkReset);
    EXPECT_TRUE(spec.has_channel_config());
    spec.clear_channel_config();
    spec.clear_channel_config();
    EXPECT_FALSE(spec.has_channel_config());
}

TEST(BoardSpecDeathTest, WhatIsNotThereCannotBeHad) {
    BoardSpec spec;
    const BoardSpec& constant = spec;
    EXPECT_CONTRACT(spec.get_device_config(), "has_device_config()");
    EXPECT_CONTRACT(constant.get_device_config(), "has_device_config()");
    EXPECT_CONTRACT(spec.get_host_config(), "has_host_config()");
    EXPECT_CONTRACT(spec.get_channel_config(), "has_channel_config()");
    EXPECT_CONTRACT(spec.get_interface_config(), "has_interface_config()");
    EXPECT_CONTRACT(spec.get_global_mem_config(), "has_global_mem_config()");
    EXPECT_CONTRACT(spec.is_default_global_mem("a"), "has_global_mem_config()");
    EXPECT_CONTRACT(spec.get_global_mem_config("a"), "is_valid_global_mem_interface(name)");
    EXPECT_CONTRACT(constant.get_global_mem_config("a"), "is_valid_global_mem_interface(name)");
    EXPECT_CONTRACT(spec.get_compile_config("a"), "found != m_compile_configs.end()");
    EXPECT_CONTRACT(constant.get_compile_config("a"), "found != m_compile_configs.end()");
    EXPECT_CONTRACT(DeviceConfig().get_used_resources(), "has_used_resources()");
    EXPECT_CONTRACT(InterfaceConfig().get_kernel_clk_reset(), "has_kernel_clk_reset()");
    EXPECT_CONTRACT(ChannelConfig().get_intf(0), "i < m_interfaces.size()");
}

TEST(BoardSpecDeathTest, NothingTakesNull) {
    BoardSpec spec;
    EXPECT_CONTRACT(spec.set_device_config(nullptr), "config != nullptr");
    EXPECT_CONTRACT(spec.set_host_config(nullptr), "config != nullptr");
    EXPECT_CONTRACT(spec.set_channel_config(nullptr), "config != nullptr");
    EXPECT_CONTRACT(spec.set_interface_config(nullptr), "config != nullptr");
    EXPECT_CONTRACT(spec.set_compile_config(nullptr, "a"), "config != nullptr");
    EXPECT_CONTRACT(spec.add_global_mem_config(nullptr, false), "gmc != nullptr");
    EXPECT_CONTRACT(DeviceConfig().set_used_resources(nullptr), "resources != nullptr");
    EXPECT_CONTRACT(InterfaceConfig().set_kernel_clk_reset(nullptr), "clk_reset != nullptr");
    EXPECT_CONTRACT(HostConfig().set_kernel_config_size(0), "size > 0");
}

TEST(BoardVersion, ComparesAsAFloat) {
    EXPECT_EQ(BoardSpec::Version_0_9.value(), 0.9f);
    EXPECT_TRUE(BoardSpec::Version(0.9f) == BoardSpec::Version_0_9);
    EXPECT_FALSE(BoardSpec::Version(0.90001f) == BoardSpec::Version_0_9);
    EXPECT_TRUE(BoardSpec::Version(14.1f) < BoardSpec::Version(17.0f));
    EXPECT_EQ(BoardSpec::Version(0.9f).str(), "0.9");
    EXPECT_EQ(BoardSpec::Version(14.1f).str(), "14.1");
    EXPECT_EQ(BoardSpec::Version().str(), "0");
}

} // namespace
} // namespace zan::board
