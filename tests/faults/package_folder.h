// SPDX-License-Identifier: Apache-2.0
// The folder that the uses of package_use.h expect.
#pragma once

#include "fault_fixture.h"
#include "make_package.h"
#include "package_use.h"

class PackageFolder : public FaultTest {
  protected:
    void fill() {
        make_package(dir.path("p.zanx"), {{"a", std::string(300, 'a')}});
        write("f", std::string(400, 'f'));
        write("empty", "");
        write("d/e/g", "345");
        std::filesystem::current_path(dir.path());
        const char* const paths[] = {"d", nullptr};
        EXPECT_EQ(zan_pkg_pack("s", paths), 1);
        files = tree();
    }

    Tree files;
};

inline void PrintTo(const PackageUse& use, std::ostream* os) {
    *os << use.name;
}
