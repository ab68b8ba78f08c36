// SPDX-License-Identifier: Apache-2.0
// Each message of the framework: its exact text, its line, its result.
#include "BaseVisitor.h"
#include "contract_death.h"
#include "xml_probe.h"

namespace zan::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using tinyxml2::XMLElement;

// A visitor of "a.xml" that stands on no element, and an element of that file at line 12 with two attributes,
// the second of them on line 13.
class Reports : public testing::Test {
  protected:
    const XMLElement& module() const { return *m_doc->RootElement(); }

    // The one error so far, without its first line if that is the frame of the element's line.
    std::string error_text() const {
        EXPECT_EQ(callbacks.errors.size(), 1u);
        const std::string frame = "Error in 'a.xml', line 12\n";
        const std::string text = callbacks.errors.empty() ? "no error" : callbacks.errors[0];
        return text.starts_with(frame) ? text.substr(frame.size()) : text;
    }

    RecordingCallbacks callbacks;
    ProbeVisitor visitor{&callbacks};

  private:
    std::unique_ptr<tinyxml2::XMLDocument> m_doc =
        parsed(std::string(11, '\n') + "<MODULE function='f'\n isKernelWrapper='1'><INNER/></MODULE>");
};

TEST_F(Reports, ErrorOfTheWholeInputHasNoLine) {
    EXPECT_FALSE(visitor.report_error("Something."));
    EXPECT_THAT(callbacks.errors, ElementsAre("Error in 'a.xml':\nSomething.\n"));
    EXPECT_TRUE(visitor.m_has_error);
}

TEST_F(Reports, ErrorAtANodeHasItsLineAndNoColon) {
    EXPECT_FALSE(visitor.report_error(module(), "Something."));
    EXPECT_THAT(callbacks.errors, ElementsAre("Error in 'a.xml', line 12\nSomething.\n"));
    EXPECT_TRUE(visitor.m_has_error);
}

TEST_F(Reports, ErrorAtAnAttributeHasTheAttributesLine) {
    EXPECT_FALSE(visitor.report_error(*module().FindAttribute("isKernelWrapper"), "Something."));
    EXPECT_THAT(callbacks.errors, ElementsAre("Error in 'a.xml', line 13\nSomething.\n"));
    EXPECT_TRUE(visitor.m_has_error);
}

TEST_F(Reports, ErrorAtATextNodeHasItsLine) {
    const auto doc = parsed("<a>\n\n<b/>text</a>");
    visitor.report_error(*doc->RootElement()->LastChild(), "Something.");
    EXPECT_THAT(callbacks.errors, ElementsAre("Error in 'a.xml', line 3\nSomething.\n"));
}

TEST_F(Reports, WithoutALineNumberThereIsNoLinePart) {
    tinyxml2::XMLDocument made;
    XMLElement* elem = made.NewElement("a");
    elem->SetAttribute("b", "c");
    visitor.report_error(*elem, "Node.");
    visitor.report_error(*elem->FirstAttribute(), "Attribute.");
    EXPECT_THAT(callbacks.errors, ElementsAre("Error in 'a.xml'\nNode.\n", "Error in 'a.xml'\nAttribute.\n"));
}

TEST_F(Reports, AnEmptyMessageLeavesOutItsLine) {
    visitor.report_error("");
    visitor.report_error(module(), "");
    visitor.report_error(*module().FirstAttribute(), "");
    visitor.report_warning("");
    EXPECT_THAT(callbacks.errors, ElementsAre("Error in 'a.xml':\n", "Error in 'a.xml', line 12\n",
                                              "Error in 'a.xml', line 12\n"));
    EXPECT_THAT(callbacks.warnings, ElementsAre("Warning in 'a.xml':\n"));
}

TEST_F(Reports, ASourceWithoutANameIsShownEmpty) {
    callbacks.source_name = nullptr;
    visitor.report_error(module(), "Something.");
    EXPECT_THAT(callbacks.errors, ElementsAre("Error in '', line 12\nSomething.\n"));
}

TEST_F(Reports, WithoutCallbacksOnlyTheFlagIsSet) {
    const std::vector<std::function<bool(ProbeVisitor&)>> reports = {
        [](ProbeVisitor& v) { return v.report_error("x"); },
        [this](ProbeVisitor& v) { return v.report_error(module(), "x"); },
        [this](ProbeVisitor& v) { return v.report_error(*module().FirstAttribute(), "x"); },
        [this](ProbeVisitor& v) { return v.report_missing_attr(module(), "x", ""); },
        [this](ProbeVisitor& v) { return v.report_unexpected_attrs(module(), 0); },
    };
    for (const auto& report : reports) {
        ProbeVisitor deaf;
        EXPECT_FALSE(report(deaf));
        EXPECT_TRUE(deaf.m_has_error);
    }
    EXPECT_TRUE(ProbeVisitor().report_warning("x"));
}

