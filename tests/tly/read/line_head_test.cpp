// SPDX-License-Identifier: Apache-2.0
// The head of a line, read in both ways: from the front, and out of a split line.
#include "line_head.h"

#include <gmock/gmock.h>

#include <array>
#include <optional>
#include <random>

#include "capture.h"

namespace {

struct NameAndHead {
    std::string_view name;
    LineHead head;

    friend bool operator==(const NameAndHead&, const NameAndHead&) = default;
};

std::ostream& operator<<(std::ostream& out, const NameAndHead& read) {
    const LineHead& head = read.head;
    return out << read.name << ' ' << head.device_id << ' ' << head.queue_id << ' ' << head.start_time << ' '
               << head.sample_time << ' ' << head.shared_type << ' ' << head.num_counters;
}

std::optional<NameAndHead> read_from_front(std::string_view line) {
    PlainFields fields(line);
    NameAndHead read;
    return read_plain_head(fields, read.name, read.head) ? std::optional(read) : std::nullopt;
}

std::optional<NameAndHead> read_split(std::string_view line, LineForm form = {}) {
    MonLine fields;
    fields.split(line);
    NameAndHead read;
    if (!read_split_head(fields, form, 12, read.head))
        return std::nullopt;
    read.name = name_in_line(line);
    return read;
}

constexpr LineForm transfer = {true, true};
constexpr LineForm undescribed = {false, false};
constexpr LineForm undescribed_transfer = {true, false};

std::string messages_of(std::string_view line, LineForm form = {}) {
    return stderr_of([&] { EXPECT_EQ(read_split(line, form), std::nullopt) << line; });
}

TEST(LineHead, HasTheNumbersOfItsFields) {
    const NameAndHead expected = {"k", {1, 2, -3, 4, SHARED_IDLE, 5}};
    EXPECT_EQ(read_from_front("1,2,k,-3,4,2,5,6,7"), expected);
    EXPECT_EQ(read_split("1,2,k,-3,4,2,5,6,7"), expected);
}

TEST(LineHead, IsReadFromTheFrontUpToTheFirstCounter) {
    PlainFields fields("1,2,k,3,4,-1,2,66,-7");
    std::string_view name;
    LineHead head;
    ASSERT_TRUE(read_plain_head(fields, name, head));
    std::array<long long, 2> counters{};
    EXPECT_TRUE(fields.last_numbers(counters.data(), counters.size()));
    EXPECT_THAT(counters, testing::ElementsAre(66, -7));
}

TEST(LineHead, OnlyFourSharedTypesAreKnown) {
    const std::pair<const char*, SharedCounterTypes> rows[] = {
        {"-2", SHARED_NONE}, {"-1", SHARED_NONE},     {"0", SHARED_IVALID}, {"1", SHARED_EXT_STALL},
        {"2", SHARED_IDLE},  {"3", SHARED_TOTAL_REQ}, {"4", SHARED_NONE},   {"2147483647", SHARED_NONE},
    };
    for (const auto& [text, type] : rows) {
        const std::string line = "1,2,k,3,4," + std::string(text) + ",5,6";
        EXPECT_EQ(read_from_front(line)->head.shared_type, type) << text;
        EXPECT_EQ(read_split(line)->head.shared_type, type) << text;
    }
}

TEST(LineHead, ALineThatIsNotPlainIsNotReadFromTheFront) {
    for (const char* line : {
             "",
             "1",
             "k",
             "1,2,k",
             "1,2,k,3,4,-1,5", // no counters
             ",2,k,3,4,-1,5,6",
             "1,2,,3,4,-1,5,6",
             "1,2,k,3,4,,5,6", // empty fields
             "-1,2,k,3,4,-1,5,6",
             "1,-2,k,3,4,-1,5,6", // the signs begin the name
             "1,2,7k,3,4,-1,5,6", // the name loses its digit
             "k,1,2,3,4,-1,5,6",
             "1,k,2,3,4,-1,5,6", // the name at another place
             "1,2,k,+3,4,-1,5,6",
             "1,2,k, 3,4,-1,5,6",
             "1,2,k,3x,4,-1,5,6", // numbers for std::stoll alone
             "1,2,k,3,4,-1,2147483648,6",
             "2147483648,2,k,3,4,-1,5,6",           // no int
             "1,2,k,9223372036854775808,4,-1,5,6",  // no long long
             "1,2,k,00000000000000000001,4,-1,5,6", // more than 19 digits
         })
        EXPECT_EQ(read_from_front(line), std::nullopt) << line;
}

// Fields of any kind, most of them plain.
class RandomHeads {
  public:
    std::string line() {
        std::string text = number() + "," + number() + "," + name();
        for (int i = 0; i < 4; ++i)
            text += "," + number();
        for (std::size_t i = 1 + below(3); i != 0; --i)
            text += "," + number();
        if (below(20) == 0)
            text.resize(below(text.size()));
        return text;
    }
    // A line that is plain whatever the numbers are.
    std::string plain_line() {
        return digits(9) + "," + digits(9) + ",k" + name() + "," + signed_digits(18) + "," +
               signed_digits(18) + "," + signed_digits(9) + "," + signed_digits(9) + "," + digits(9);
    }

