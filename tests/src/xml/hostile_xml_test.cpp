// SPDX-License-Identifier: Apache-2.0
// Documents made to break the readers: each ends in a model or in an error, never in a crash. A small schema
// with a child visitor and all attribute types stands for the real ones.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <optional>

#include "BaseXmlLoader.h"
#include "TableVisitor.h"
#include "temp_dir.h"
#include "whole_file.h"
#include "xml_probe.h"

namespace zan::test {
namespace {

using testing::StartsWith;
using tinyxml2::XMLElement;
using enum xml::Occurrence;

struct Item {
    std::string name;
    unsigned int count = 0;
    xml::unsigned_hex mask;
    xml::unsigned64_hex address;
    float ratio = 0.0f;
};
using Items = std::vector<Item>;

// LIST of ITEM.
class ListVisitor : public xml::TableVisitor {
  public:
    ListVisitor(BaseVisitor* parent, Items* items) : TableVisitor(elements(), parent), m_items(items) {}

  private:
    static Rows elements() {
        static constexpr xml::ElementRow rows[] = {
            {"LIST", xml::outermost, any, xml::descend},
            {"ITEM", "LIST", any, xml::call<&ListVisitor::visit_item>},
        };
        return rows;
    }

    bool visit_item(const XMLElement& elem) {
        if (!report_unexpected_attrs(elem, 5, "name", "count", "mask", "address", "ratio"))
            return !m_has_error;
        Item item;
        query_attribute(elem, "name", &item.name, true, true);
        query_attribute(elem, "count", &item.count, true, false);
        query_attribute(elem, "mask", &item.mask, true, false);
        query_attribute(elem, "address", &item.address, true, false);
        query_attribute(elem, "ratio", &item.ratio, true, false);
        m_items->push_back(item);
        return !m_has_error;
    }

    Items* m_items;
};

// ROOT with at most three LISTs, and TREE in TREE to any depth.
class RootVisitor : public xml::TableVisitor {
  public:
    RootVisitor(Items* items, xml::VisitorCallbacks* callbacks, bool debug)
        : TableVisitor(elements(), callbacks, debug), m_items(items) {}

  private:
    static Rows elements() {
        static constexpr xml::ElementRow rows[] = {
            {"ROOT", xml::outermost, once, xml::descend},
            {"TREE", xml::anywhere, any, xml::descend},
            {"LIST", "ROOT", any, xml::call<&RootVisitor::visit_list>},
        };
        return rows;
    }

    bool visit_list(const XMLElement& elem) {
        if (!report_unexpected_elem_stack_count(elem, 1, 3))
            return !m_has_error;
        ListVisitor child(this, m_items);
        return hand_over(elem, &child);
    }

    Items* m_items;
};

// Loads with all steps on, printing included, and drops the debug text.
struct HostileLoader : xml::BaseXmlLoader {
    std::unique_ptr<Items> load_xml(const std::string& text) { return load(parse_xml(text.c_str())); }
    std::unique_ptr<Items> load_file(const std::string& path) { return load(parse_file(path.c_str())); }
    void debug(const std::string& text) override { debug_size += text.size(); }

    size_t debug_size = 0;

