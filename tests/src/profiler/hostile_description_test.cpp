// SPDX-License-Identifier: Apache-2.0
// Descriptions made to break the loader: each ends in a model or in an error, never in a crash.
#include "capture.h"
#include "faulty_elements.h"
#include "temp_dir.h"
#include "whole_document.h"
#include "whole_file.h"

namespace zan::test {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

// Small, and complete: every element, every attribute. There is no declaration in front: a declaration alone
// would be an empty description already.
const std::string SMALL =
    "<PROFILER><FUNCTION_LIST><FUNCTION name='f' num_compute_units='2' filename='s' line_number='7' "
    "original_name='o' user_friendly_name='u'/></FUNCTION_LIST>\n"
    "<MODULE_LIST><MODULE name='m' function='f' isKernelWrapper='true'/></MODULE_LIST>\n"
    "<PORT_LIST><PORT cntl_name='c' incr_name='n' tag='t' desc='d' module='m' flag='3'/></PORT_LIST>\n"
    "<MODULEINST_LIST><MODULEINST name='i' function='f' module='m' attribute='a' isAutorun='true' "
    "sharedOn='false'><DEBUG file='g' line='1' column='2'><CALLSITE file='h' line='3' column='4'/></DEBUG>"
    "<SIGNAL cntl_name='s' incr_name='' port_tag='t'/></MODULEINST></MODULEINST_LIST>\n"
    "<CONNECTION_LIST><CONNECTION moduleinst='i' function='f' compute_unit='1' shared_with='t' "
    "port_tag='t'/></CONNECTION_LIST></PROFILER>";

std::string repeated(const std::string& text, size_t times) {
    std::string result;
    result.reserve(text.size() * times);
    for (size_t i = 0; i < times; ++i)
        result += text;
    return result;
}

// `count` DEBUG elements in each other, the first one in an instance: the innermost is at depth count + 3.
std::string nested_debugs(size_t count) {
    const std::string place = "</MODULEINST>";
    std::string text = SMALL;
    return text.insert(text.find(place), repeated("\n<DEBUG file='x' line='1' column='1'>", count) +
                                             repeated("</DEBUG>", count));
}

// Loads with debug text, which prints the document as well; the text itself is dropped.
bool loads_in_debug_mode(const std::string& xml) {
    struct SilentLoader : profiler::ProfilerConfigXmlLoader {
        SilentLoader() : ProfilerConfigXmlLoader(true) {}
        void debug(const std::string&) override {}
    } loader;
    const std::unique_ptr<profiler::ProfilerConfig> config(loader.load_xml(xml.c_str()));
    EXPECT_EQ(loader.get_num_errors() > 0, !config);
    return config != nullptr;
}

TEST(HostileDescription, TheSmallDocumentIsGood) {
    EXPECT_THAT(loaded(SMALL).errors, ElementsAre());
    EXPECT_TRUE(loads_in_debug_mode(SMALL));
}

TEST(HostileDescription, AfterAFaultOfAnElementNothingInsideItIsRead) {
    std::size_t num_elements = 0;
    for (const auto& [name, text] : faulty_elements(SMALL)) {
        if (name == "PROFILER" || name.ends_with("_LIST"))
            continue; // these may have any attribute
        ++num_elements;
        EXPECT_THAT(loaded(text).errors, ElementsAre(testing::EndsWith("\nUnexpected attribute 'x'.\n")))
            << name;
    }
    EXPECT_EQ(num_elements, 8u);
}

TEST(HostileDescription, CutAtEveryByte) {
    const std::string text = SMALL + " \n";
    for (size_t size = 0; size <= text.size(); ++size) {
        const auto result = loaded(text.substr(0, size));
        EXPECT_EQ(result.model != nullptr, size >= SMALL.size()) << "cut at " << size;
        EXPECT_LE(result.errors.size(), 1u) << "cut at " << size;
    }
}

TEST(HostileDescription, FileCutAtEveryByte) {
    const TempDir folder;
    const std::string path = folder.path("a.xml");
    for (size_t size = 0; size < SMALL.size(); size += 7) {
        write_file(path, SMALL.substr(0, size));
        profiler::ProfilerConfigXmlLoader loader(false);
        EXPECT_THAT(stdout_of([&] { EXPECT_EQ(loader.load_file(path.c_str()), nullptr) << size; }),
                    StartsWith("ERROR FOUND: XML_ERROR_"));
    }
}

class ReplacedByte : public testing::TestWithParam<char> {};

INSTANTIATE_TEST_SUITE_P(HostileDescription, ReplacedByte,
                         testing::Values('\0', '<', '>', '"', '\'', '\xff', '&', '/', '=', ' ', '\n', '!',
                                         '?', '0', 'x'),
                         [](const auto& info) {
                             return "Code" + std::to_string(static_cast<unsigned char>(info.param));
                         });

// What is left may still be good. That there is a model or an error, and not both, is checked by the load.
TEST_P(ReplacedByte, AtEveryPlace) {
    for (size_t i = 0; i < SMALL.size(); ++i) {
        std::string text = SMALL;
        text[i] = GetParam();
        EXPECT_EQ(loaded(text).model != nullptr, loads_in_debug_mode(text)) << "at " << i;
    }
}

TEST(HostileDescription, ANulInAnyPlaceCutsTheText) {
    for (size_t i = 0; i < SMALL.size(); ++i) {
        std::string text = SMALL;
        text[i] = '\0';
        EXPECT_FALSE(loaded(text).model) << "at " << i;
    }
}

TEST_P(ReplacedByte, InsertedAtEveryPlace) {
    for (size_t i = 0; i <= SMALL.size(); ++i)
        loaded(std::string(SMALL).insert(i, 1, GetParam()));
}

TEST(HostileDescription, EachByteLeftOutOrDoubled) {
    for (size_t i = 0; i < SMALL.size(); ++i) {
        loaded(std::string(SMALL).erase(i, 1));
        loaded(std::string(SMALL).insert(i, 1, SMALL[i]));
    }
}

// The parser takes 98 levels, three of them outside the first DEBUG. One DEBUG in another is too many
// already.
TEST(HostileDescription, NestingUpToTheParsersLimit) {
    EXPECT_TRUE(loaded(nested_debugs(1)).model);
    for (const size_t count : {2u, 50u, 95u}) {
        expect_refused(nested_debugs(count), {at_line(6, "Unexpected element 'DEBUG'.")});
        EXPECT_FALSE(loads_in_debug_mode(nested_debugs(count)));
    }
}

TEST(HostileDescription, NestingBeyondTheParsersLimit) {
    for (const size_t count : {96u, 97u, 1000u, 1000000u})
        EXPECT_THAT(loaded(nested_debugs(count)).errors,
                    ElementsAre(StartsWith("XML error: XML_ELEMENT_DEPTH_EXCEEDED, ")));
    EXPECT_EQ(loaded(repeated("<PROFILER>", 100000)).errors.size(), 1u);
}

TEST(HostileDescription, AnAttributeOf50Megabytes) {
    const std::string big(50'000'000, 'x');
    const auto config = config_of(WholeDocument().with("FUNCTION", "filename", big));
    EXPECT_EQ(config->getFunction(0)->getFilename(), big);
}

TEST(HostileDescription, AMessageOf50Megabytes) {
    const std::string big(50'000'000, 'x');
    expect_refused(WholeDocument().with("MODULE", "function", big),
                   {without_line("Function \"" + big + "\" does not exist in Module \"m\".")});
}

TEST(HostileDescription, ANumberOf50Megabytes) {
    EXPECT_EQ(config_of(WholeDocument().with("PORT", "flag", std::string(50'000'000, '0') + "5"))
                  ->getPort(0)
                  ->getFlag(),
              5u);
    // Beyond 64 bits the conversion saturates, and its lower half is kept.
    EXPECT_EQ(
        config_of(WholeDocument().with("PORT", "flag", std::string(50'000'000, '9')))->getPort(0)->getFlag(),
        4294967295u);
}

TEST(HostileDescription, AnElementAndAnAttributeNameOf50Megabytes) {
    const std::string big(50'000'000, 'x');
    expect_refused("<PROFILER>\n<" + big + "/></PROFILER>",
                   {at_line(2, "Unexpected element '" + big + "'.")});
    expect_refused(WholeDocument().renamed("DEBUG", "column", big),
                   {at_line(53, "Unexpected attribute '" + big + "'.")});
}

TEST(HostileDescription, TwentyThousandAttributes) {
    constexpr unsigned int count = 20000;
    std::string attributes;
    for (unsigned int i = 0; i < count; ++i)
        attributes += "\na" + std::to_string(i) + "='&lt;'";
    const auto result =
        loaded("<PROFILER><FUNCTION_LIST><FUNCTION" + attributes + "/></FUNCTION_LIST></PROFILER>");
    ASSERT_EQ(result.errors.size(), count);
    EXPECT_EQ(result.errors.front(), at_line(2, "Unexpected attribute 'a0'."));
    EXPECT_EQ(result.errors.back(), at_line(20001, "Unexpected attribute 'a19999'."));
}

TEST(HostileDescription, ManyElements) {
    std::string text = SMALL;
    std::string insts;
    std::string connections;
    for (int i = 0; i < 20000; ++i) {
        const std::string name = "i" + std::to_string(i);
        insts +=
            "<MODULEINST name='" + name + "' function='f' module='m' attribute='' isAutorun='' sharedOn=''/>";
        connections += "<CONNECTION moduleinst='" + name + "' function='f' compute_unit='0' port_tag='t'/>";
    }
    text.insert(text.find("</CONNECTION_LIST>"), connections);
    text.insert(text.find("</MODULEINST_LIST>"), insts);
    const auto config = config_of(text);
    EXPECT_EQ(config->getNumModuleInsts(), 20001u);
    EXPECT_EQ(config->getConnection(20000)->getModuleInst(), config->getModuleInst(20000));
}

// Values are decoded when they are read, after the parser has taken the document.
TEST(HostileDescription, Entities) {
    for (const char* value : {"&unknown;", "&", "&;", "&amp", "a & b", "&lt;&gt;&amp;&quot;&apos;",
                              "&#65;&#x41;", "&#x10FFFF;", "&#xD800;", "&#0;", "&#;", "&#x;", "&#xZZ;", "&#x",
                              "&#99999999999;", "&#xFFFFFFFFFFFFFFFF;", "&#-1;", "&#x110000;", "&#"}) {
        SCOPED_TRACE(value);
        EXPECT_TRUE(loaded(WholeDocument().with("FUNCTION", "filename", value).text()).model);
        expect_refused(WholeDocument().with("PORT", "flag", value),
                       {at_line(36, "Incorrect type for attribute 'flag' on element 'PORT'."),
                        at_line(36, "Unsupported flag string.")});
    }
}

TEST(HostileDescription, ADigitMayBeAnEntity) {
    EXPECT_EQ(config_of(WholeDocument().with("PORT", "flag", "&#52;&#x32;"))->getPort(0)->getFlag(), 42u);
}

TEST(HostileDescription, EntityDefinitionsAreNotExpanded) {
    const auto config = config_of("<!DOCTYPE PROFILER [<!ENTITY a '&b;&b;'><!ENTITY b '&a;&a;'>]>" +
                                  WholeDocument().with("FUNCTION", "filename", "&a;").text());
    EXPECT_EQ(config->getFunction(0)->getFilename(), "&a;");
}

TEST(HostileDescription, ByteOrderMarks) {
    EXPECT_TRUE(loaded("\xef\xbb\xbf" + SMALL).model);
    EXPECT_FALSE(loaded("\xef\xbb\xbf").model);
    for (const char* mark : {"\xef", "\xef\xbb", "\xfe\xff", "\xff\xfe", "\xef\xbb\xbf\xef\xbb\xbf"})
        loaded(mark + SMALL);
}

TEST(HostileDescription, NulsEndTheText) {
    EXPECT_TRUE(loaded(SMALL + std::string("\0<x", 3)).model);
    EXPECT_FALSE(loaded(std::string(1, '\0') + SMALL).model);
    EXPECT_FALSE(loaded(std::string(1000, '\0')).model);
}

TEST(HostileDescription, NulsInAFile) {
    const TempDir folder;
    const std::string path = folder.path("a.xml");
    for (size_t i = 0; i <= SMALL.size(); i += 3) {
        write_file(path, std::string(SMALL).insert(i, 1, '\0'));
        profiler::ProfilerConfigXmlLoader loader(false);
        stdout_of([&] {
            const std::unique_ptr<profiler::ProfilerConfig> config(loader.load_file(path.c_str()));
            EXPECT_EQ(loader.get_num_errors() > 0, !config) << "at " << i;
        });
    }
}

TEST(HostileDescription, CDataAndCommentsEverywhere) {
    const std::string noise = "<![CDATA[<MODULE/>]]><!--<MODULE/>--><!MODULE>text";
    size_t from = SMALL.find('>') + 1;
    std::string between = SMALL.substr(0, from);
    for (; from < SMALL.size(); from = SMALL.find('>', from) + 1)
        between += noise + SMALL.substr(from, SMALL.find('>', from) + 1 - from);
    EXPECT_TRUE(loaded(between).model);
    EXPECT_TRUE(loads_in_debug_mode(between));
    for (size_t i = 0; i <= SMALL.size(); ++i)
        loaded(std::string(SMALL).insert(i, noise));
}

TEST(HostileDescription, PiecesInAnyOrder) {
    const std::string pieces[] = {"<PROFILER>",
                                  "</PROFILER>",
                                  "<FUNCTION_LIST>",
                                  "</FUNCTION_LIST>",
                                  "<DEBUG ",
                                  "name='f'",
                                  "/>",
                                  "<!--",
                                  "-->",
                                  "<![CDATA[",
                                  "]]>",
                                  "<?xml",
                                  "?>",
                                  "<!DOCTYPE",
                                  "&lt;"};
    for (const auto& a : pieces) {
        for (const auto& b : pieces) {
            for (const auto& c : pieces)
                loaded(a + b + c + b + a);
        }
    }
}

TEST(HostileDescription, WhiteSpaceOnly) {
    for (const char* text : {" ", "\n", "\r\n\t ", "\f"})
        EXPECT_FALSE(loaded(text).model);
}

} // namespace
} // namespace zan::test
