// SPDX-License-Identifier: Apache-2.0
#include "BoardSpec.h"

#include <algorithm>
#include <sstream>

namespace zan::board {

namespace {

// What a pointer of the model points to. `expression` is what has to hold, as an assertion shows it.
template <typename Section>
Section& section(const std::unique_ptr<Section>& pointer, const char* expression) {
    ZAN_CONTRACT(pointer != nullptr, expression);
    return *pointer;
}

template <typename Section>
void take(std::unique_ptr<Section>& pointer, Section* given, const char* expression) {
    ZAN_CONTRACT(given != nullptr, expression);
    pointer.reset(given);
}

} // namespace

const dmodel::DeviceResources& DeviceConfig::get_used_resources() const {
    return section(m_used_resources, "has_used_resources()");
}

dmodel::DeviceResources& DeviceConfig::get_used_resources() {
    return section(m_used_resources, "has_used_resources()");
}

void DeviceConfig::set_used_resources(dmodel::DeviceResources* resources) {
    take(m_used_resources, resources, "resources != nullptr");
}

void HostConfig::set_kernel_config_size(unsigned int size) {
    ZAN_CONTRACT(size > 0, "size > 0");
    m_kernel_config_size = size;
}

const KernelClkReset& InterfaceConfig::get_kernel_clk_reset() const {
    return section(m_kernel_clk_reset, "has_kernel_clk_reset()");
}

KernelClkReset& InterfaceConfig::get_kernel_clk_reset() {
    return section(m_kernel_clk_reset, "has_kernel_clk_reset()");
}

void InterfaceConfig::set_kernel_clk_reset(KernelClkReset* clk_reset) {
    take(m_kernel_clk_reset, clk_reset, "clk_reset != nullptr");
}

// As a stream with default formatting writes it.
std::string BoardSpec::Version::str() const {
    std::ostringstream text;
    text << m_value;
    return text.str();
}

BoardSpec::~BoardSpec() {
    for (const auto& [name, named] : m_compile_configs)
        delete named.config;
}

const DeviceConfig& BoardSpec::get_device_config() const {
    return section(m_device_config, "has_device_config()");
}

DeviceConfig& BoardSpec::get_device_config() {
    return section(m_device_config, "has_device_config()");
}

void BoardSpec::set_device_config(DeviceConfig* config) {
    take(m_device_config, config, "config != nullptr");
}

const HostConfig& BoardSpec::get_host_config() const {
    return section(m_host_config, "has_host_config()");
}

HostConfig& BoardSpec::get_host_config() {
    return section(m_host_config, "has_host_config()");
}

void BoardSpec::set_host_config(HostConfig* config) {
    take(m_host_config, config, "config != nullptr");
}

const ChannelConfig& BoardSpec::get_channel_config() const {
    return section(m_channel_config, "has_channel_config()");
}

ChannelConfig& BoardSpec::get_channel_config() {
    return section(m_channel_config, "has_channel_config()");
}

void BoardSpec::set_channel_config(ChannelConfig* config) {
    take(m_channel_config, config, "config != nullptr");
}

const InterfaceConfig& BoardSpec::get_interface_config() const {
    return section(m_interface_config, "has_interface_config()");
}

InterfaceConfig& BoardSpec::get_interface_config() {
    return section(m_interface_config, "has_interface_config()");
}

void BoardSpec::set_interface_config(InterfaceConfig* config) {
    take(m_interface_config, config, "config != nullptr");
}

unsigned int BoardSpec::get_num_global_mem_definitions() const {
    return static_cast<unsigned int>(m_global_mem_configs.size());
}

const std::vector<std::unique_ptr<GlobalMemConfig>>& BoardSpec::get_global_mem_configs() const {
    return m_global_mem_configs;
}

const GlobalMemConfig& BoardSpec::get_global_mem_config() const {
    ZAN_CONTRACT(has_global_mem_config(), "has_global_mem_config()");
    return *m_global_mem_configs[0];
}

GlobalMemConfig& BoardSpec::get_global_mem_config() {
    ZAN_CONTRACT(has_global_mem_config(), "has_global_mem_config()");
    return *m_global_mem_configs[0];
}

// Names are few, and are only unique once a load has checked them, so the list is searched from its end.
GlobalMemConfig* BoardSpec::last_global_mem_of_name(const std::string& name) const {
    const auto found = std::find_if(m_global_mem_configs.rbegin(), m_global_mem_configs.rend(),
                                    [&](const auto& memory) { return memory->get_name() == name; });
    return found == m_global_mem_configs.rend() ? nullptr : found->get();
}

const GlobalMemConfig& BoardSpec::get_global_mem_config(std::string name) const {
    const GlobalMemConfig* memory = last_global_mem_of_name(name);
    ZAN_CONTRACT(memory != nullptr, "is_valid_global_mem_interface(name)");
    return *memory;
}

GlobalMemConfig& BoardSpec::get_global_mem_config(std::string name) {
    GlobalMemConfig* memory = last_global_mem_of_name(name);
    ZAN_CONTRACT(memory != nullptr, "is_valid_global_mem_interface(name)");
    return *memory;
}

void BoardSpec::add_global_mem_config(GlobalMemConfig* gmc, bool is_default) {
    ZAN_CONTRACT(gmc != nullptr, "gmc != nullptr");
    m_global_mem_configs.emplace(is_default ? m_global_mem_configs.begin() : m_global_mem_configs.end(), gmc);
}

bool BoardSpec::is_valid_global_mem_interface(std::string name) const {
    return last_global_mem_of_name(name) != nullptr;
}

bool BoardSpec::is_default_global_mem(std::string name) const {
    return get_global_mem_config().get_name() == name;
}

void BoardSpec::get_string_of_board_global_interface_names(std::string& out) const {
    const char* separator = "";
    for (const auto& memory : m_global_mem_configs) {
        out += separator + memory->get_name();
        separator = ", ";
    }
}

void BoardSpec::set_compile_config(CompileConfig* config, const std::string& name) {
    ZAN_CONTRACT(config != nullptr, "config != nullptr");
    m_compile_config_names.push_back(name);
    m_compile_configs[name] = {config, false};
}

void BoardSpec::add_compile_config(std::unique_ptr<CompileConfig> config, const std::string& name) {
    const auto found = m_compile_configs.find(name);
    CompileConfig* const replaced =
        found != m_compile_configs.end() && found->second.is_added ? found->second.config : nullptr;
    // All that takes memory comes first, so that each configuration has one owner if there is none left.
    if (replaced)
        m_replaced_compile_configs.emplace_back();
    set_compile_config(config.get(), name);
    m_compile_configs[name].is_added = true;
    static_cast<void>(config.release()); // the list's now
    if (replaced)
        m_replaced_compile_configs.back().reset(replaced);
}

const CompileConfig& BoardSpec::get_compile_config(std::string name) const {
    const auto found = m_compile_configs.find(name);
    ZAN_CONTRACT(found != m_compile_configs.end(), "found != m_compile_configs.end()");
    return *found->second.config;
}

CompileConfig& BoardSpec::get_compile_config(std::string name) {
    const auto found = m_compile_configs.find(name);
    ZAN_CONTRACT(found != m_compile_configs.end(), "found != m_compile_configs.end()");
    return *found->second.config;
}

unsigned int BoardSpec::num_compile_configs() const {
    return static_cast<unsigned int>(m_compile_configs.size());
}

std::string BoardSpec::get_string_of_board_compile_config_names() const {
    std::string names;
    const char* separator = "";
    for (const auto& [name, named] : m_compile_configs) {
        names += separator + name;
        separator = ", ";
    }
    return names;
}

} // namespace zan::board