TEST_F(Reports, WarningLeavesTheWalkGoing) {
    EXPECT_TRUE(visitor.report_warning("Odd."));
    EXPECT_THAT(callbacks.warnings, ElementsAre("Warning in 'a.xml':\nOdd.\n"));
    EXPECT_THAT(callbacks.errors, IsEmpty());
    EXPECT_FALSE(visitor.m_has_error);
    EXPECT_TRUE(visitor.VisitEnter(module(), nullptr));
}

TEST_F(Reports, ErrorsAreDeliveredInTheirOrder) {
    visitor.report_error("1");
    visitor.report_unexpected_elem(module(), "");
    visitor.report_error("3");
    EXPECT_THAT(callbacks.errors, ElementsAre("Error in 'a.xml':\n1\n",
                                              "Error in 'a.xml', line 12\nUnexpected element 'MODULE'.\n",
                                              "Error in 'a.xml':\n3\n"));
}

TEST_F(Reports, MissingAttribute) {
    EXPECT_FALSE(visitor.report_missing_attr(module(), "name", ""));
    EXPECT_THAT(callbacks.errors,
                ElementsAre("Error in 'a.xml', line 12\nExpected attribute 'name' on element 'MODULE'.\n"));
}

TEST_F(Reports, MissingAttributeWithMoreText) {
    EXPECT_FALSE(visitor.report_missing_attr(module(), "name", "More."));
    EXPECT_EQ(error_text(), "Expected attribute 'name' on element 'MODULE'.\nMore.\n");
}

TEST_F(Reports, UnexpectedElement) {
    EXPECT_FALSE(visitor.report_unexpected_elem(module(), ""));
    EXPECT_EQ(error_text(), "Unexpected element 'MODULE'.\n");
}

TEST_F(Reports, UnexpectedElementWithMoreText) {
    EXPECT_FALSE(visitor.report_unexpected_elem(module(), "More."));
    EXPECT_EQ(error_text(), "Unexpected element 'MODULE'.\nMore.\n");
}

TEST_F(Reports, AttributeErrorHasTheLineOfTheAttribute) {
    EXPECT_FALSE(visitor.report_attr_error(module(), "isKernelWrapper", "Bad."));
    EXPECT_THAT(callbacks.errors, ElementsAre("Error in 'a.xml', line 13\nBad.\n"));
}

TEST_F(Reports, AttributeErrorWithoutTheAttributeHasTheLineOfTheElement) {
    EXPECT_FALSE(visitor.report_attr_error(module(), "iskernelwrapper", "Bad."));
    EXPECT_THAT(callbacks.errors, ElementsAre("Error in 'a.xml', line 12\nBad.\n"));
}

TEST_F(Reports, TypeErrorHasTheLineOfTheAttribute) {
    EXPECT_FALSE(visitor.report_attr_type_error(module(), "isKernelWrapper", ""));
    EXPECT_THAT(callbacks.errors,
                ElementsAre("Error in 'a.xml', line 13\n"
                            "Incorrect type for attribute 'isKernelWrapper' on element 'MODULE'.\n"));
}

TEST_F(Reports, TypeErrorWithMoreTextAndWithoutTheAttribute) {
    EXPECT_FALSE(visitor.report_attr_type_error(module(), "x", "More."));
    EXPECT_EQ(error_text(), "Incorrect type for attribute 'x' on element 'MODULE'.\nMore.\n");
}

TEST_F(Reports, StackCheckThatHoldsSaysNothing) {
    visitor.m_elem_stack = {"LIST", "MODULE"};
    EXPECT_TRUE(visitor.report_unexpected_elem_stack(module(), 1, "LIST"));
    EXPECT_TRUE(visitor.report_unexpected_elem_stack_with_top(module(), 2, "LIST", "MODULE"));
    EXPECT_THAT(callbacks.errors, IsEmpty());
}

TEST_F(Reports, StackCheckThatFails) {
    visitor.m_elem_stack = {"LIST", "MODULE"};
    EXPECT_FALSE(visitor.report_unexpected_elem_stack(module(), 0));
    EXPECT_EQ(error_text(), "Unexpected element 'MODULE'.\n");
}

TEST_F(Reports, StackCheckWithTopThatFails) {
    visitor.m_elem_stack = {"LIST", "MODULE"};
    EXPECT_FALSE(visitor.report_unexpected_elem_stack_with_top(module(), 1, "LIST"));
    EXPECT_EQ(error_text(), "Unexpected element 'MODULE'.\n");
}

