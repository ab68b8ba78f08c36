// SPDX-License-Identifier: Apache-2.0
#include "open_page.h"

#include "toolbox_fixture.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class OpenPage : public Toolbox {
  protected:
    void write_report() const {
        write("r.json", read_file(std::string(ZAN_SAMPLES_FOLDER) + "/loop/expected_report.json"));
    }
};

// A stand-in on PATH writes what it was called with. `view` doesn't wait for it, so the test does.
TEST_F(OpenPage, OpensThePage) {
    write_report();
    write("bin/xdg-open", "#!/bin/sh\nprintf '%s\\n' \"$@\" > calls && echo noise && mv calls called\n");
    const std::string wait = "; for i in $(seq 200); do [ -f called ] && break; sleep 0.05; done; cat called";
    const std::string with_path = "chmod +x bin/xdg-open; PATH=$PWD/bin:$PATH $T view r.json -o ";
    EXPECT_EQ(shell(with_path + "'a page.html' --open" + wait),
              (Outcome{std::filesystem::canonical(dir.path()).string() + "/a page.html\n", "", "0"}));
    std::filesystem::remove(dir.path("called"));
    EXPECT_EQ(shell(with_path + "other.html; sleep 0.2; ls"),
              (Outcome{"a page.html\nbin\nother.html\nr.json\n", "", "0"}));
}

TEST_F(OpenPage, APageThatCantBeOpenedIsThere) {
    write_report();
    const Outcome outcome = shell("PATH=/nowhere $T view r.json -o r.html --open");
    EXPECT_THAT(outcome.err,
                AllOf(StartsWith("zanl-profile: the page is written, but xdg-open can't be started: No such"),
                      HasSubstr("; open /"), HasSubstr("/r.html in a browser\n")));
    EXPECT_EQ(outcome.status, "2");
    EXPECT_THAT(read("r.html"), StartsWith("<!doctype html>"));
    // Nothing is opened if there is no page.
    EXPECT_THAT(shell("PATH=/nowhere $T view nothing.json -o n.html --open").err, Not(HasSubstr("xdg-open")));
}

} // namespace
