// SPDX-License-Identifier: Apache-2.0
// Packages and the usual ELF tools read each other's work.
#include <cstdio>

#include "package_fixture.h"

namespace {

class ToolsTest : public PackageTest {
  protected:
    // What a command in the test's folder prints, with its exit status in front.
    std::string run(const std::string& command) const {
        std::FILE* pipe = ::popen(("cd " + dir.path() + " && " + command + " 2>&1").c_str(), "r");
        std::string output;
        for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe))
            output += static_cast<char>(c);
        const int status = ::pclose(pipe);
        return std::to_string(WEXITSTATUS(status)) + ":" + output;
    }
};

const Bytes all_bytes = [] {
    Bytes bytes;
    for (int i = 0; i < 1000; ++i)
        bytes += static_cast<char>(i);
    return bytes;
}();

TEST_F(ToolsTest, ReadelfReadsOurSections) {
    make({{".zan.version", "2026.1\n"}, {".zan.profiler.xml", all_bytes}});
    const std::string output = run("readelf -S -W design.zanx");
    EXPECT_EQ(output.substr(0, 2), "0:");
    EXPECT_EQ(output.find("arning"), std::string::npos) << output;
    EXPECT_NE(output.find("[ 1] .shstrtab         STRTAB "), std::string::npos) << output;
    // The names of sections; offset 0x1100 is 4352, after the hidden section; 7 and 0x3e8 bytes.
    EXPECT_NE(output.find("[ 3] .zan.version      PROGBITS        00000000 001100 000007 00      0   0 128"),
              std::string::npos)
        << output;
    EXPECT_NE(output.find("[ 4] .zan.profiler.xml PROGBITS        00000000 001180 0003e8 00      0   0 128"),
              std::string::npos)
        << output;
}

// A package is no program, and its name table has a flag that programs don't set.
TEST_F(ToolsTest, ElflintComplainsOnlyOfWhatIsMeantToBeSo) {
    make({{"a", all_bytes}});
    EXPECT_EQ(run("eu-elflint --gnu-ld design.zanx"),
              "1:unknown object file type 0\n"
              "section [ 1] '.shstrtab' has wrong flags: expected none, is STRINGS\n");
}

TEST_F(ToolsTest, ObjcopyDumpsOurSections) {
    make({{"a", all_bytes}, {"b", "x"}});
    const Bytes before = read_file(path);
    EXPECT_EQ(
        run("objcopy -I elf32-x86-64 --dump-section a=a.out --dump-section b=b.out design.zanx other.zanx"),
        "0:");
    EXPECT_EQ(read_file(dir.path("a.out")), all_bytes);
    EXPECT_EQ(read_file(dir.path("b.out")), "x");
    EXPECT_TRUE(read_file(path) == before);
}

TEST_F(ToolsTest, WeReadAndEditWhatObjcopyHasWritten) {
    make({{"a", all_bytes}, {"b", "x"}});
    write_file(dir.path("new"), "new content");
    ASSERT_EQ(run("objcopy --add-section c=new --update-section b=new --remove-section a design.zanx"), "0:");
    EXPECT_EQ(section("a"), "(none)");
    EXPECT_EQ(section("b"), "new content");
    EXPECT_EQ(section("c"), "new content");
    {
        const Package pkg = open(ZAN_PKG_READ_WRITE);
        EXPECT_EQ(zan_pkg_add_data_section(pkg.get(), "a", "back", 4), 1);
        EXPECT_EQ(zan_pkg_update_section(pkg.get(), "c", "changed", 7), 1);
    }
    EXPECT_EQ(section("a"), "back");
    EXPECT_EQ(section("b"), "new content");
    EXPECT_EQ(section("c"), "changed");
    EXPECT_EQ(run("readelf -S -W design.zanx > /dev/null"), "0:");
}

} // namespace
