// SPDX-License-Identifier: Apache-2.0
#include "written_numbers.h"

#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <limits>
#include <random>

#include "node_events.h"

using namespace zan::profile;

namespace {

float from_text(float value) {
    const std::string text = report_text(value);
    float read = 0;
    std::from_chars(text.data(), text.data() + text.size(), read);
    return read;
}

// Floats above 0.5 are 2^-24 = 0.0000000596 apart. The first is written as 0.5000001, to which the second, at
// 0.5000001192, is nearer.
TEST(WrittenNumbers, MoreThanSevenDigitsAreRounded) {
    EXPECT_EQ(as_written(0.5f + 0x1p-24f), 0.5f + 0x1p-23f);
    EXPECT_EQ(as_written(-12.5f), -12.5f);
    EXPECT_EQ(as_written(16777215.0f), 16777220.0f); // 1.677722e+07
}

TEST(WrittenNumbers, OddFloatsStay) {
    EXPECT_TRUE(std::signbit(as_written(-0.0f)));
    EXPECT_EQ(as_written(0.0f), 0.0f);
    EXPECT_EQ(as_written(-std::numeric_limits<float>::infinity()), -std::numeric_limits<float>::infinity());
    EXPECT_TRUE(std::isnan(as_written(std::numeric_limits<float>::quiet_NaN())));
}

TEST(WrittenNumbers, EachFloatIsWhatItsTextIsReadAs) {
    std::mt19937 random(11);
    for (int i = 0; i < 300'000; ++i) {
        const auto bits = static_cast<std::uint32_t>(random());
        // Half of them from 10^-5 to 10^8, or with all bits.
        const float value = std::bit_cast<float>(i % 2 == 0 ? 0x3727'0000u + bits % 0x1580'0000u : bits);
        if (!std::isnan(value)) {
            ASSERT_EQ(as_written(value), from_text(value)) << report_text(value);
        }
    }
    for (float power = 1e-6f; power < 1e9f; power *= 10) {
        float value = std::nextafter(power, 0.0f);
        for (int i = 0; i < 3; ++i, value = std::nextafter(value, 2 * power))
            EXPECT_EQ(as_written(value), from_text(value)) << report_text(value);
    }
}

TEST(WrittenNumbers, AllElseIsPassedOn) {
    NodeEventList events;
    WrittenNumbers sink(events);
    const std::vector<long long> integers = {123456789012};
    const std::vector<float> floats = {0.5f + 0x1p-24f, 2};
    sink.open("o", Form::object);
    sink.text("t", "0.123456789");
    sink.array("i", std::span<const long long>(integers));
    sink.array("f", std::span<const float>(floats));
    sink.array("s", SampleList<float>(floats));
    sink.open("p", Form::array);
    sink.elements(std::span<const float>(floats));
    sink.elements(std::span<const long long>(integers));
    sink.close();
    sink.close();
    EXPECT_EQ(events.list, (std::vector<std::string>{
                               "o open object", "t text 0.123456789", "i integers 123456789012",
                               "f floats 0.5000001 2", "s floats 0.5000001 2", "p open array",
                               "more floats 0.5000001 2", "more integers 123456789012", "close", "close"}));
}

} // namespace
