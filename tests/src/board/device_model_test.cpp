// SPDX-License-Identifier: Apache-2.0
// Devices and their resources.
#include "DeviceModel.h"

#include <cmath>
#include <limits>
#include <sstream>

#include "contract_death.h"

namespace zan::dmodel {
namespace {

template <typename T>
std::string text_of(const T& value) {
    std::ostringstream text;
    text << value;
    return text.str();
}

TEST(DeviceResources, AreRoundedWithHalvesUpwards) {
    const DeviceResources rounded(
        DeviceResourcesFP{.les = 2.5f, .ffs = 2.4f, .rams = 0.5f, .dsps = 0.49f, .lrams = 16777216.0f});
    EXPECT_EQ(rounded.les, 3u);
    EXPECT_EQ(rounded.ffs, 2u);
    EXPECT_EQ(rounded.rams, 1u);
    EXPECT_EQ(rounded.dsps, 0u);
    EXPECT_EQ(rounded.lrams, 16777216u);
}

TEST(DeviceResources, WhatNoCountHoldsBecomesTheNearest) {
    const float infinity = std::numeric_limits<float>::infinity();
    const DeviceResources rounded(DeviceResourcesFP{
        .les = -1.0f, .ffs = infinity, .rams = -infinity, .dsps = std::nanf(""), .lrams = 4294967296.0f});
    EXPECT_EQ(rounded.les, 0u);
    EXPECT_EQ(rounded.ffs, 4294967295u);
    EXPECT_EQ(rounded.rams, 0u);
    EXPECT_EQ(rounded.dsps, 0u);
    EXPECT_EQ(rounded.lrams, 4294967295u);
}

TEST(DeviceResources, Text) {
    EXPECT_EQ(text_of(DeviceResources()), "LEs = 0  FFs = 0  RAMs = 0  DSPs = 0  LRAMs = 0");
    EXPECT_EQ(
        text_of(DeviceResourcesFP{.les = 1.5f, .ffs = 2.0f, .rams = 3.25f, .dsps = 0.1f, .lrams = 1e9f}),
        "LEs = 1.5  FFs = 2  RAMs = 3.25  DSPs = 0.1  LRAMs = 1e+09");
}

TEST(DeviceModel, Text) {
    DeviceModel model;
    EXPECT_EQ(model.get_high_fmax(), 175.0f);
    model.set_target_model("t");
    auto* resources = new DeviceResources;
    resources->les = 1;
    resources->lrams = 5;
    model.set_resources(resources);
    model.set_expected_fmax(240.5f);
    model.set_min_fmax(100.0f);
    EXPECT_EQ(text_of(model),
              "Device model (v<unknown>(1)):\n  Target Model: t\n  Resources: LEs = 1  FFs = 0  "
              "RAMs = 0  DSPs = 0  LRAMs = 5\n  Expected fmax: 240.5 MHz\n"
              "  Minimum fmax: 100 MHz  High fmax threshold: 175 MHz");
    EXPECT_EQ(text_of(DeviceModel::Version::v0_9), "0.9");
}

TEST(DeviceModel, TheLastResourcesStay) {
    DeviceModel model;
    EXPECT_FALSE(model.has_resources());
    model.set_resources(new DeviceResources);
    auto* second = new DeviceResources;
    model.set_resources(second);
    EXPECT_EQ(&model.get_resources(), second);
}

TEST(DeviceModelDeathTest, Contracts) {
    DeviceModel model;
    EXPECT_CONTRACT(model.set_expected_fmax(0.0f), "fmax > 0.0f");
    EXPECT_CONTRACT(model.set_min_fmax(-1.0f), "fmax > 0.0f");
    EXPECT_CONTRACT(model.set_high_fmax(std::nanf("")), "fmax > 0.0f");
    EXPECT_CONTRACT(model.set_resources(nullptr), "resources != nullptr");
    EXPECT_CONTRACT(model.get_resources(), "has_resources()");
    EXPECT_CONTRACT(text_of(model), "has_resources()");
}

} // namespace
} // namespace zan::dmodel
