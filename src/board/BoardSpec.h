// SPDX-License-Identifier: Apache-2.0
// The description of a board: its device, its memories and interfaces, and how designs for it are compiled.
#pragma once

#include <compare>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "BoardCompileConfig.h"
#include "BoardGlobalMem.h"
#include "BoardInterface.h"
#include "DeviceModel.h"

namespace zan::board {

// Sections own what they hold. A setter that is given a pointer takes it over, in place of what was held so
// far; it must not be null. A getter of something that isn't there stops the process.

class DeviceConfig {
  public:
    // The device model's file name.
    const std::string& get_device_model() const { return m_device_model; }
    void set_device_model(std::string file) { m_device_model = std::move(file); }
    // What the board's own logic takes.
    bool has_used_resources() const { return m_used_resources != nullptr; }
    const dmodel::DeviceResources& get_used_resources() const;
    dmodel::DeviceResources& get_used_resources();
    void set_used_resources(dmodel::DeviceResources* resources);

  private:
    std::string m_device_model;
    std::unique_ptr<dmodel::DeviceResources> m_used_resources;
};

// Where the host configures kernels.
class HostConfig {
  public:
    unsigned int get_start() const { return m_start; }
    void set_start(unsigned int address) { m_start = address; }
    // 0 if no place was given; must not be set to 0.
    unsigned int get_kernel_config_size() const { return m_kernel_config_size; }
    void set_kernel_config_size(unsigned int size);

  private:
    unsigned int m_start = 0;
    unsigned int m_kernel_config_size = 0;
};

class ChannelConfig : public InterfaceList {};

// Names of the signals that drive kernels.
class KernelClkReset {
  public:
    const std::string& get_clk() const { return m_clk; }
    void set_clk(std::string name) { m_clk = std::move(name); }
    const std::string& get_clk2x() const { return m_clk2x; }
    void set_clk2x(std::string name) { m_clk2x = std::move(name); }
    const std::string& get_reset() const { return m_reset; }
    void set_reset(std::string name) { m_reset = std::move(name); }

  private:
    std::string m_clk;
    std::string m_clk2x;
    std::string m_reset;
};

class InterfaceConfig : public InterfaceList {
  public:
    bool has_kernel_clk_reset() const { return m_kernel_clk_reset != nullptr; }
    const KernelClkReset& get_kernel_clk_reset() const;
    KernelClkReset& get_kernel_clk_reset();
    void set_kernel_clk_reset(KernelClkReset* clk_reset);

  private:
    std::unique_ptr<KernelClkReset> m_kernel_clk_reset;
};

// The whole description.
class BoardSpec {
  public:
    // A version of the description format. Comparisons are those of floats.
    class Version {
      public:
        explicit Version(float value = 0.0f) : m_value(value) {}
        auto operator<=>(const Version&) const = default;
        float value() const { return m_value; }
        // Six significant digits at most.
        std::string str() const;

      private:
        float m_value;
    };
    static const Version Version_0_9;

    BoardSpec() = default;
    BoardSpec(const BoardSpec&) = delete;
    BoardSpec& operator=(const BoardSpec&) = delete;
    ~BoardSpec();

    const Version& get_version() const { return m_version; }
    void set_version(Version version) { m_version = version; }
    const std::string& get_name() const { return m_name; }
    void set_name(std::string name) { m_name = std::move(name); }

    bool has_device_config() const { return m_device_config != nullptr; }
    const DeviceConfig& get_device_config() const;
    DeviceConfig& get_device_config();
    void set_device_config(DeviceConfig* config);
    bool has_host_config() const { return m_host_config != nullptr; }
    const HostConfig& get_host_config() const;
    HostConfig& get_host_config();
    void set_host_config(HostConfig* config);
    bool has_channel_config() const { return m_channel_config != nullptr; }
    const ChannelConfig& get_channel_config() const;
    ChannelConfig& get_channel_config();
    void set_channel_config(ChannelConfig* config);
    bool has_interface_config() const { return m_interface_config != nullptr; }
    const InterfaceConfig& get_interface_config() const;
    InterfaceConfig& get_interface_config();
    void set_interface_config(InterfaceConfig* config);

