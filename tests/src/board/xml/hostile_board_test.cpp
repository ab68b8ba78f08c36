// SPDX-License-Identifier: Apache-2.0
// Board descriptions made to break the reader: each ends in a board, in an error, or in a contract, never in
// a crash.
#include "board_document.h"
#include "faulty_elements.h"

namespace zan::test {
namespace {

// A document with every element there is.
std::string whole_document() {
    BoardDocument document;
    document.board = "<?xml version='1.0'?><board version='17.1' name='b'>";
    document.compile = whole_compile;
    document.memory = memory_at("p", "0", "0x1000", "default='1' can_access='s' id='1'") +
                      "<global_mem max_bandwidth='1' name='s' primary_interface='p'><interface name='i' "
                      "type='agent' width='512' address='0' size='0x1000'><port name='q' direction='r' "
                      "hazard_free_attributes='false' attribute_width='3'><attribute name='a' encoding='1'/>"
                      "</port></interface></global_mem>";
    document.channels =
        "<channels><interface name='n' port='p' type='streamsink' width='8' chan_id='c'/>"
        "</channels>";
    document.interfaces =
        "<interfaces><interface name='n' port='p' type='irq'/><kernel_clk_reset clk='c' "
        "reset='r'/></interfaces><!-- end -->";
    return document.text();
}

// A refused text has a message, but for an encoding that is too large.
void load_any(const std::string& text) {
    const LoadedBoard loaded = load(text);
    if (loaded.model) {
        EXPECT_TRUE(loaded.errors.empty()) << text.substr(0, 1000);
    }
}

TEST(HostileBoard, TheWholeDocumentItselfIsGood) {
    const LoadedBoard loaded = load(whole_document());
    EXPECT_THAT(loaded.errors, testing::IsEmpty());
    EXPECT_TRUE(loaded.model);
}

TEST(HostileBoard, CutAtEveryByteItIsNoBoard) {
    const std::string text = whole_document();
    const std::size_t end = text.find("</board>") + 8;
    for (std::size_t size = 0; size < end; ++size)
        EXPECT_FALSE(load(text.substr(0, size)).model) << "cut at " << size;
}

// Bytes that break an element's name could make a configuration lack a part, which stops the process; the
// letters of those names stay as they are.
TEST(HostileBoard, EveryByteOutsideTheConfigurationReplaced) {
    const std::string text = whole_document();
    const std::size_t begin = text.find("<compile");
    const std::size_t end = text.find("</compile>") + 10;
    for (std::size_t i = 0; i < text.size(); ++i) {
        // Of a configuration that isn't in `board` nothing is asked, so leave the version alone, too.
        if ((i >= begin && i < end) || i < text.find("<device"))
            continue;
        for (const char c : {'<', '>', '/', '&', '\'', '"', '\0', ' ', '\xff', '=', '-', '0'}) {
            std::string changed = text;
            changed[i] = c;
            load_any(changed);
        }
    }
}

TEST(HostileBoard, AfterAFaultOfAnElementNothingInsideItIsRead) {
    const std::vector<FaultyElement> faulty = faulty_elements(whole_document());
    EXPECT_GT(faulty.size(), 25u);
    for (const auto& [name, text] : faulty) {
        const std::vector<std::string> errors = load(text).errors;
        ASSERT_FALSE(errors.empty()) << name;
        EXPECT_THAT(errors.front(), testing::EndsWith("\nUnexpected attribute 'x'.\n")) << name;
        // An interface whose ports failed is also reported to have none.
        EXPECT_THAT(errors, testing::Each(testing::Not(testing::HasSubstr("odd")))) << name;
    }
}

TEST(HostileBoard, DeepNesting) {
    std::string nested;
    for (int i = 0; i < 1000; ++i)
        nested += "<interface>";
    load_any(nested);
    BoardDocument document;
    std::string ports;
    for (int i = 0; i < 80; ++i)
        ports += "<port name='' direction='r'>";
    for (int i = 0; i < 80; ++i)
        ports += "</port>";
    document.memory =
        "<global_mem max_bandwidth='1'><interface name='i' type='agent' width='8' address='0' "
        "size='1'>" +
        ports + "</interface></global_mem>";
    EXPECT_FALSE(load(document).model);
}

TEST(HostileBoard, ExtremeNumbers) {
    BoardDocument document;
    document.memory = memory_at("a", "0xffffffffffffffff", "0xffffffffffffffff") +
                      memory_at("b", "99999999999999999999999", "1", "id='99999999999999999999'") +
                      memory_at("c", "0", "1", "max_bandwidth='1e999'");
    load_any(document.text());
    document.memory = memory_at("a", "0", "1");
    document.device =
        "<device device_model=''><used_resources><lcells num='4294967295'/><ffs num='99999999999'/>"
        "<dsps num='0'/><rams num='0'/></used_resources></device>";
    const LoadedBoard loaded = load(document);
    ASSERT_TRUE(loaded.model);
    EXPECT_EQ(loaded.model->get_device_config().get_used_resources().les, 4294967294u); // twice, in 32 bits
}

TEST(HostileBoard, ManyMemoriesAndLongValues) {
    BoardDocument document;
    document.memory = "";
    for (int i = 0; i < 300; ++i)
        document.memory += memory_at("m" + std::to_string(i), std::to_string(i), "1");
    document.device = "<device device_model='" + std::string(5'000'000, 'x') +
                      "'><used_resources><les num='1'/>"
                      "<ffs num='1'/><dsps num='1'/><rams num='1'/></used_resources></device>";
    EXPECT_TRUE(load(document).model);
}

} // namespace
} // namespace zan::test
