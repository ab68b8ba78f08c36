// SPDX-License-Identifier: Apache-2.0
#include "DeviceModel.h"

#include <limits>

namespace zan::dmodel {

namespace {

// Adds in double, where a half is exact at any count.
unsigned int rounded(float value) {
    constexpr unsigned int most = std::numeric_limits<unsigned int>::max();
    const double sum = static_cast<double>(value) + 0.5;
    if (!(sum >= 0.0))
        return 0;
    return sum >= static_cast<double>(most) ? most : static_cast<unsigned int>(sum);
}

template <typename Resources>
std::ostream& print(std::ostream& os, const Resources& resources) {
    return os << "LEs = " << resources.les << "  FFs = " << resources.ffs << "  RAMs = " << resources.rams
              << "  DSPs = " << resources.dsps << "  LRAMs = " << resources.lrams;
}

} // namespace

DeviceResources::DeviceResources(const DeviceResourcesFP& fp)
    : les(rounded(fp.les)),
      ffs(rounded(fp.ffs)),
      rams(rounded(fp.rams)),
      dsps(rounded(fp.dsps)),
      lrams(rounded(fp.lrams)) {
}

float DeviceModel::positive(float fmax) {
    ZAN_CONTRACT(fmax > 0.0f, "fmax > 0.0f");
    return fmax;
}

const DeviceResources& DeviceModel::get_resources() const {
    ZAN_CONTRACT(has_resources(), "has_resources()");
    return *m_resources;
}

DeviceResources& DeviceModel::get_resources() {
    ZAN_CONTRACT(has_resources(), "has_resources()");
    return *m_resources;
}

void DeviceModel::set_resources(DeviceResources* resources) {
    ZAN_CONTRACT(resources != nullptr, "resources != nullptr");
    m_resources.reset(resources);
}

std::ostream& operator<<(std::ostream& os, DeviceModel::Version version) {
    if (version == DeviceModel::Version::v0_9)
        return os << "0.9";
    return os << "<unknown>(" << static_cast<unsigned int>(version) << ")";
}

std::ostream& operator<<(std::ostream& os, const DeviceResources& resources) {
    return print(os, resources);
}

std::ostream& operator<<(std::ostream& os, const DeviceResourcesFP& resources) {
    return print(os, resources);
}

std::ostream& operator<<(std::ostream& os, const DeviceModel& model) {
    os << "Device model (v" << model.get_version() << "):\n";
    os << "  Target Model: " << model.get_target_model() << "\n";
    os << "  Resources: " << model.get_resources() << "\n";
    os << "  Expected fmax: " << model.get_expected_fmax() << " MHz\n";
    // The two thresholds share a line.
    os << "  Minimum fmax: " << model.get_min_fmax() << " MHz";
    return os << "  High fmax threshold: " << model.get_high_fmax() << " MHz";
}

} // namespace zan::dmodel
