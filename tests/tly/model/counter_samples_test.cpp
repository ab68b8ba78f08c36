// SPDX-License-Identifier: Apache-2.0
#include "counter_samples.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

using Values = std::vector<long long>;

Values values_of(const CounterSamples& counters, Counter counter) {
    return counters[counter].to_vector();
}

void add_line(CounterSamples& counters, Counter counter, long long value) {
    counters.start_line();
    counters.add(counter, value);
    counters.end_line();
}

// A block of lines of two fields.
LineBlock block_of(const std::vector<std::pair<long long, long long>>& lines) {
    LineBlock block;
    block.reset(2);
    for (const auto& [first, second] : lines) {
        block.next()[0] = first;
        block.next()[1] = second;
        block.add();
    }
    return block;
}

constexpr auto index_of_ivalid = static_cast<std::size_t>(Counter::ivalid);

TEST(CounterSamples, AllFamiliesHaveAnEntryForEachLine) {
    CounterSamples counters;
    counters.activate(Counter::ivalid);
    add_line(counters, Counter::ivalid, 5);
    add_line(counters, Counter::ivalid, 6);
    EXPECT_EQ(values_of(counters, Counter::ivalid), (Values{5, 6}));
    EXPECT_EQ(values_of(counters, Counter::idle), (Values{0, 0}));
    EXPECT_EQ(values_of(counters, Counter::max_fifo), (Values{0, 0}));
}

TEST(CounterSamples, ValuesOfALineAreSummed) {
    CounterSamples counters;
    counters.activate(Counter::idle);
    counters.add(Counter::idle, LLONG_MIN);
    counters.add(Counter::idle, -1); // -2^63 - 1 wraps to 2^63 - 1
    counters.end_line();
    EXPECT_EQ(values_of(counters, Counter::idle), (Values{LLONG_MAX}));
}

TEST(CounterSamples, AFamilyThatIsActivatedLaterStartsWithZeros) {
    CounterSamples counters;
    counters.activate(Counter::ivalid);
    add_line(counters, Counter::ivalid, 5);
    counters.activate(Counter::idle);
    add_line(counters, Counter::idle, 6);
    EXPECT_EQ(values_of(counters, Counter::ivalid), (Values{5, 0}));
    EXPECT_EQ(values_of(counters, Counter::idle), (Values{0, 6}));
    counters.activate(Counter::idle); // nothing happens to its samples
    EXPECT_EQ(values_of(counters, Counter::idle), (Values{0, 6}));
}

TEST(CounterSamples, ABlockBringsASampleForEachOfItsLines) {
    CounterSamples counters;
    counters.activate(Counter::ivalid);
    counters.activate(Counter::ostall);
    const LineBlock lines = block_of({{1, 10}, {2, 20}, {0, 30}});
    CounterColumns columns;
    columns.add(index_of_ivalid, lines, 0);
    counters.append_lines(columns, lines.size());
    EXPECT_EQ(values_of(counters, Counter::ivalid), (Values{1, 2, 0}));
    EXPECT_EQ(values_of(counters, Counter::ostall), (Values{0, 0, 0}));
    EXPECT_EQ(values_of(counters, Counter::idle), (Values{0, 0, 0}));
}

TEST(CounterSamples, AfterABlockTheSumsAreThoseOfItsLastLine) {
    CounterSamples counters;
    counters.activate(Counter::ivalid);
    counters.activate(Counter::ostall);
    counters.add(Counter::ostall, 99);
    const LineBlock lines = block_of({{1, 10}, {2, 20}});
    CounterColumns columns;
    columns.add(index_of_ivalid, lines, 1);
    counters.append_lines(columns, lines.size());
    counters.add(Counter::ivalid, 1);
    counters.end_line();
    EXPECT_EQ(values_of(counters, Counter::ivalid), (Values{10, 20, 21}));
    EXPECT_EQ(values_of(counters, Counter::ostall), (Values{0, 0, 0}));
}

TEST(CounterColumns, FieldsOfOneColumnAreSummedOnEachLine) {
    const LineBlock lines = block_of({{1, 10}, {LLONG_MAX, 1}});
    CounterColumns columns;
    columns.add(CounterColumns::total_cycles, lines, 0);
    columns.add(CounterColumns::total_cycles, lines, 1);
    SampleList<long long> cycles{7};
    columns.append_to(cycles, CounterColumns::total_cycles, lines.size());
    EXPECT_EQ(cycles.to_vector(), (Values{7, 11, LLONG_MIN}));
    EXPECT_EQ(columns.value(CounterColumns::total_cycles, 0), 11);
    EXPECT_EQ(columns.value(0, 1), 0); // no field feeds it
}

TEST(CounterSamples, ClearingKeepsTheFamilies) {
    CounterSamples counters;
    counters.activate(Counter::ivalid);
    add_line(counters, Counter::ivalid, 5);
    counters.add(Counter::ivalid, 6);
    counters.clear();
    EXPECT_TRUE(counters[Counter::ivalid].empty());
    EXPECT_TRUE(counters[Counter::idle].empty());
    counters.end_line(); // the sum is 0
    counters.add(Counter::ivalid, 7);
    counters.end_line();
    EXPECT_EQ(values_of(counters, Counter::ivalid), (Values{0, 7}));
}

TEST(CounterSamples, ReleasedListsAreEmptyAndCopiesStay) {
    CounterSamples counters;
    counters.activate(Counter::ivalid);
    add_line(counters, Counter::ivalid, 5);
    const CounterSamples::Samples copy = counters[Counter::ivalid];
    counters.release();
    EXPECT_EQ(values_of(counters, Counter::ivalid), Values());
    EXPECT_EQ(values_of(counters, Counter::idle), Values());
    EXPECT_EQ(copy.to_vector(), Values{5});
}

} // namespace