    // Global memories. The first of the list is the default one.
    bool has_global_mem_config() const { return !m_global_mem_configs.empty(); }
    unsigned int get_num_global_mem_definitions() const;
    const std::vector<std::unique_ptr<GlobalMemConfig>>& get_global_mem_configs() const;
    const GlobalMemConfig& get_global_mem_config() const;
    GlobalMemConfig& get_global_mem_config();
    // Puts the memory at the front of the list if it is the default one, else at the end.
    void add_global_mem_config(GlobalMemConfig* gmc, bool is_default);
    bool is_valid_global_mem_interface(std::string name) const;
    // Compile configurations. One that is set under a taken name takes its place; the earlier one then isn't
    // owned by the board any more and is not deleted, as the caller may own it.
    void set_compile_config(CompileConfig* config, const std::string& name);
    // As above, but a configuration that was added in this way and loses its place to another one stays with
    // the board, as no caller has it.
    void add_compile_config(std::unique_ptr<CompileConfig> config, const std::string& name);
    unsigned int num_compile_configs() const;

    // For callers outside this program.

    // The last memory of that name, which must exist.
    const GlobalMemConfig& get_global_mem_config(std::string name) const;
    GlobalMemConfig& get_global_mem_config(std::string name);
    void clear_global_mem_config() { m_global_mem_configs.clear(); }
    // Whether the default memory, which must exist, has that name.
    bool is_default_global_mem(std::string name) const;
    // Appends the memories' names, joined by ", ".
    void get_string_of_board_global_interface_names(std::string& out) const;
    // The configuration of that name, which must exist.
    const CompileConfig& get_compile_config(std::string name) const;
    CompileConfig& get_compile_config(std::string name);
    // In the order in which they were set; a name that was set twice stands there twice.
    std::vector<std::string> get_compile_config_names() const { return m_compile_config_names; }
    // Each name once, sorted, joined by ", ".
    std::string get_string_of_board_compile_config_names() const;
    void clear_channel_config() { m_channel_config.reset(); }

  private:
    struct NamedCompileConfig {
        CompileConfig* config = nullptr; // owned
        bool is_added = false;           // by add_compile_config
    };

    GlobalMemConfig* last_global_mem_of_name(const std::string& name) const;

    Version m_version;
    std::string m_name;
    std::unique_ptr<DeviceConfig> m_device_config;
    std::map<std::string, NamedCompileConfig> m_compile_configs;
    std::vector<std::unique_ptr<CompileConfig>> m_replaced_compile_configs;
    std::vector<std::string> m_compile_config_names;
    std::vector<std::unique_ptr<GlobalMemConfig>> m_global_mem_configs;
    std::unique_ptr<HostConfig> m_host_config;
    std::unique_ptr<ChannelConfig> m_channel_config;
    std::unique_ptr<InterfaceConfig> m_interface_config;
};

inline const BoardSpec::Version BoardSpec::Version_0_9{0.9f};

std::ostream& operator<<(std::ostream& os, const BoardSpec::Version& version);
std::ostream& operator<<(std::ostream& os, const KernelClkReset& clk_reset);
std::ostream& operator<<(std::ostream& os, const DeviceConfig& config);
// The stream's fill character is "0" afterwards.
std::ostream& operator<<(std::ostream& os, const HostConfig& config);
std::ostream& operator<<(std::ostream& os, const ChannelConfig& config);
std::ostream& operator<<(std::ostream& os, const InterfaceConfig& config);
// Of the memories only the default one is printed.
std::ostream& operator<<(std::ostream& os, const BoardSpec& spec);

} // namespace zan::board
