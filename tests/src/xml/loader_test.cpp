// SPDX-License-Identifier: Apache-2.0
// Parsing, the lists of messages, printing, and a load by a concrete loader.
#include "BaseXmlLoader.h"

#include <algorithm>

#include "BaseVisitor.h"
#include "contract.h"
#include "contract_death.h"
#include "temp_dir.h"
#include "whole_file.h"
#include "xml_probe.h"

namespace zan::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using tinyxml2::XMLDocument;
using tinyxml2::XMLElement;
using xml::BaseXmlLoader;

using Document = std::unique_ptr<XMLDocument>;

TEST(ParseXml, ReturnsTheDocument) {
    BaseXmlLoader loader;
    const Document doc(loader.parse_xml("<a><b/></a>"));
    ASSERT_TRUE(doc);
    EXPECT_STREQ(doc->RootElement()->Value(), "a");
    EXPECT_STREQ(loader.get_source_name(), "[mem]");
    EXPECT_EQ(loader.get_num_errors(), 0u);
    EXPECT_EQ(loader.get_num_warnings(), 0u);
}

TEST(ParseXml, DecodesEntitiesAndPreservesWhiteSpace) {
    BaseXmlLoader loader;
    const Document doc(loader.parse_xml("<a b='&lt;'>  x \n y&amp; </a>"));
    ASSERT_TRUE(doc);
    EXPECT_STREQ(doc->RootElement()->Attribute("b"), "<");
    EXPECT_STREQ(doc->RootElement()->GetText(), "  x \n y& ");
}

TEST(ParseXml, AnEmptyTextIsAnEmptyDocumentError) {
    BaseXmlLoader loader;
    testing::internal::CaptureStdout();
    EXPECT_EQ(loader.parse_xml(""), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "") << "only parse_file prints to standard output";
    ASSERT_EQ(loader.get_num_errors(), 1u);
    EXPECT_THAT(loader.get_error(0), StartsWith("XML error: XML_ERROR_EMPTY_DOCUMENT, "));
    EXPECT_THAT(loader.get_error(0), testing::EndsWith("\n"));
}

TEST(ParseXml, NamesTheFault) {
    const std::pair<const char*, const char*> rows[] = {
        {"no markup", "XML_ERROR_PARSING_TEXT"},
        {"<a b=>", "XML_ERROR_PARSING_ATTRIBUTE"},
        {"<a b='1' b='2'/>", "XML_ERROR_PARSING_ATTRIBUTE"},
        {"<a>", "XML_ERROR_MISMATCHED_ELEMENT"},
        {"<a></b>", "XML_ERROR_MISMATCHED_ELEMENT"},
        {"<a><![CDATA[</a>", "XML_ERROR_PARSING_CDATA"},
        {"<a><!-- </a>", "XML_ERROR_PARSING_COMMENT"},
    };
    for (const auto& [text, name] : rows) {
        BaseXmlLoader loader;
        EXPECT_EQ(loader.parse_xml(text), nullptr);
        ASSERT_EQ(loader.get_num_errors(), 1u);
        EXPECT_THAT(loader.get_error(0), StartsWith(std::string("XML error: ") + name + ", ")) << text;
    }
}

TEST(ParseXml, TheLibrarysDetailFollowsTheName) {
    BaseXmlLoader loader;
    loader.parse_xml("<a>\n<b></a>");
    const std::string detail = "Line number=2: XMLElement name=b\n";
    EXPECT_THAT(loader.get_error(0), testing::EndsWith(detail));
}

TEST(ParseXml, DiscardsTheMessagesOfTheLoadBefore) {
    BaseXmlLoader loader;
    loader.parse_xml("<a>");
    loader.report_warning("w");
    EXPECT_EQ(loader.parse_xml(""), nullptr);
    EXPECT_EQ(loader.get_num_errors(), 1u);
    EXPECT_THAT(loader.get_error(0), HasSubstr("XML_ERROR_EMPTY_DOCUMENT"));
    EXPECT_EQ(loader.get_num_warnings(), 0u);
    const Document doc(loader.parse_xml("<a/>"));
    EXPECT_EQ(loader.get_num_errors(), 0u);
}