// The element's path is "MODULE", entered twice.
class CountReports : public Reports {
  protected:
    void SetUp() override {
        visitor.m_elem_stack = {"MODULE"};
        visitor.m_elem_counts = {{"MODULE", 2}, {"MODULE/INNER", 5}};
    }
};

TEST_F(CountReports, CountsWithinTheirBoundsSayNothing) {
    EXPECT_TRUE(visitor.report_unexpected_elem_stack_count(module(), 2));
    EXPECT_TRUE(visitor.report_unexpected_elem_stack_count(module(), 2, 3));
    EXPECT_TRUE(visitor.report_unexpected_elem_stack_count(module(), 0, 2));
    EXPECT_TRUE(visitor.report_unexpected_elem_count(module(), 5, 2, "MODULE", "INNER"));
    EXPECT_TRUE(visitor.report_unexpected_elem_count(module(), 5, 6, 2, "MODULE", "INNER"));
    EXPECT_TRUE(visitor.report_unexpected_elem_count(module(), 0, 5, 2, "MODULE", "INNER"));
    EXPECT_TRUE(visitor.report_unexpected_elem_count(module(), 0, 1, "INNER"));
    EXPECT_THAT(callbacks.errors, IsEmpty());
}

TEST_F(CountReports, ExactCountMissed) {
    EXPECT_FALSE(visitor.report_unexpected_elem_stack_count(module(), 1));
    EXPECT_EQ(error_text(), "Expected element <MODULE> to appear exactly once.\n");
}

TEST_F(CountReports, CountBelowItsBounds) {
    EXPECT_FALSE(visitor.report_unexpected_elem_stack_count(module(), 3, 4));
    EXPECT_EQ(error_text(), "Expected element <MODULE> to appear 3-4 times.\n");
}

TEST_F(CountReports, CountAboveItsBounds) {
    EXPECT_FALSE(visitor.report_unexpected_elem_stack_count(module(), 0, 1));
    EXPECT_EQ(error_text(), "Expected element <MODULE> to appear 0-1 times.\n");
}

TEST_F(CountReports, ExactCountOfANamedPathNamesTheGivenElement) {
    EXPECT_FALSE(visitor.report_unexpected_elem_count(module(), 1, 2, "MODULE", "INNER"));
    EXPECT_EQ(error_text(), "Expected element <MODULE> to appear exactly once.\n");
}

TEST_F(CountReports, ANamedPathNeverSeenCountsAsZero) {
    // The exact count of 1, and three names: the names begin at the fourth place.
    EXPECT_FALSE(visitor.report_unexpected_elem_count(module(), 1, 3, "MODULE", "INNER", "x"));
    EXPECT_EQ(error_text(), "Expected element <MODULE> to appear exactly once.\n");
}

TEST_F(CountReports, BoundsOfANamedPath) {
    EXPECT_FALSE(visitor.report_unexpected_elem_count(module(), 1, 4, 2, "MODULE", "INNER"));
    EXPECT_EQ(error_text(), "Expected element <MODULE> to appear 1-4 times.\n");
}

struct HowOften {
    unsigned int min_count, max_count;
    const char* text;
};

TEST_F(Reports, CountErrorShowsItsBounds) {
    const HowOften rows[] = {
        {0, 0, "Unexpected element 'MODULE'."},
        {1, 1, "Expected element <MODULE> to appear exactly once."},
        {2, 2, "Expected element <MODULE> to appear exactly 2 times."},
        {4294967295, 4294967295, "Expected element <MODULE> to appear exactly 4294967295 times."},
        {0, 1, "Expected element <MODULE> to appear 0-1 times."},
        {1, 3, "Expected element <MODULE> to appear 1-3 times."},
    };
    for (const HowOften& row : rows) {
        callbacks.errors.clear();
        EXPECT_FALSE(visitor.report_unexpected_elem_count_error(module(), row.min_count, row.max_count));
        EXPECT_EQ(error_text(), std::string(row.text) + "\n");
    }
}

TEST_F(Reports, ASecondElementFailsOnEntryWhereOneIsAllowed) {
    const auto doc = parsed("<top>\n<PORT_LIST/>\n<PORT_LIST/>\n<PORT_LIST/></top>");
    callbacks.source_name = "[mem]";
    ProbeVisitor walker(&callbacks, [](ProbeVisitor& self, const XMLElement& elem) {
        return self.report_unexpected_elem_stack_count(elem, 1, 1);
    });
    EXPECT_FALSE(doc->Accept(&walker));
    EXPECT_THAT(
        callbacks.errors,
        ElementsAre("Error in '[mem]', line 3\nExpected element <PORT_LIST> to appear exactly once.\n"));
}

