// SPDX-License-Identifier: Apache-2.0
// The command line, and what a run leaves to its caller to free. Whole runs are in tests/end_to_end.
#include "tly_exe.h"

#include "capture.h"
#include "profile_model.h"

namespace {

constexpr const char* usage = "   Usage: zanl-profile-tly <filename>.zanx <filename>.mon <filename>.json \n";

// Runs the program with arguments that it refuses, and returns what it writes to standard error.
std::string refusal(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "zanl-profile-tly");
    std::vector<char*> pointers;
    for (std::string& text : arguments)
        pointers.push_back(text.data());
    std::string err;
    const std::string out = stdout_of([&] {
        err = stderr_of([&] { EXPECT_EQ(tly_main(static_cast<int>(pointers.size()), pointers.data()), 0); });
    });
    EXPECT_EQ(out, usage);
    return err;
}

TEST(TlyExe, TheTypeOfAFileIsTheEndOfItsPath) {
    EXPECT_EQ(checkArgType("a/design.zanx"), "zanx");
    EXPECT_EQ(checkArgType("profile.mon"), "mon");
    EXPECT_EQ(checkArgType("report.json"), "json");
    EXPECT_EQ(checkArgType("zanx"), "zanx");
    EXPECT_EQ(checkArgType("amon"), "mon");
    EXPECT_EQ(checkArgType("design.zanx.bak"), "");
    EXPECT_EQ(checkArgType("profile.MON"), "");
    EXPECT_EQ(checkArgType(""), "");
}

TEST(TlyExe, UsageGoesToStandardOutput) {
    EXPECT_EQ(stdout_of(printUsage), usage);
}

TEST(TlyExe, WrongArgumentsAreRefusedWithAStatusOfZero) {
    EXPECT_EQ(refusal({}), "ABORT: Missing arguments.\n");
    EXPECT_EQ(refusal({"a.zanx"}), "ABORT: Not enough file arguments.\n");
    EXPECT_EQ(refusal({"a.zanx", "b.mon"}), "ABORT: Not enough file arguments.\n");
    EXPECT_EQ(refusal({"a.zanx", "b.mon", "c.json", "d"}), "ABORT: Too many arguments.\n");
    EXPECT_EQ(refusal({"a", "b", "c"}), "ABORT: Missing .zanx file. Incorrect first argument.\n");
    EXPECT_EQ(refusal({"a.zanx", "b", "c"}), "ABORT: Missing .mon file. Incorrect second argument.\n");
    EXPECT_EQ(refusal({"a.zanx", "b.mon", "c"}), "ABORT: Missing .json file. Incorrect third argument.\n");
}

// That nothing is left, and nothing deleted twice, is for the address sanitizer to see.
TEST(TlyExe, CleanUpDeletesAllButTheEntriesOfTheMemories) {
    auto* const tree = new ptree;
    tree->put("a.b", "c");
    auto* const kernels = new ProfileModel::Kernels;
    auto* const kernel = (*kernels)["k"] = new TlyKernel("k");
    kernel->set_module_insts(
        {new TlyModuleInst("i", "m", "k", "", "", "", "", "", "", false, 1, false), nullptr});
    ProfileModel::ExtMems ext_mems = {{"DDR", new TlyExtMem("DDR", 1.0f)}};
    clean_up(tree, kernels, ext_mems);
    EXPECT_EQ(ext_mems.size(), 1u);
}

TEST(TlyExe, CleanUpNeedsNoTree) {
    ProfileModel::ExtMems ext_mems;
    clean_up(nullptr, new ProfileModel::Kernels, ext_mems);
    EXPECT_TRUE(ext_mems.empty());
}

} // namespace