  private:
    std::size_t below(std::size_t bound) { return m_random() % bound; }
    std::string digits(std::size_t most) {
        std::string text;
        for (std::size_t i = 1 + below(most); i != 0; --i)
            text += static_cast<char>('0' + below(10));
        return text;
    }
    // At most that many characters.
    std::string signed_digits(std::size_t most) {
        return below(2) == 0 ? "-" + digits(most - 1) : digits(most);
    }
    std::string number() {
        constexpr std::array<const char*, 12> odd = {
            "", "-", "x", "+5", " 7", "7x", "--1", "-0", "2147483647", "-2147483648", "99999999999999999999",
            "k"};
        const std::size_t kind = below(60);
        return kind < odd.size() ? odd[kind] : kind < 20 ? signed_digits(20) : digits(3);
    }
    std::string name() {
        constexpr std::array<const char*, 7> names = {"k", "kernel_1", ".reprogram", "k-1", "a b", "-", "7k"};
        return names[below(names.size())];
    }

    std::mt19937_64 m_random{7};
};

TEST(LineHead, BothWaysAgreeOnRandomLines) {
    RandomHeads heads;
    int num_plain = 0;
    EXPECT_EQ(stderr_of([&] {
                  for (int i = 0; i < 20000; ++i) {
                      const std::string line = heads.line();
                      const auto plain = read_from_front(line);
                      if (!plain)
                          continue;
                      ++num_plain;
                      ASSERT_EQ(plain, read_split(line)) << line;
                  }
              }),
              "");
    EXPECT_GT(num_plain, 2000);
}

TEST(LineHead, EveryPlainLineIsReadFromTheFront) {
    RandomHeads heads;
    for (int i = 0; i < 5000; ++i) {
        const std::string line = heads.plain_line();
        const auto plain = read_from_front(line);
        ASSERT_NE(plain, std::nullopt) << line;
        ASSERT_EQ(plain, read_split(line)) << line;
    }
}

TEST(LineHead, TheFirstBadFieldOfASplitLineHasItsMessage) {
    EXPECT_EQ(messages_of("1,x,k,y,4,-1,5,6"),
              "ERROR: Unable to parse command queue id. Ignoring .mon line 12\n");
    EXPECT_EQ(messages_of("1,2,k,3,4,-1,2147483648,6"),
              "ERROR: Unable to parse number of counters. Ignoring .mon line 12\n");
    EXPECT_EQ(messages_of("1,2,k,3,4,2147483648,5,6"),
              "ERROR: Unable to parse shared counter type. Ignoring .mon line 12\n");
}

TEST(LineHead, ALineMayEndBeforeTheCountersIfItsFormSaysSo) {
    const std::string unexpected = "ERROR: Unexpected number of values. Ignoring .mon line 12\n";
    const std::string with_sample_time = "1,2,k,3,4", with_num_counters = "1,2,k,3,4,0,5";
    for (const LineForm form : {transfer, undescribed_transfer})
        EXPECT_EQ(read_split(with_sample_time, form), (NameAndHead{"k", {1, 2, 3, 4, SHARED_NONE, 0}}));
    for (const LineForm form : {LineForm(), undescribed})
        EXPECT_EQ(messages_of(with_sample_time, form), unexpected);
    for (const LineForm form : {undescribed, undescribed_transfer})
        EXPECT_EQ(read_split(with_num_counters, form), (NameAndHead{"k", {1, 2, 3, 4, SHARED_IVALID, 5}}));
    for (const LineForm form : {LineForm(), transfer})
        EXPECT_EQ(messages_of(with_num_counters, form), unexpected);
    EXPECT_EQ(messages_of("1,2,k,3,x", transfer),
              "ERROR: Unable to parse sample time. Ignoring .mon line 12\n");
}

// The last field isn't read unless it may be the last one.
TEST(LineHead, ALineThatEndsTooEarlyHasTheMessageOfItsNumberOfFields) {
    EXPECT_EQ(messages_of("1,2,k,3,x"), "ERROR: Unexpected number of values. Ignoring .mon line 12\n");
    EXPECT_EQ(messages_of("1,2,k,x,y"), "ERROR: Unable to parse kernel start time. Ignoring .mon line 12\n");
    EXPECT_EQ(messages_of("k"), "ERROR: Unexpected number of values. Ignoring .mon line 12\n");
}

TEST(LineHead, TheNameIsFoundByItsShape) {
    EXPECT_EQ(name_in_line("1,2,k,3"), "k");
    EXPECT_EQ(name_in_line("1,2,42x"), "x");
    EXPECT_EQ(name_in_line("-1,2,k,3"), "-1");
    EXPECT_EQ(name_in_line(",,k l,"), "k l");
    EXPECT_THROW(name_in_line("1,2,3"), std::out_of_range);
    EXPECT_THROW(name_in_line(""), std::out_of_range);
}

TEST(LineHead, TransfersHaveOneOfNineNames) {
    for (const char* name : {".mem_transfer_read", ".mem_transfer_write", ".mem_transfer_copy", ".reprogram",
                             ".mem_mirror_from_device", ".mem_mirror_to_device", ".mem_transfer",
                             ".mem_migration", ".usm_memcpy"})
        EXPECT_TRUE(is_transfer_name(name)) << name;
    for (const char* name : {"", ".", "mem_transfer", ".mem_transfer_", ".Reprogram", "reprogram", "k"})
        EXPECT_FALSE(is_transfer_name(name)) << name;
}

} // namespace
