// SPDX-License-Identifier: Apache-2.0
#include "fault_log.h"

#include <gtest/gtest.h>

namespace {

using namespace zan::profile;

TEST(FaultLog, KeepsTheFirstFiveOfAKindAndCountsAll) {
    FaultLog log;
    for (std::uint64_t line = 1; line <= 1200; ++line) {
        Fault fault;
        fault.kind = FaultKind::empty_line;
        fault.line = line;
        log.take(fault);
    }
    EXPECT_EQ(log[FaultKind::empty_line].count, 1200u);
    ASSERT_EQ(log[FaultKind::empty_line].first.size(), 5u);
    EXPECT_EQ(log[FaultKind::empty_line].first.back().line, 5u);
    EXPECT_EQ(log[FaultKind::bad_number].count, 0u);
    EXPECT_EQ(log.end(), nullptr);
    EXPECT_EQ(log.left_out_by_kind(), "1,200 empty-line");
}

TEST(FaultLog, KnowsWhatEndedTheRun) {
    FaultLog log;
    Fault fault;
    fault.kind = FaultKind::bad_counter;
    log.take(fault);
    EXPECT_EQ(log.end(), nullptr);
    EXPECT_EQ(log.left_out_by_kind(), "");
    fault.kind = FaultKind::not_xml;
    fault.message = "it is no XML";
    log.take(fault);
    ASSERT_NE(log.end(), nullptr);
    EXPECT_EQ(log.end()->message, "it is no XML");
}

TEST(FaultLog, ALongLineIsCutAroundTheColumn) {
    const std::string line = std::string(1000, 'a') + "b" + std::string(1000, 'c');
    Fault fault;
    fault.line_text = line;
    fault.column = 1001;
    const LoggedFault kept = logged(fault);
    EXPECT_EQ(kept.line_text.size(), 400u);
    EXPECT_EQ(kept.cut_size, 801u); // 200 bytes before the column
    EXPECT_EQ(kept.line_text[kept.column - kept.cut_size - 1], 'b');
    EXPECT_TRUE(kept.is_cut);

    fault.column = 0;
    EXPECT_EQ(logged(fault).line_text, std::string(400, 'a'));
    EXPECT_EQ(logged(fault).cut_size, 0u);
    const std::string short_line(400, 'a');
    for (const std::size_t column : {0u, 400u}) {
        fault.line_text = short_line;
        fault.column = column;
        EXPECT_EQ(logged(fault).line_text, short_line);
        EXPECT_EQ(logged(fault).cut_size, 0u);
        EXPECT_FALSE(logged(fault).is_cut);
    }
}

TEST(FaultLog, PlacesHaveWhatIsKnown) {
    LoggedFault fault;
    fault.file = "p.mon";
    EXPECT_EQ(place_of(fault), "p.mon");
    fault.line = 12;
    EXPECT_EQ(place_of(fault), "p.mon:12");
    fault.section = ".zan.profiler.xml";
    EXPECT_EQ(place_of(fault), "p.mon: .zan.profiler.xml:12");
    fault.column = 3;
    EXPECT_EQ(place_of(fault), "p.mon: .zan.profiler.xml:12:3");
    fault.line = 0;
    EXPECT_EQ(place_of(fault), "p.mon: .zan.profiler.xml");
}

} // namespace
