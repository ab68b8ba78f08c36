// SPDX-License-Identifier: Apache-2.0
#include "capture_check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "model_of.h"

namespace {

using namespace zan::profile;
using testing::ElementsAre;
using testing::IsEmpty;

class CaptureChecks : public testing::Test {
  protected:
    // "code:line" of what these lines show.
    std::vector<std::string> codes(const std::vector<std::string>& lines, bool has_newline = true) {
        FindingLog log;
        CaptureCheck check("p.mon", log);
        check.take_design(m_design.model);
        for (std::size_t i = 0; i < lines.size(); ++i)
            check.take_line(i + 1, lines[i]);
        check.take_end(has_newline);
        m_num_samples = check.num_samples();
        m_has_other_counters = check.has_other_counters();
        std::vector<std::string> result;
        for (const Finding& finding : log.findings())
            result.push_back(std::string(finding.row->code) + ":" + std::to_string(finding.first.line));
        return result;
    }

    const ModelOf m_design{
        Description().function("k").module("m", {"clock"}).inst("k", "b", "m").connect("k", "b", "clock")};
    std::uint64_t m_num_samples = 0;
    bool m_has_other_counters = false;
};

TEST_F(CaptureChecks, GoodLinesShowNothing) {
    EXPECT_THAT(codes({"0,0,k,0,10,-1,1,5", "0,0,.reprogram,3,4", "0,0,k,0,20,-1,1,5"}), IsEmpty());
    EXPECT_EQ(m_num_samples, 2u);
}

TEST_F(CaptureChecks, LinesThatAreLeftOutShowNothingHere) {
    EXPECT_THAT(codes({"0,0,k,0,10,-1,1,5", "", "1,2", "0,0,k", "0,0,other,9,1,-1,1,1", "0,0,k,x,1,-1,1,1",
                       "0,0,k,0,10,-1,3,5", "0,0,.reprogram,x,1", "0,0,.reprogram,5,x", "0,0,.reprogram,5"}),
                IsEmpty());
}

TEST_F(CaptureChecks, CountersAreHeldAgainstTheDesign) {
    EXPECT_THAT(codes({"0,0,k,0,10,-1,1,5", "0,0,k,0,20,-1,2,5,6"}), ElementsAre("counter-count:2"));
    EXPECT_TRUE(m_has_other_counters);
    EXPECT_THAT(codes({"0,0,k,0,10,-1,2,5,6", "0,0,k,0,20,-1,1,5"}), ElementsAre("counter-count:1"));
    EXPECT_FALSE(m_has_other_counters) << "it is about the current line";
}

TEST_F(CaptureChecks, TimesThatGoBack) {
    EXPECT_THAT(codes({"0,0,k,0,20,-1,1,5", "0,0,k,0,20,-1,1,5", "0,0,k,0,19,-1,1,5"}),
                ElementsAre("time-backwards:3"));
    EXPECT_THAT(codes({"0,0,k,0,20,-1,1,5", "0,0,k,5,10,-1,1,5"}), IsEmpty()) << "another invocation";
    EXPECT_THAT(codes({"0,0,k,20,19,-1,1,5"}), ElementsAre("time-backwards:1"));
    EXPECT_THAT(codes({"0,0,k,0,20,-1,1,5", "0,0,.reprogram,4,3"}), ElementsAre("time-backwards:2"));
}

TEST_F(CaptureChecks, TheFileAsAWhole) {
    EXPECT_THAT(codes({}), ElementsAre("empty-capture:0"));
    EXPECT_THAT(codes({"0,0,.reprogram,3,4"}), ElementsAre("no-samples:0"));
    EXPECT_THAT(codes({"0,0,k,0,10,-1,1,5"}, false), ElementsAre("no-final-newline:1"));
    EXPECT_THAT(codes({"\x1f\x8b junk", "0,0,k,0,10,-1,9,5"}, false), ElementsAre("compressed-capture:0"));
}

// A design of two counters.
TEST_F(CaptureChecks, OneCounterIsOne) {
    const ModelOf two(Description()
                          .function("k")
                          .module("m", {"clock", "ivalid"})
                          .inst("k", "b", "m")
                          .connect("k", "b", "clock")
                          .connect("k", "b", "ivalid"));
    for (const auto& [line, message] :
         {std::pair("0,0,k,0,10,-1,1,5", "k has 1 counter here, the design has 2"),
          std::pair("0,0,k,0,10,-1,3,5,6,7", "k has 3 counters here, the design has 2")}) {
        FindingLog log;
        CaptureCheck check("p.mon", log);
        check.take_design(two.model);
        check.take_line(1, line);
        ASSERT_EQ(log.findings().size(), 1u);
        EXPECT_EQ(log.findings()[0].first.message, message);
    }
}

} // namespace
