// SPDX-License-Identifier: Apache-2.0
// Tables of attributes: what is read to where, what is reported, and what ends the reading.
#include "BaseAttributeTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "xml_probe.h"

namespace zan::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using xml::AttributeRow;
using xml::AttributeState;
using xml::check_attributes;
using xml::is_not_negative;
using xml::is_positive;
using xml::read_attributes;
using xml::read_if;
using xml::read_rows;
using xml::read_to;
using xml::read_word;
using xml::with_value;
using xml::Word;
using enum xml::AttributeNeed;

constexpr Word<int> box_sizes[] = {{"small", 1}, {"large", 9}};

struct Box {
    std::string name = "none";
    unsigned int count = 7;
    float weight = 0.5f;
    int size = 0;
    unsigned long long address = 0;
    std::string label;

    void set_address(unsigned long long value) { address = value; }
    void set_name(std::string value) { name = std::move(value); }
};

void add_label(Box& box, const std::string& text) {
    box.label += text + ".";
}

// Refuses a box named "bad", once its name is known.
struct BoxVisitor : ProbeVisitor {
    using ProbeVisitor::ProbeVisitor;

    bool check_name(const tinyxml2::XMLElement& elem, const Box& box) {
        return box.name != "bad" || report_error(elem, "Bad name.");
    }
};

constexpr AttributeRow<BoxVisitor, Box> box_rows[] = {
    {"name", required, read_to<&Box::set_name>, "No name.", &BoxVisitor::check_name},
    {"count", optional, read_to<&Box::count>, "No count.", nullptr, "name"},
    {"weight", optional, read_if<is_not_negative, &Box::weight>, "Too light."},
    {"size", optional, read_word<box_sizes, &Box::size>, "No size '{}'."},
    {"address", optional, read_if<is_positive, &Box::set_address, xml::unsigned64_hex>, "No address."},
    {"label", optional, read_to<add_label>},
};

struct BoxReading {
    // The element is in line 1, and its attributes begin in line 2.
    explicit BoxReading(const std::string& attributes) {
        const auto doc = parsed("<box\n" + attributes + "/>");
        state = read_rows(visitor, *doc->RootElement(), box_rows, box);
    }

    RecordingCallbacks callbacks;
    BoxVisitor visitor{&callbacks};
    Box box;
    AttributeState state;
};

std::string box_error(int line, const std::string& text) {
    return "Error in 'a.xml', line " + std::to_string(line) + "\n" + text + "\n";
}

TEST(AttributeTable, FieldsSettersAndFunctionsTakeTheValues) {
    const BoxReading reading("name='n' count='3' weight='2.5' size='large' address='0x10' label='l'");
    EXPECT_EQ(reading.state, AttributeState::good);
    EXPECT_EQ(reading.box.name, "n");
    EXPECT_EQ(reading.box.count, 3u);
    EXPECT_EQ(reading.box.weight, 2.5f);
    EXPECT_EQ(reading.box.size, 9);
    EXPECT_EQ(reading.box.address, 16u);
    EXPECT_EQ(reading.box.label, "l.");
    EXPECT_THAT(reading.callbacks.errors, IsEmpty());
}

TEST(AttributeTable, MissingOptionalAttributesLeaveTheRecordAsItIs) {
    const BoxReading reading("name='n'");
    EXPECT_EQ(reading.state, AttributeState::good);
    EXPECT_EQ(reading.box.count, 7u);
    EXPECT_EQ(reading.box.weight, 0.5f);
    EXPECT_EQ(reading.box.label, "");
}

TEST(AttributeTable, AMissingRequiredAttributeIsUnreadable) {
    const BoxReading reading("size='tiny'");
    EXPECT_EQ(reading.state, AttributeState::unreadable);
    EXPECT_THAT(
        reading.callbacks.errors,
        ElementsAre(box_error(1, "Expected attribute 'name' on element 'box'."), box_error(1, "No name.")));
}

TEST(AttributeTable, AMessageMayBeReportedAtAnotherAttribute) {
    const BoxReading reading("name='n'\ncount='x'");
    EXPECT_EQ(reading.state, AttributeState::unreadable);
    EXPECT_THAT(reading.callbacks.errors,
                ElementsAre(box_error(3, "Incorrect type for attribute 'count' on element 'box'."),
                            box_error(2, "No count.")));
    EXPECT_EQ(reading.box.count, 7u);
}

TEST(AttributeTable, AValueOutOfRangeIsRefused) {
    for (const char* weight : {"-0.5", "nan"}) {
        const BoxReading reading("name='n' weight='" + std::string(weight) + "'");
        EXPECT_EQ(reading.state, AttributeState::refused) << weight;
        EXPECT_THAT(reading.callbacks.errors, ElementsAre(box_error(2, "Too light."))) << weight;
        EXPECT_EQ(reading.box.weight, 0.5f) << weight;
    }
    EXPECT_EQ(BoxReading("name='n' weight='0'").state, AttributeState::good);
    EXPECT_EQ(BoxReading("name='n' weight='x'").state, AttributeState::unreadable);
    EXPECT_EQ(BoxReading("name='n' address='0'").state, AttributeState::refused);
    EXPECT_EQ(BoxReading("name='n' address='x'").state, AttributeState::unreadable);
}

