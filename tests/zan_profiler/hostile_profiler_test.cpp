// Profiler descriptions made to break the reader: each ends in an error or a model, never in a crash.
#include "profiler_document.h"

namespace zan::test {
namespace {

// A document with every element, and with comments, entities and sections of characters between them.
std::string whole_document() {
    ProfilerDocument document;
    document.functions += "<!-- <FUNCTION> --> text <![CDATA[<FUNCTION/>]]>";
    document.insts =
        "<MODULEINST name='m' function='k' module='lsu' attribute='a&lt;&#65;' isAutorun='false' "
        "sharedOn='true'><DEBUG file='f' line='1' column='2'><CALLSITE file='g' line='3' column='4'/>"
        "</DEBUG><SIGNAL cntl_name='s' incr_name='r' port_tag='t'/></MODULEINST>";
    return "\xef\xbb\xbf<?xml version='1.0'?>\n<!DOCTYPE PROFILER>\n" + document.text() + "<!-- end -->\n";
}

// Whether the text gives a model; a refused one has a message, a model none.
bool loads(const std::string& text) {
    const LoadedProfiler loaded = load(text);
    EXPECT_EQ(loaded.errors.empty(), loaded.config != nullptr) << text.substr(0, 1000);
    return loaded.config != nullptr;
}

TEST(HostileProfiler, TheWholeDocumentItselfIsGood) {
    const LoadedProfiler loaded = load(whole_document());
    EXPECT_THAT(loaded.errors, testing::IsEmpty());
    ASSERT_TRUE(loaded.config);
    EXPECT_EQ(loaded.config->getModuleInst(0)->getAttribute(), "a<A");
    EXPECT_EQ(loaded.config->getNumFunctions(), 1u);
}

TEST(HostileProfiler, CutInsideTheRootItIsNone) {
    const std::string text = whole_document();
    const std::size_t end = text.find("</PROFILER>") + 11;
    for (std::size_t size = 0; size < text.size(); ++size) {
        const bool loaded = loads(text.substr(0, size));
        if (size > text.find("<PROFILER>") && size < end) {
            EXPECT_FALSE(loaded) << "cut at " << size;
        }
    }
    EXPECT_TRUE(loads(text.substr(0, end)));
}

TEST(HostileProfiler, EveryByteReplacedRemovedOrDoubled) {
    const std::string text = whole_document();
    for (std::size_t i = 0; i < text.size(); ++i) {
        for (const char c : {'<', '>', '/', '&', '\'', '"', '\0', ' ', '\xff', '=', '-', '0'}) {
            std::string changed = text;
            changed[i] = c;
            loads(changed);
        }
        loads(std::string(text).erase(i, 1));
        loads(std::string(text).insert(i, 1, text[i]));
    }
}

TEST(HostileProfiler, Nesting) {
    for (const int depth : {50, 98, 99, 100, 1000, 1000000}) {
        std::string open;
        for (int i = 0; i < depth; ++i)
            open += "<PROFILER>";
        EXPECT_FALSE(loads(open));
    }
    std::string closed = "<PROFILER/>";
    for (int i = 0; i < 60; ++i)
        closed = "<PROFILER>" + closed + "</PROFILER>";
    EXPECT_FALSE(loads(closed)); // deep, but well-formed
}

TEST(HostileProfiler, AnAttributeOfFiftyMegabytes) {
    ProfilerDocument document;
    const std::string value(50'000'000, 'x');
    document.functions += "<FUNCTION name='" + value + "' num_compute_units='1' filename=''/>";
    const auto config = load_good(document);
    ASSERT_TRUE(config);
    EXPECT_EQ(config->getFunction(1)->getName(), value);
}

TEST(HostileProfiler, TenThousandAttributes) {
    std::string attributes;
    for (int i = 0; i < 10000; ++i)
        attributes += " a" + std::to_string(i) + "=''";
    ProfilerDocument document;
    document.functions += "<FUNCTION" + attributes + "/>";
    EXPECT_EQ(load(document).errors.size(), 10000u);
}

TEST(HostileProfiler, ExtremeNumbers) {
    ProfilerDocument document;
    document.functions =
        "<FUNCTION name='k' num_compute_units='4294967295' filename='' "
        "line_number='99999999999999999999'/>";
    document.ports = "<PORT cntl_name='' incr_name='' tag='t' desc='' module='lsu' flag='4294967295'/>";
    document.connections = "<CONNECTION moduleinst='m' function='k' compute_unit='4294967294' port_tag='t'/>";
    const auto config = load_good(document);
    EXPECT_EQ(config->getConnection(0)->getComputeUnit(), 4294967294u);
    EXPECT_EQ(config->getFunction(0)->getLinenum(), 4294967295u); // the largest number, in 32 bits
    document.functions = "<FUNCTION name='k' num_compute_units='4294967296' filename=''/>"; // 0 in 32 bits
    EXPECT_FALSE(loads(document.text()));
}

TEST(HostileProfiler, NulEndsTheText) {
    EXPECT_TRUE(loads("<PROFILER/>" + std::string("\0<", 2)));
    EXPECT_FALSE(loads(std::string("\0<PROFILER/>", 12)));
}

} // namespace
} // namespace zan::test