TEST_F(Reports, UnexpectedAttributesAreEachReportedAtTheirLine) {
    EXPECT_FALSE(visitor.report_unexpected_attrs(module(), 1, "name"));
    EXPECT_THAT(callbacks.errors,
                ElementsAre("Error in 'a.xml', line 12\nUnexpected attribute 'function'.\n",
                            "Error in 'a.xml', line 13\nUnexpected attribute 'isKernelWrapper'.\n"));
}

TEST_F(Reports, AllowedAttributesInAllForms) {
    const char* names[] = {"isKernelWrapper", "other", "function"};
    const char* const constant_names[] = {"isKernelWrapper", "other", "function"};
    EXPECT_TRUE(visitor.report_unexpected_attrs(module(), 3, names));
    EXPECT_TRUE(visitor.report_unexpected_attrs(module(), 3, constant_names));
    EXPECT_TRUE(visitor.report_unexpected_attrs(module(), 3, "isKernelWrapper", "other", "function"));
    EXPECT_TRUE(visitor.report_unexpected_attrs(module(), {"isKernelWrapper", "other", "function"}));
    EXPECT_THAT(callbacks.errors, IsEmpty());
}

TEST_F(Reports, AStrayAttributeInAllForms) {
    const char* names[] = {"isKernelWrapper", "function"};
    const char* const constant_names[] = {"isKernelWrapper", "function"};
    EXPECT_FALSE(visitor.report_unexpected_attrs(module(), 1, names));
    EXPECT_FALSE(visitor.report_unexpected_attrs(module(), 1, constant_names));
    EXPECT_FALSE(visitor.report_unexpected_attrs(module(), 1, "isKernelWrapper"));
    EXPECT_FALSE(visitor.report_unexpected_attrs(module(), std::vector<std::string>{"isKernelWrapper"}));
    EXPECT_THAT(callbacks.errors,
                testing::Each("Error in 'a.xml', line 12\nUnexpected attribute 'function'.\n"));
    EXPECT_EQ(callbacks.errors.size(), 4u);
}

TEST_F(Reports, AnEmptyListMakesEveryAttributeUnexpected) {
    EXPECT_FALSE(visitor.report_unexpected_attrs(module(), 0));
    EXPECT_FALSE(visitor.report_unexpected_attrs(module(), 0, nullptr));
    EXPECT_FALSE(visitor.report_unexpected_attrs(module(), std::vector<std::string>()));
    EXPECT_EQ(callbacks.errors.size(), 6u);
}

TEST_F(Reports, AttributeNamesAreComparedExactly) {
    EXPECT_FALSE(visitor.report_unexpected_attrs(module(), 3, "Function", "func", "isKernelWrapper"));
    EXPECT_EQ(error_text(), "Unexpected attribute 'function'.\n");
}

TEST_F(Reports, AnElementWithoutAttributesPassesUnlessThereWasAnError) {
    const XMLElement& inner = *module().FirstChildElement("INNER");
    EXPECT_TRUE(visitor.report_unexpected_attrs(inner, 0));
    visitor.report_error("x");
    EXPECT_FALSE(visitor.report_unexpected_attrs(inner, 0));
    EXPECT_EQ(callbacks.errors.size(), 1u);
}

TEST_F(Reports, BoundsInTheWrongOrderStopTheProcess) {
    const char* text = "min_count <= max_count";
    EXPECT_CONTRACT(visitor.report_unexpected_elem_stack_count(module(), 2, 1), text);
    EXPECT_CONTRACT(visitor.report_unexpected_elem_count(module(), 2, 1, 1, "a"), text);
    EXPECT_CONTRACT(visitor.report_unexpected_elem_count_error(module(), 1, 0), text);
}

TEST_F(Reports, NullNamesStopTheProcess) {
    constexpr const char* NO_NAME = nullptr;
    const char* names[] = {"a", nullptr};
    EXPECT_CONTRACT(visitor.report_unexpected_elem_stack(module(), 1, NO_NAME), "elem_name != 0");
    EXPECT_CONTRACT(visitor.report_unexpected_elem_stack_with_top(module(), 1, NO_NAME), "elem_name != 0");
    EXPECT_CONTRACT(visitor.report_unexpected_elem_count(module(), 1, 1, NO_NAME), "elem_name != 0");
    EXPECT_CONTRACT(visitor.report_unexpected_elem_count(module(), 1, 2, 1, NO_NAME), "elem_name != 0");
    EXPECT_CONTRACT(visitor.report_unexpected_attrs(module(), 1, NO_NAME), "elem_name != 0");
    EXPECT_CONTRACT(visitor.report_unexpected_attrs(module(), 2, names), "elem_name != 0");
    EXPECT_CONTRACT(visitor.report_unexpected_attrs(module(), 1, nullptr), "names != 0");
}

} // namespace
} // namespace zan::test
