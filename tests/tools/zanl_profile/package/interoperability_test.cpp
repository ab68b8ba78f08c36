// SPDX-License-Identifier: Apache-2.0
// Other programs read packages of the toolbox, and the toolbox reads theirs.
#include <fmt/format.h>

#include "toolbox_fixture.h"

namespace {

using testing::HasSubstr;

class Interoperability : public Toolbox {
  protected:
    Interoperability() {
        write("version", "1\n");
        write("bytes", all_bytes);
        EXPECT_EQ(run({"package", "create", "p.zanx", ".zan.version=version", "a=bytes"}), silent_success);
    }
    // What the reader in Python prints for a package.
    static std::string lines(const PackageSections& sections) {
        std::string text;
        for (const auto& [name, bytes] : sections) {
            text += name + " ";
            for (const char c : bytes)
                text += fmt::format("{:02x}", static_cast<unsigned char>(c));
            text += "\n";
        }
        return text;
    }
    Outcome read_by_python(const std::string& package) const {
        return shell(std::string("python3 ") + ZAN_READ_PACKAGE + " " + package);
    }

    const std::string all_bytes = [] {
        std::string bytes;
        for (int i = 0; i < 256; ++i)
            bytes += static_cast<char>(i);
        return bytes;
    }();
    const PackageSections expected = {{".zan.version", "1\n"}, {"a", all_bytes}};
};

TEST_F(Interoperability, PythonReadsOurs) {
    EXPECT_EQ(read_by_python("p.zanx"), (Outcome{lines(expected), "", "0"}));
    ASSERT_EQ(run({"package", "update", "p.zanx", ".zan.version=bytes"}), silent_success);
    ASSERT_EQ(run({"package", "add", "p.zanx", "b=version", "empty=/dev/null"}), silent_success);
    EXPECT_EQ(read_by_python("p.zanx"),
              (Outcome{lines({{".zan.version", all_bytes}, {"a", all_bytes}, {"b", "1\n"}, {"empty", ""}}),
                       "", "0"}));
}

// Offsets are multiples of 128: the nameless section of 4096 bytes is at 256, so the others begin at 0x1100.
TEST_F(Interoperability, ReadelfReadsOurs) {
    const Outcome outcome = shell("readelf -S -W p.zanx");
    EXPECT_EQ(outcome.status, "0");
    EXPECT_EQ(outcome.err, "");
    EXPECT_THAT(outcome.out,
                HasSubstr(".zan.version      PROGBITS        00000000 001100 000002 00      0   0 128"));
    EXPECT_THAT(outcome.out,
                HasSubstr("a                 PROGBITS        00000000 001180 000100 00      0   0 128"));
}

TEST_F(Interoperability, ElfutilsReadsOurs) {
    const Outcome headers = shell("eu-readelf -S p.zanx");
    EXPECT_EQ(headers.status, "0");
    EXPECT_EQ(headers.err, "");
    EXPECT_THAT(headers.out, HasSubstr(".zan.version         PROGBITS     00000000 001100 000002"));
    const Outcome contents = shell("eu-readelf -x .zan.version p.zanx");
    EXPECT_THAT(contents.out, HasSubstr("0x00000000 310a"));
}

TEST_F(Interoperability, ObjcopyReadsOurs) {
    EXPECT_EQ(shell("objcopy --dump-section a=dumped p.zanx copy.zanx"), silent_success);
    EXPECT_TRUE(read("dumped") == all_bytes);
}

TEST_F(Interoperability, WeReadAndChangeWhatObjcopyHasWritten) {
    ASSERT_EQ(shell("objcopy --add-section b=version --remove-section .zan.version p.zanx o.zanx"),
              silent_success);
    EXPECT_EQ(run({"package", "list", "o.zanx"}).out, "NAME  SIZE  MEANING\na      256\nb        2\n");
    EXPECT_TRUE(run({"package", "show", "o.zanx", "a"}).out == all_bytes);
    ASSERT_EQ(run({"package", "update", "o.zanx", "a=version"}), silent_success);
    ASSERT_EQ(run({"package", "add", "o.zanx", "c=bytes"}), silent_success);
    EXPECT_EQ(read_by_python("o.zanx"),
              (Outcome{lines({{"a", "1\n"}, {"b", "1\n"}, {"c", all_bytes}}), "", "0"}));
    EXPECT_EQ(shell("readelf -S -W o.zanx >/dev/null"), silent_success);
}

TEST_F(Interoperability, WeReadAndChangeWhatAnAssemblerHasMade) {
    ASSERT_EQ(shell("as --x32 -o e.o /dev/null && objcopy --add-section .zan.version=version e.o o.zanx"),
              silent_success);
    EXPECT_EQ(run({"package", "show", "o.zanx", ".zan.version"}), (Outcome{"1\n", "", "0"}));
    ASSERT_EQ(run({"package", "copy", "p.zanx", "o.zanx", "a", ".zan.version"}), silent_success);
    EXPECT_TRUE(run({"package", "show", "o.zanx", "a"}).out == all_bytes);
    EXPECT_EQ(shell("objcopy --dump-section a=dumped o.zanx copy.zanx"), silent_success);
    EXPECT_TRUE(read("dumped") == all_bytes);
}

// Streams are zlib's own, so what knows zlib reads them.
TEST_F(Interoperability, PythonReadsOurStreams) {
    ASSERT_EQ(run({"package", "pack", "s", "bytes"}), silent_success);
    EXPECT_EQ(shell("python3 -c 'import sys,zlib; d=zlib.decompress(open(\"s\",\"rb\").read()); "
                    "sys.stdout.buffer.write(d[26:-20])'"),
              (Outcome{all_bytes, "", "0"}));
}

} // namespace