TEST(AttributeTable, AnUnknownWordIsRefusedAndShown) {
    const BoxReading reading("name='n' size='{} wide'");
    EXPECT_EQ(reading.state, AttributeState::refused);
    EXPECT_THAT(reading.callbacks.errors, ElementsAre(box_error(2, "No size '{} wide'.")));
}

TEST(AttributeTable, TheFirstFaultEndsTheReading) {
    const BoxReading reading("name='bad' count='3' size='tiny'");
    EXPECT_EQ(reading.state, AttributeState::refused);
    EXPECT_THAT(reading.callbacks.errors, ElementsAre(box_error(1, "Bad name.")));
    EXPECT_EQ(reading.box.count, 7u);
}

TEST(AttributeTable, OtherAttributesAreUnexpected) {
    RecordingCallbacks callbacks;
    BoxVisitor visitor(&callbacks);
    const auto doc = parsed("<box name='n' extra='' label='l' x=''/>");
    EXPECT_FALSE(check_attributes(visitor, *doc->RootElement(), box_rows, {"extra"}));
    EXPECT_THAT(callbacks.errors, ElementsAre(box_error(1, "Unexpected attribute 'x'.")));
    BoxVisitor second(&callbacks);
    EXPECT_TRUE(check_attributes(second, *doc->RootElement(), box_rows, {"x", "extra"}));
}

TEST(AttributeTable, NothingIsReadFromAnElementWithOtherAttributes) {
    RecordingCallbacks callbacks;
    BoxVisitor visitor(&callbacks);
    Box box;
    EXPECT_FALSE(read_attributes(visitor, *parsed("<box name='n' x=''/>")->RootElement(), box_rows, box));
    EXPECT_EQ(box.name, "none");
    BoxVisitor second(&callbacks);
    EXPECT_TRUE(read_attributes(second, *parsed("<box name='n'/>")->RootElement(), box_rows, box));
    EXPECT_EQ(box.name, "n");
}

struct BoxByAttributes {
    explicit BoxByAttributes(const std::string& attributes) {
        const auto doc = parsed("<box\n" + attributes + "/>");
        is_read = read_attributes(visitor, *doc->RootElement(), box_rows, box);
    }

    RecordingCallbacks callbacks;
    BoxVisitor visitor{&callbacks};
    Box box;
    bool is_read;
};

TEST(AttributeTable, AttributesOfAnElementMayHaveAnyOrder) {
    for (const char* attributes :
         {"name='n' count='3' weight='2.5' label='l'", "label='l' weight='2.5' count='3' name='n'",
          "weight='2.5' name='n' label='l' count='3'"}) {
        const BoxByAttributes reading(attributes);
        EXPECT_TRUE(reading.is_read) << attributes;
        EXPECT_EQ(reading.box.name, "n") << attributes;
        EXPECT_EQ(reading.box.count, 3u) << attributes;
        EXPECT_EQ(reading.box.weight, 2.5f) << attributes;
        EXPECT_EQ(reading.box.label, "l.") << attributes;
    }
}

TEST(AttributeTable, TheFirstFaultInTheOrderOfTheTableIsReported) {
    const BoxByAttributes reading("size='tiny'\ncount='x'\nname='n'");
    EXPECT_FALSE(reading.is_read);
    EXPECT_THAT(reading.callbacks.errors,
                ElementsAre(box_error(3, "Incorrect type for attribute 'count' on element 'box'."),
                            box_error(4, "No count.")));
}

TEST(AttributeTable, UnexpectedAttributesAreReportedInTheirOrder) {
    const BoxByAttributes reading("z='1'\nname='n'\na='2'\nnam='3'\nnames='4'");
    EXPECT_FALSE(reading.is_read);
    EXPECT_THAT(reading.callbacks.errors, ElementsAre(box_error(2, "Unexpected attribute 'z'."),
                                                      box_error(4, "Unexpected attribute 'a'."),
                                                      box_error(5, "Unexpected attribute 'nam'."),
                                                      box_error(6, "Unexpected attribute 'names'.")));
}

TEST(AttributeTable, NothingIsReadAfterAnError) {
    RecordingCallbacks callbacks;
    BoxVisitor visitor(&callbacks);
    visitor.report_error("x");
    Box box;
    EXPECT_FALSE(read_attributes(visitor, *parsed("<box name='n'/>")->RootElement(), box_rows, box));
    EXPECT_EQ(box.name, "none");
}

TEST(WithValue, ReplacesTheFirstBraces) {
    EXPECT_EQ(with_value("No '{}'.", "a"), "No 'a'.");
    EXPECT_EQ(with_value("{}{}", "{}"), "{}{}");
    EXPECT_EQ(with_value("Nothing.", "a"), "Nothing.");
    EXPECT_EQ(with_value("'{}'", ""), "''");
}

} // namespace
} // namespace zan::test
