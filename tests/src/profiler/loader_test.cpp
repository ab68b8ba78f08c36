// SPDX-License-Identifier: Apache-2.0
// The loader around the visitors: files, several loads, debug text, contracts.
#include "ProfilerConfigXml.h"
#include "capture.h"
#include "contract_death.h"
#include "temp_dir.h"
#include "whole_document.h"
#include "whole_file.h"

namespace zan::test {
namespace {

using namespace profiler;
using testing::StartsWith;

using Loaded = std::unique_ptr<ProfilerConfig>;

TEST(ProfilerLoader, LoadsAFile) {
    const TempDir folder;
    const std::string path = folder.path("a.xml");
    write_file(path, WholeDocument().text());
    ProfilerConfigXmlLoader loader(false);
    Loaded config;
    EXPECT_EQ(stdout_of([&] { config.reset(loader.load_file(path.c_str())); }), "");
    ASSERT_TRUE(config);
    EXPECT_EQ(config->getFunction(0)->getFilename(), "f.cl");
    EXPECT_EQ(loader.get_num_errors(), 0u);
    EXPECT_EQ(loader.get_num_warnings(), 0u);
}

TEST(ProfilerLoader, NamesTheFileInMessages) {
    const TempDir folder;
    const std::string path = folder.path("a.xml");
    ProfilerConfigXmlLoader loader(false);
    write_file(path, WholeDocument().without("MODULE", "name").text());
    EXPECT_EQ(loader.load_file(path.c_str()), nullptr);
    ASSERT_EQ(loader.get_num_errors(), 2u);
    EXPECT_EQ(loader.get_error(0),
              "Error in '" + path + "', line 20\nExpected attribute 'name' on element 'MODULE'.\n");
    EXPECT_EQ(loader.get_error(1), "Error in '" + path + "', line 20\nUnsupported name string.\n");
    write_file(path, WholeDocument().with("PORT", "module", "x").text());
    EXPECT_EQ(loader.load_file(path.c_str()), nullptr);
    ASSERT_EQ(loader.get_num_errors(), 1u) << "those of the last load only";
    EXPECT_EQ(loader.get_error(0),
              "Error in '" + path + "':\nModule \"x\" does not exist in Port \"(c,n)\".\n");
}

TEST(ProfilerLoader, AMissingFileIsPrintedAndListed) {
    const TempDir folder;
    const std::string path = folder.path("missing.xml");
    ProfilerConfigXmlLoader loader(false);
    EXPECT_EQ(stdout_of([&] { EXPECT_EQ(loader.load_file(path.c_str()), nullptr); }),
              "ERROR FOUND: XML_ERROR_FILE_NOT_FOUND\n");
    ASSERT_EQ(loader.get_num_errors(), 1u);
    EXPECT_THAT(loader.get_error(0), StartsWith("XML error: XML_ERROR_FILE_NOT_FOUND, "));
}

TEST(ProfilerLoader, TextThatIsNotXmlIsListedOnly) {
    const std::pair<const char*, const char*> rows[] = {
        {"", "XML error: XML_ERROR_EMPTY_DOCUMENT, "},
        {"no markup", "XML error: XML_ERROR_PARSING_TEXT, "},
        {"<PROFILER>", "XML error: XML_ERROR_MISMATCHED_ELEMENT, "},
        {"<PROFILER a='1' a='2'/>", "XML error: XML_ERROR_PARSING_ATTRIBUTE, "},
    };
    for (const auto& [xml, begin] : rows) {
        ProfilerConfigXmlLoader loader(false);
        EXPECT_EQ(stdout_of([&, text = xml] { EXPECT_EQ(loader.load_xml(text), nullptr); }), "");
        ASSERT_EQ(loader.get_num_errors(), 1u) << xml;
        EXPECT_THAT(loader.get_error(0), StartsWith(begin));
    }
}

TEST(ProfilerLoader, ServesManyLoads) {
    ProfilerConfigXmlLoader loader(false);
    EXPECT_EQ(loader.load_xml("<BOARD/>"), nullptr);
    EXPECT_EQ(loader.get_num_errors(), 1u);
    const Loaded first(loader.load_xml(WholeDocument().text().c_str()));
    ASSERT_TRUE(first);
    EXPECT_EQ(loader.get_num_errors(), 0u);
    // Nothing is left of the load before: the names are free again.
    const Loaded second(loader.load_xml(WholeDocument().text().c_str()));
    ASSERT_TRUE(second);
    EXPECT_NE(first->getFunction(0), second->getFunction(0));
    EXPECT_EQ(loader.load_xml("<PROFILER>\n<x/></PROFILER>"), nullptr);
    ASSERT_EQ(loader.get_num_errors(), 1u);
    EXPECT_EQ(loader.get_error(0), "Error in '[mem]', line 2\nUnexpected element 'x'.\n");
}

TEST(ProfilerLoader, TheModelOutlivesTheLoader) {
    Loaded config;
    {
        ProfilerConfigXmlLoader loader(false);
        config.reset(loader.load_xml(WholeDocument().text().c_str()));
    }
    ASSERT_TRUE(config);
    EXPECT_EQ(config->getFunctionWithName("f")->getUserFriendlyName(), "uf");
}

TEST(ProfilerLoader, OfANullDocumentTheModelIsNull) {
    ProfilerConfigXmlLoader loader(true);
    EXPECT_EQ(stderr_of([&] { EXPECT_EQ(loader.load_profiler_config(nullptr), nullptr); }), "");
    EXPECT_EQ(loader.get_num_errors(), 0u);
}

// The document is deleted either way, which the leak check sees.
TEST(ProfilerLoader, LoadsADocumentThatWasParsedBefore) {
    ProfilerConfigXmlLoader loader(false);
    const Loaded config(loader.load_profiler_config(loader.parse_xml(WholeDocument().text().c_str())));
    EXPECT_TRUE(config);
    EXPECT_EQ(loader.load_profiler_config(loader.parse_xml("<BOARD/>")), nullptr);
    EXPECT_EQ(loader.get_num_errors(), 1u);
}

// What a list's own visitor says comes between what the outer visitor says of the list, and its paths begin
// at the list. No line says that the document is left.
TEST(ProfilerLoader, DebugModePrintsTheDocumentAndTheWalk) {
    ProfilerConfigXmlLoader loader(true);
    Loaded config;
    EXPECT_EQ(stderr_of([&] {
                  config.reset(
                      loader.load_xml("<PROFILER><MODULE_LIST>"
                                      "<MODULE name='m' function='' isKernelWrapper='true'/>"
                                      "</MODULE_LIST><PORT_LIST/></PROFILER>"));
              }),
              "<PROFILER>\n"
              "  <MODULE_LIST>\n"
              "    <MODULE name=\"m\" function=\"\" isKernelWrapper=\"true\"/>\n"
              "  </MODULE_LIST>\n"
              "  <PORT_LIST/>\n"
              "</PROFILER>\n"
              "[xml] entering document\n"
              "[xml] entering PROFILER\n"
              "[xml] entering PROFILER/MODULE_LIST\n"
              "[xml] entering MODULE_LIST\n"
              "[xml] entering MODULE_LIST/MODULE\n"
              "[xml] exiting MODULE_LIST/MODULE\n"
              "[xml] exiting MODULE_LIST\n"
              "[xml] exiting PROFILER/MODULE_LIST\n"
              "[xml] entering PROFILER/PORT_LIST\n"
              "[xml] entering PORT_LIST\n"
              "[xml] exiting PORT_LIST\n"
              "[xml] exiting PROFILER/PORT_LIST\n"
              "[xml] exiting PROFILER\n");
    EXPECT_TRUE(config);
}

TEST(ProfilerLoader, DebugModeFallsSilentWithTheFirstError) {
    ProfilerConfigXmlLoader loader(true);
    EXPECT_EQ(stderr_of([&] {
                  EXPECT_EQ(
                      loader.load_xml("<PROFILER><MODULE_LIST><x/></MODULE_LIST><PORT_LIST/></PROFILER>"),
                      nullptr);
              }),
              "<PROFILER>\n"
              "  <MODULE_LIST>\n"
              "    <x/>\n"
              "  </MODULE_LIST>\n"
              "  <PORT_LIST/>\n"
              "</PROFILER>\n"
              "[xml] entering document\n"
              "[xml] entering PROFILER\n"
              "[xml] entering PROFILER/MODULE_LIST\n"
              "[xml] entering MODULE_LIST\n"
              "[xml] entering MODULE_LIST/x\n");
}

TEST(ProfilerLoader, WithoutDebugModeNothingIsSaid) {
    ProfilerConfigXmlLoader loader(false);
    EXPECT_EQ(stderr_of([&] {
                  const Loaded config(loader.load_xml(WholeDocument().text().c_str()));
                  EXPECT_TRUE(config);
                  EXPECT_EQ(loader.load_xml("<BOARD/>"), nullptr);
              }),
              "");
}

TEST(ProfilerVisitors, NeedAConfig) {
    using namespace profiler::xml;
    ProfilerConfig config;
    ProfilerVisitor parent(&config, nullptr, false);
    EXPECT_CONTRACT(ProfilerVisitor(nullptr, nullptr, false), "config != __null");
    EXPECT_CONTRACT(ProfilerFunctionListVisitor(nullptr, &parent), "config != __null");
    EXPECT_CONTRACT(ProfilerModuleListVisitor(nullptr, &parent), "config != __null");
    EXPECT_CONTRACT(ProfilerPortListVisitor(nullptr, &parent), "config != __null");
    EXPECT_CONTRACT(ProfilerModuleInstListVisitor(nullptr, &parent), "config != __null");
    EXPECT_CONTRACT(ProfilerConnectionListVisitor(nullptr, &parent), "config != __null");
}

TEST(ProfilerVisitors, OfListsNeedAParent) {
    using namespace profiler::xml;
    ProfilerConfig config;
    EXPECT_CONTRACT(ProfilerFunctionListVisitor(&config, nullptr), "parent != 0");
    EXPECT_CONTRACT(ProfilerConnectionListVisitor(&config, nullptr), "parent != 0");
}

// A caller that only asks whether a document is good passes no callbacks.
TEST(ProfilerVisitors, WorkWithoutCallbacks) {
    using namespace profiler::xml;
    for (const auto& [xml, good] : {std::pair(WholeDocument().text(), true),
                                    std::pair(WholeDocument().without("SIGNAL", "port_tag").text(), false),
                                    std::pair(WholeDocument().renamed("PORT", "flag", "x").text(), false)}) {
        tinyxml2::XMLDocument doc;
        ASSERT_EQ(doc.Parse(xml.c_str()), tinyxml2::XML_SUCCESS);
        ProfilerConfig config;
        ProfilerVisitor visitor(&config, nullptr, true);
        EXPECT_EQ(doc.Accept(&visitor), good);
    }
}

} // namespace
} // namespace zan::test
