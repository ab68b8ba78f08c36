// SPDX-License-Identifier: Apache-2.0
#include "profile_model.h"

#include <gtest/gtest.h>

namespace {

TEST(ProfileModel, StartsEmptyAndDescribed) {
    const ProfileModel model;
    EXPECT_TRUE(model.kernels.empty());
    EXPECT_TRUE(model.original_names.empty());
    EXPECT_TRUE(model.ext_mems.empty());
    EXPECT_TRUE(model.is_described);
}

// That nothing is left, and nothing deleted twice, is for the address sanitizer to see.
TEST(ProfileModel, DeletesKernelsWithTheirInstancesAndMemories) {
    ProfileModel model;
    auto* const kernel = model.kernels["k"] = new TlyKernel("k");
    kernel->add_module_inst(new TlyModuleInst("i", "m", "k", "", "", "", "", "", "", false, 1, false));
    model.ext_mems["DDR"] = new TlyExtMem("DDR", 25600.0f);
    EXPECT_EQ(model.kernels.at("k")->get_module_insts().size(), 1u);
}

TEST(ProfileModel, EntriesStayWhenWhatTheyPointToIsDeleted) {
    const ProfileModel::Kernels kernels = {
        {"k", new TlyKernel("k")}, {"l", new TlyKernel("l")}, {"none", nullptr}};
    const ProfileModel::ExtMems ext_mems = {{"DDR", new TlyExtMem("DDR", 25600.0f)}};
    delete_kernels(kernels);
    delete_ext_mems(ext_mems);
    EXPECT_EQ(kernels.size(), 3u);
    EXPECT_EQ(ext_mems.size(), 1u);
}

} // namespace