  private:
    std::unique_ptr<Items> load(tinyxml2::XMLDocument* doc) {
        return std::unique_ptr<Items>(load_model<Items, RootVisitor>(doc, true));
    }
};

// The number of items that the text loads to; a refused text has to have a message, a loaded one none.
std::optional<size_t> items_of(const std::string& text) {
    HostileLoader loader;
    const auto items = loader.load_xml(text);
    EXPECT_EQ(loader.get_num_errors() > 0, !items) << text.substr(0, 1000);
    return items ? std::optional(items->size()) : std::nullopt;
}

std::string repeated(const std::string& text, size_t times) {
    std::string all;
    all.reserve(text.size() * times);
    for (size_t i = 0; i < times; ++i)
        all += text;
    return all;
}

std::string item_with(const std::string& attributes) {
    return "<ROOT><LIST><ITEM " + attributes + "/></LIST></ROOT>";
}

const std::string SMALL =
    "\xef\xbb\xbf<?xml version=\"1.0\"?>\n"
    "<!DOCTYPE ROOT [<!ENTITY e \"x\">]>\n"
    "<!-- comment -->\n"
    "<ROOT>\n"
    "  <LIST><ITEM name='a&lt;&#65;&#x42;' count='1'\n mask=\"0xff\" address='0xffffffffffffffff' "
    "ratio='1.5e3'/>\n"
    "    text <![CDATA[<ITEM/>]]> <!-- <ITEM> --></LIST>\n"
    "  <LIST/>\n"
    "</ROOT>\n"
    "<!-- end -->\n";

TEST(HostileXml, TheSmallDocumentItselfIsGood) {
    HostileLoader loader;
    const auto items = loader.load_xml(SMALL);
    ASSERT_TRUE(items) << loader.get_error(0);
    ASSERT_EQ(items->size(), 1u);
    const Item& item = items->front();
    EXPECT_EQ(item.name, "a<AB");
    EXPECT_EQ(item.count, 1u);
    EXPECT_EQ(item.mask, 255u);
    EXPECT_EQ(item.address, 18446744073709551615ull);
    EXPECT_EQ(item.ratio, 1500.0f);
    EXPECT_GT(loader.debug_size, SMALL.size() / 2);
}

TEST(HostileXml, CutAtEveryByte) {
    const size_t end_of_root = SMALL.find("</ROOT>") + 7;
    const size_t end_of_comment = SMALL.size() - 1;
    for (size_t size = 0; size < SMALL.size(); ++size) {
        const auto items = items_of(SMALL.substr(0, size));
        // Until the root is closed there is no root, or an open one, which the parser refuses.
        if (size > SMALL.find("<ROOT>") && size < end_of_root) {
            EXPECT_FALSE(items) << "cut at " << size;
        }
        if (size == end_of_root || size == end_of_comment) {
            EXPECT_EQ(items, 1u) << "cut at " << size;
        }
    }
}

TEST(HostileXml, EveryByteReplaced) {
    for (size_t i = 0; i < SMALL.size(); ++i) {
        for (const char c : {'<', '>', '/', '&', '\'', '"', '\0', ' ', '\xff', ']', '-', '!', '?', '='}) {
            std::string text = SMALL;
            text[i] = c;
            items_of(text);
        }
    }
}

TEST(HostileXml, EveryByteRemovedOrDoubled) {
    for (size_t i = 0; i < SMALL.size(); ++i) {
        items_of(std::string(SMALL).erase(i, 1));
        items_of(std::string(SMALL).insert(i, 1, SMALL[i]));
    }
}

TEST(HostileXml, NestingUpToTheParsersLimit) {
    // Deepest that the parser takes, and the first that it refuses.
    const auto nested = [](size_t depth) { return repeated("<TREE>", depth) + repeated("</TREE>", depth); };
    EXPECT_EQ(items_of(nested(98)), 0u);
    EXPECT_EQ(items_of(nested(99)), std::nullopt);
    EXPECT_EQ(items_of(nested(1000000)), std::nullopt);
    EXPECT_EQ(items_of(repeated("<TREE>", 1000000)), std::nullopt);
    EXPECT_EQ(items_of(repeated("<TREE a='>'", 1000)), std::nullopt);
}

TEST(HostileXml, TheLimitIsNamedInTheError) {
    HostileLoader loader;
    EXPECT_FALSE(loader.load_xml(repeated("<TREE>", 200)));
    EXPECT_THAT(loader.get_error(0), StartsWith("XML error: XML_ELEMENT_DEPTH_EXCEEDED, "));
}

TEST(HostileXml, ManySiblings) {
    EXPECT_EQ(items_of("<ROOT><LIST>" + repeated("<ITEM name='x'/>", 100000) + "</LIST></ROOT>"), 100000u);
    EXPECT_EQ(items_of("<ROOT>" + repeated("<LIST/>", 100000) + "</ROOT>"), std::nullopt);
    EXPECT_EQ(items_of(repeated("<ROOT/>", 100000)), std::nullopt);
    EXPECT_EQ(items_of(repeated("</ROOT>", 100000)), 0u) << "the parser takes this for an empty document";
}

constexpr size_t FIFTY_MEGABYTES = 50'000'000;

TEST(HostileXml, AnAttributeOfFiftyMegabytes) {
    HostileLoader loader;
    const auto items = loader.load_xml(item_with("name='" + std::string(FIFTY_MEGABYTES, 'x') + "'"));
    ASSERT_TRUE(items);
    EXPECT_EQ(items->at(0).name.size(), FIFTY_MEGABYTES);
}

TEST(HostileXml, ANumberOfFiftyMegabytes) {
    const std::string digits(FIFTY_MEGABYTES, '9');
    HostileLoader loader;
    const auto items = loader.load_xml(item_with("name='' count='" + digits + "' address='" + digits + "'"));
    ASSERT_TRUE(items);
    EXPECT_EQ(items->at(0).count, 4294967295u);
    EXPECT_EQ(items->at(0).address, 18446744073709551615ull);
}

TEST(HostileXml, AFloatOfFiveMegabytes) {
    HostileLoader loader;
    const auto items = loader.load_xml(item_with("name='' ratio='" + std::string(5'000'000, '9') + "'"));
    ASSERT_TRUE(items);
    EXPECT_EQ(items->at(0).ratio, std::numeric_limits<float>::infinity());
}

TEST(HostileXml, ANumberThatFailsAfterFiftyMegabytes) {
    HostileLoader loader;
    EXPECT_FALSE(loader.load_xml(item_with("name='' mask='0" + std::string(FIFTY_MEGABYTES, '7') + "8'")));
    ASSERT_EQ(loader.get_num_errors(), 1u);
    EXPECT_EQ(loader.get_error(0),
              "Error in '[mem]', line 1\nIncorrect type for attribute 'mask' on element 'ITEM'.\n");
}

TEST(HostileXml, NamesOfFiveMegabytes) {
    const std::string name(5'000'000, 'n');
    HostileLoader loader;
    EXPECT_FALSE(loader.load_xml("<" + name + "/>"));
    EXPECT_EQ(loader.get_error(0), "Error in '[mem]', line 1\nUnexpected element '" + name + "'.\n");
    EXPECT_FALSE(loader.load_xml(item_with(name + "=''")));
    EXPECT_EQ(loader.get_error(0), "Error in '[mem]', line 1\nUnexpected attribute '" + name + "'.\n");
}

// Each of the attributes is a stray one, and has its own error.
void expect_each_attribute_reported(size_t count) {
    std::string attributes;
    for (size_t i = 0; i < count; ++i)
        attributes += "\na" + std::to_string(i) + "=''";
    HostileLoader loader;
    EXPECT_FALSE(loader.load_xml(item_with(attributes)));
    ASSERT_EQ(loader.get_num_errors(), count);
    EXPECT_EQ(loader.get_error(0), "Error in '[mem]', line 2\nUnexpected attribute 'a0'.\n");
    const std::string last = std::to_string(count - 1);
    EXPECT_EQ(
        loader.get_error(static_cast<unsigned int>(count - 1)),
        "Error in '[mem]', line " + std::to_string(count + 1) + "\nUnexpected attribute 'a" + last + "'.\n");
}

TEST(HostileXml, TenThousandAttributes) {
    expect_each_attribute_reported(10000);
}

TEST(HostileXml, Entities) {
    // Values are decoded when they are read, after the parser has accepted the document; none can make it
    // fail.
    for (const char* value : {"&unknown;", "&", "&;", "&amp", "a & b", "&lt;&gt;&amp;&quot;&apos;",
                              "&#65;&#x41;", "&#x10FFFF;", "&#xD800;", "&#0;", "&#;", "&#x;", "&#xZZ;", "&#x",
                              "&#99999999999;", "&#xFFFFFFFFFFFFFFFF;", "&#-1;", "&#x110000;", "&#"})
        EXPECT_EQ(items_of(item_with("name='" + std::string(value) + "'")), 1u) << value;
    EXPECT_EQ(items_of(item_with("name='" + repeated("&lt;", 1000000) + "'")), 1u);
}

TEST(HostileXml, EntityDefinitionsAreNotExpanded) {
    HostileLoader loader;
    const auto items = loader.load_xml("<!DOCTYPE ROOT [<!ENTITY a '&b;&b;'><!ENTITY b '&a;&a;'>]>" +
                                       item_with("name='&a;'"));
    ASSERT_TRUE(items);
    EXPECT_EQ(items->at(0).name, "&a;");
}

TEST(HostileXml, NulEndsTheText) {
    const std::string good = item_with("name='x'");
    EXPECT_EQ(items_of(good + std::string("\0<garbage", 9)), 1u);
    EXPECT_EQ(items_of(std::string("\0", 1) + good), std::nullopt);
    EXPECT_EQ(items_of(std::string(100, '\0')), std::nullopt);
}

TEST(HostileXml, NulInAFile) {
    const TempDir folder;
    const std::string path = folder.path("a.xml");
    for (size_t i = 0; i <= SMALL.size(); ++i) {
        write_file(path, std::string(SMALL).insert(i, 1, '\0'));
        HostileLoader loader;
        testing::internal::CaptureStdout();
        const auto items = loader.load_file(path);
        testing::internal::GetCapturedStdout();
        EXPECT_EQ(loader.get_num_errors() > 0, !items) << "at " << i;
    }
}

TEST(HostileXml, ByteOrderMarks) {
    const std::string good = item_with("name='x'");
    EXPECT_EQ(items_of("\xef\xbb\xbf" + good), 1u);
    EXPECT_EQ(items_of("\xef\xbb\xbf"), std::nullopt);
    for (const char* mark : {"\xef", "\xef\xbb", "\xfe\xff", "\xff\xfe", "\xef\xbb\xbf\xef\xbb\xbf"})
        items_of(mark + good);
}

TEST(HostileXml, CDataAndCommentsEverywhere) {
    const std::string noise = "<![CDATA[<ITEM/>]]><!--<ITEM/>--><?pi <ITEM?><!ITEM>text";
    const std::string inside = "<ROOT>@<LIST>@<ITEM name='x'>@</ITEM>@</LIST>@</ROOT>";
    std::string text;
    for (const char c : inside)
        text += c == '@' ? "<![CDATA[<ITEM/>]]><!--<ITEM/>--><!ITEM>text" : std::string(1, c);
    EXPECT_EQ(items_of(text), 1u);
    for (size_t i = 0; i <= SMALL.size(); ++i)
        items_of(std::string(SMALL).insert(i, noise));
}

TEST(HostileXml, OddPiecesInAnyOrder) {
    const std::string pieces[] = {"<ROOT>",    "</ROOT>", "<LIST>",    "</LIST>", "<ITEM name=''", "/>",
                                  "<!--",      "-->",     "<![CDATA[", "]]>",     "<?xml",         "?>",
                                  "<!DOCTYPE", "&lt;",    "=",         "'"};
    for (const auto& a : pieces) {
        for (const auto& b : pieces) {
            for (const auto& c : pieces)
                items_of(a + b + c + b + a);
        }
    }
}

TEST(HostileXml, WhiteSpaceOnly) {
    for (const char* text : {" ", "\n", "\r\n\t ", "\f"})
        EXPECT_EQ(items_of(text), std::nullopt);
}

} // namespace
} // namespace zan::test
