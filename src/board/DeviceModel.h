// SPDX-License-Identifier: Apache-2.0
// The resources of an FPGA device, and a model of a device that designs are built for.
#pragma once

#include <memory>
#include <ostream>
#include <string>

#include "contract.h"

namespace zan::dmodel {

// Resource counts as estimates give them.
struct DeviceResourcesFP {
    float les = 0.0f;
    float ffs = 0.0f;
    float rams = 0.0f;
    float dsps = 0.0f;
    float lrams = 0.0f;
};

// Resource counts.
struct DeviceResources {
    DeviceResources() = default;
    // Rounds to the nearest count, halves upwards. What no count can hold becomes the nearest that can, and a
    // NaN 0.
    DeviceResources(const DeviceResourcesFP& fp);

    unsigned int les = 0;
    unsigned int ffs = 0;
    unsigned int rams = 0;
    unsigned int dsps = 0;
    unsigned int lrams = 0;
};

// A device. Frequencies are in MHz; setting one that isn't above 0 stops the process.
class DeviceModel {
  public:
    // Version of the format that a model was written in; any other value is an unknown one.
    enum class Version : unsigned int { v0_9 = 0 };

    Version get_version() const { return m_version; }
    void set_version(Version version) { m_version = version; }
    const std::string& get_target_model() const { return m_target_model; }
    void set_target_model(std::string name) { m_target_model = std::move(name); }
    float get_expected_fmax() const { return m_expected_fmax; }
    void set_expected_fmax(float fmax) { m_expected_fmax = positive(fmax); }
    float get_min_fmax() const { return m_min_fmax; }
    void set_min_fmax(float fmax) { m_min_fmax = positive(fmax); }
    // Above it a clock counts as high.
    float get_high_fmax() const { return m_high_fmax; }
    void set_high_fmax(float fmax) { m_high_fmax = positive(fmax); }

    bool has_resources() const { return m_resources != nullptr; }
    // The resources have to be set.
    const DeviceResources& get_resources() const;
    DeviceResources& get_resources();
    // Takes over `resources`, which must not be null, in place of those held so far.
    void set_resources(DeviceResources* resources);

  private:
    static float positive(float fmax);

    Version m_version = static_cast<Version>(1); // no known one
    std::string m_target_model;
    float m_expected_fmax = 0.0f;
    float m_min_fmax = 0.0f;
    float m_high_fmax = 175.0f;
    std::unique_ptr<DeviceResources> m_resources;
};

std::ostream& operator<<(std::ostream& os, DeviceModel::Version version);
std::ostream& operator<<(std::ostream& os, const DeviceResources& resources);
std::ostream& operator<<(std::ostream& os, const DeviceResourcesFP& resources);
// The resources have to be set.
std::ostream& operator<<(std::ostream& os, const DeviceModel& model);

} // namespace zan::dmodel