TEST(ParseFile, ReturnsTheDocument) {
    const TempDir folder;
    const std::string path = folder.path("a.xml");
    write_file(path, "<a>\n<b/></a>");
    BaseXmlLoader loader;
    testing::internal::CaptureStdout();
    const Document doc(loader.parse_file(path.c_str()));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    ASSERT_TRUE(doc);
    EXPECT_EQ(doc->RootElement()->FirstChildElement("b")->GetLineNum(), 2);
    EXPECT_EQ(loader.get_source_name(), path.c_str()) << "the pointer itself is kept";
    EXPECT_EQ(loader.get_num_errors(), 0u);
}

// What parse_file of something that isn't a document prints; the loader's one error has to begin alike.
std::string printed_for(const std::filesystem::path& path, const std::string& error_name) {
    BaseXmlLoader loader;
    loader.report_error("of an earlier load");
    testing::internal::CaptureStdout();
    EXPECT_EQ(loader.parse_file(path.c_str()), nullptr);
    EXPECT_EQ(loader.get_num_errors(), 1u);
    EXPECT_THAT(loader.get_error(0), StartsWith("XML error: " + error_name + ", "));
    return testing::internal::GetCapturedStdout();
}

TEST(ParseFile, FailuresArePrintedAndListed) {
    const TempDir folder;
    write_file(folder.path("empty.xml"), "");
    write_file(folder.path("open.xml"), "<a>");
    EXPECT_EQ(printed_for(folder.path("missing.xml"), "XML_ERROR_FILE_NOT_FOUND"),
              "ERROR FOUND: XML_ERROR_FILE_NOT_FOUND\n");
    EXPECT_EQ(printed_for(folder.path("empty.xml"), "XML_ERROR_EMPTY_DOCUMENT"),
              "ERROR FOUND: XML_ERROR_EMPTY_DOCUMENT\n");
    EXPECT_EQ(printed_for(folder.path("open.xml"), "XML_ERROR_MISMATCHED_ELEMENT"),
              "ERROR FOUND: XML_ERROR_MISMATCHED_ELEMENT\n");
    EXPECT_EQ(printed_for(folder.path(), "XML_ERROR_FILE_READ_ERROR"),
              "ERROR FOUND: XML_ERROR_FILE_READ_ERROR\n");
}

TEST(LoaderMessages, AreKeptInTheirOrder) {
    BaseXmlLoader loader;
    EXPECT_EQ(loader.get_source_name(), nullptr);
    loader.report_error("e0");
    loader.report_warning("w0");
    loader.report_error("e1");
    ASSERT_EQ(loader.get_num_errors(), 2u);
    ASSERT_EQ(loader.get_num_warnings(), 1u);
    EXPECT_EQ(loader.get_error(0), "e0");
    EXPECT_EQ(loader.get_error(1), "e1");
    EXPECT_EQ(loader.get_warning(0), "w0");
    loader.reset_errors();
    EXPECT_EQ(loader.get_num_errors(), 0u);
    EXPECT_EQ(loader.get_num_warnings(), 0u);
}

TEST(LoaderMessages, ADocumentWithoutAnErrorHasNoDetail) {
    BaseXmlLoader loader;
    XMLDocument doc;
    loader.set_last_error(&doc);
    EXPECT_EQ(loader.get_error(0), "XML error: XML_SUCCESS, \n");
}

TEST(LoaderMessages, TheParseErrorGoesToTheOverriddenReport) {
    struct Counting : BaseXmlLoader {
        void report_error(const std::string&) override { ++count; }
        int count = 0;
    } loader;
    loader.parse_xml("");
    EXPECT_EQ(loader.count, 1);
    EXPECT_EQ(loader.get_num_errors(), 0u);
}

TEST(LoaderMessages, DebugTextGoesToStandardErrorAsItStands) {
    BaseXmlLoader loader;
    testing::internal::CaptureStderr();
    loader.debug("one %s");
    loader.debug("two\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "one %stwo\n");
}

TEST(LoaderContracts, StopTheProcess) {
    BaseXmlLoader loader;
    EXPECT_CONTRACT(loader.parse_file(nullptr), "filename != __null");
    EXPECT_CONTRACT(loader.parse_xml(nullptr), "xml != __null");
    EXPECT_CONTRACT(BaseXmlLoader::doc_to_string(nullptr), "doc != __null");
    EXPECT_CONTRACT(loader.get_error(0), "index < m_errors.size()");
    EXPECT_CONTRACT(loader.get_warning(0), "index < m_warnings.size()");
}

TEST(LoaderContracts, AnIndexEqualToTheNumberOfErrorsIsTooLarge) {
    BaseXmlLoader loader;
    loader.report_error("e");
    EXPECT_CONTRACT(loader.get_error(1), "index < m_errors.size()");
}

TEST(PrettyPrinter, IndentsByTwoBlanksALevel) {
    EXPECT_EQ(BaseXmlLoader::doc_to_string(parsed("<a><b x='1'><c/></b><d>text</d></a>").get()),
              "<a>\n"
              "  <b x=\"1\">\n"
              "    <c/>\n"
              "  </b>\n"
              "  <d>text</d>\n"
              "</a>\n");
}

TEST(PrettyPrinter, AnEmptyDocumentIsAnEmptyText) {
    XMLDocument doc;
    EXPECT_EQ(BaseXmlLoader::doc_to_string(&doc), "");
}

TEST(PrettyPrinter, WritesToMemoryWhateverItsArguments) {
    testing::internal::CaptureStdout();
    xml::PrettyPrinter printer(stdout, true, 3);
    parsed("<a><b/></a>")->Accept(&printer);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_STREQ(printer.CStr(), "<a>\n  <b/>\n</a>\n");
}

// A model that notes when it is destroyed, and a loader of it: <list> of <item>, of which "bad" is refused.
struct Model {
    Model() { ++alive; }
    ~Model() { --alive; }
    std::vector<std::string> items;
    static inline int alive = 0;
};

struct ModelVisitor : xml::BaseVisitor {
    ModelVisitor(Model* model, xml::VisitorCallbacks* callbacks, bool debug, bool refuse_all)
        : BaseVisitor(callbacks, debug), m_model(model), m_refuse_all(refuse_all) {}

    using BaseVisitor::VisitEnter;
    bool VisitEnter(const XMLElement& elem, const tinyxml2::XMLAttribute* attr) override {
        BaseVisitor::VisitEnter(elem, attr);
        if (m_refuse_all || std::string(elem.Value()) == "bad")
            return report_unexpected_elem(elem, "");
        m_model->items.push_back(elem.Value());
        return true;
    }

  private:
    Model* m_model;
    bool m_refuse_all;
};

struct ModelLoader : BaseXmlLoader {
    explicit ModelLoader(bool debug = false, bool refuse_all = false)
        : m_debug(debug), m_refuse_all(refuse_all) {}
    Model* load(XMLDocument* doc) { return load_model<Model, ModelVisitor>(doc, m_debug, m_refuse_all); }
    std::unique_ptr<Model> load_xml(const char* text) {
        return std::unique_ptr<Model>(load(parse_xml(text)));
    }

  private:
    bool m_debug;
    bool m_refuse_all;
};

TEST(LoadModel, ReturnsTheFilledModel) {
    ModelLoader loader;
    const auto model = loader.load_xml("<list><x/><y/></list>");
    ASSERT_TRUE(model);
    EXPECT_THAT(model->items, ElementsAre("list", "x", "y"));
    EXPECT_EQ(loader.get_num_errors(), 0u);
}

TEST(LoadModel, AFailedWalkDestroysTheModel) {
    ModelLoader loader;
    EXPECT_FALSE(loader.load_xml("<list>\n<x/>\n<bad/></list>"));
    EXPECT_EQ(Model::alive, 0);
    ASSERT_EQ(loader.get_num_errors(), 1u);
    EXPECT_EQ(loader.get_error(0), "Error in '[mem]', line 3\nUnexpected element 'bad'.\n");
}

TEST(LoadModel, OfANullDocumentTheModelIsNull) {
    ModelLoader loader(true);
    testing::internal::CaptureStderr();
    EXPECT_EQ(loader.load(nullptr), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(Model::alive, 0);
}

TEST(LoadModel, OptionsReachTheVisitor) {
    ModelLoader loader(false, true);
    EXPECT_FALSE(loader.load_xml("<list/>"));
    EXPECT_EQ(loader.get_error(0), "Error in '[mem]', line 1\nUnexpected element 'list'.\n");
}

TEST(LoadModel, DebugModePrintsTheDocumentBeforeTheWalk) {
    ModelLoader loader(true);
    testing::internal::CaptureStderr();
    EXPECT_TRUE(loader.load_xml("<list><x/></list>"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "<list>\n"
              "  <x/>\n"
              "</list>\n"
              "[xml] entering document\n"
              "[xml] entering list\n"
              "[xml] entering list/x\n"
              "[xml] exiting list/x\n"
              "[xml] exiting list\n"
              "[xml] exiting document\n");
}

TEST(LoadModel, WithoutDebugModeNothingIsPrinted) {
    ModelLoader loader;
    testing::internal::CaptureStderr();
    EXPECT_TRUE(loader.load_xml("<list><x/></list>"));
    EXPECT_FALSE(loader.load_xml("<bad/>"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(LoadModel, ALoaderServesManyLoads) {
    ModelLoader loader;
    EXPECT_FALSE(loader.load_xml("<bad/>"));
    EXPECT_TRUE(loader.load_xml("<good/>"));
    EXPECT_EQ(loader.get_num_errors(), 0u);
    EXPECT_FALSE(loader.load_xml("<good"));
    EXPECT_EQ(loader.get_num_errors(), 1u);
}

// Reports one error at each element named `bad`, at each attribute of that name, and one without a node at
// each element named `worse`.
struct PlaceVisitor : xml::BaseVisitor {
    PlaceVisitor(int*, xml::VisitorCallbacks* callbacks, bool debug) : BaseVisitor(callbacks, debug) {}
    using BaseVisitor::VisitEnter;
    bool VisitEnter(const XMLElement& elem, const tinyxml2::XMLAttribute* first) override {
        BaseVisitor::VisitEnter(elem, first);
        const std::string_view name = elem.Value();
        if (name == "bad")
            return report_error(elem, "bad element");
        if (const tinyxml2::XMLAttribute* bad = elem.FindAttribute("bad"))
            return report_error(*bad, "bad attribute");
        return name == "worse" ? report_error("worse") : true;
    }
};

struct PlaceLoader : BaseXmlLoader {
    bool load(const char* xml) {
        return std::unique_ptr<int>(load_model<int, PlaceVisitor>(parse_xml(xml), false)) != nullptr;
    }
};

TEST(ErrorPlaces, AreTheNamesOfElementsAndAttributesInTheText) {
    const std::string texts[] = {
        "<a><@bad/></a>",
        "<a b='&lt;&#13;' c = \"x\"><b/><b @bad='1'/></a>",
        "<a><@worse/></a>",
        "<a>\n <b>text &amp; more</b>\r\n <b\n   x='1'\n   @bad=''/>\n</a>",
        "\n <?xml version='1.0'?><!-- <bad/> --><a><@bad/></a>",
        "\xEF\xBB\xBF<!-- first --><a><![CDATA[<bad/>]]><@bad/></a>",
        "<!DOCTYPE a><@bad/>",
    };
    for (const std::string& marked : texts) {
        const std::size_t offset = marked.find('@');
        std::string text = marked;
        text.erase(offset, 1);
        PlaceLoader loader;
        EXPECT_FALSE(loader.load(text.c_str())) << text;
        ASSERT_EQ(loader.get_num_errors(), 1u) << text;
        const xml::ErrorPlace& place = loader.get_error_place(0);
        EXPECT_EQ(place.offset, offset) << text;
        EXPECT_EQ(place.line, 1 + std::count(text.begin(), text.begin() + static_cast<long>(offset), '\n'))
            << text;
        EXPECT_FALSE(place.is_syntax);
    }
}

TEST(ErrorPlaces, AreLinesWhereATextIsNoXml) {
    BaseXmlLoader loader;
    EXPECT_EQ(loader.parse_xml("<a>\n<b x=>\n</a>"), nullptr);
    EXPECT_EQ(loader.get_error_place(0), (xml::ErrorPlace{.line = 2, .is_syntax = true}));
    EXPECT_CONTRACT(loader.get_error_place(1), "index < m_errors.size()");
}

TEST(ErrorPlaces, AnErrorThatACallerReportsHasNone) {
    BaseXmlLoader loader;
    const Document doc(loader.parse_xml("<a/>"));
    loader.report_error("mine");
    EXPECT_EQ(loader.get_error_place(0), xml::ErrorPlace());
}

TEST(BrokenContracts, AreThrownAsLongAsAThreadWantsThem) {
    BaseXmlLoader loader;
    {
        const ThrowBrokenContracts throw_them;
        try {
            loader.get_error(3);
            FAIL();
        } catch (const BrokenContract& contract) {
            EXPECT_STREQ(contract.text, "index < m_errors.size()");
        }
    }
    EXPECT_CONTRACT(loader.get_error(3), "index < m_errors.size()");
}

} // namespace
} // namespace zan::test
