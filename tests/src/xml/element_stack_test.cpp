// SPDX-License-Identifier: Apache-2.0
// The walk: open elements, counts by path, the sticky error flag, child visitors, debug lines.
#include "BaseVisitor.h"
#include "contract_death.h"
#include "xml_probe.h"

namespace zan::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using tinyxml2::XMLElement;

using Paths = std::vector<std::string>;

// Walks the text with a visitor that notes the path of each element it enters.
Paths paths_entered(const std::string& xml) {
    Paths paths;
    ProbeVisitor visitor([&paths](ProbeVisitor& self, const XMLElement&) {
        paths.push_back(self.get_elem_stack_key());
        return true;
    });
    EXPECT_TRUE(parsed(xml)->Accept(&visitor));
    return paths;
}

TEST(ElementStack, HoldsTheNamesOfTheOpenElements) {
    EXPECT_THAT(paths_entered("<a><b><c/></b><d/></a>"), ElementsAre("a", "a/b", "a/b/c", "a/d"));
}

TEST(ElementStack, IsEmptyBeforeAndAfterAWalk) {
    ProbeVisitor visitor;
    EXPECT_EQ(visitor.get_elem_stack_key(), "");
    EXPECT_TRUE(parsed("<a><b/></a>")->Accept(&visitor));
    EXPECT_THAT(visitor.m_elem_stack, IsEmpty());
    EXPECT_EQ(visitor.get_elem_stack_key(), "");
}

TEST(ElementStack, SeveralRootsAreWalkedOnOneStack) {
    EXPECT_THAT(paths_entered("<a><b/></a><a/><c/>"), ElementsAre("a", "a/b", "a", "c"));
}

TEST(ElementStack, TextCommentsAndDeclarationsChangeNothing) {
    EXPECT_THAT(
        paths_entered("<?xml version='1.0'?><!DOCTYPE a><!--x--><a>text<!--y--><b/><![CDATA[<c/>]]></a>"),
        ElementsAre("a", "a/b"));
}

TEST(ElementStack, AVisitorStartedOnAnInnerElementSeesNothingAbove) {
    const auto doc = parsed("<a><b><c/></b></a>");
    ProbeVisitor visitor;
    EXPECT_TRUE(doc->RootElement()->FirstChildElement("b")->Accept(&visitor));
    EXPECT_THAT(visitor.m_elem_counts, ElementsAre(Pair("b", 1u), Pair("b/c", 1u)));
}

// Returns what `query` returns while the element named "stop" is the top of the stack.
bool at_stop(const std::string& xml, const std::function<bool(ProbeVisitor&)>& query) {
    bool answer = false;
    int stops = 0;
    ProbeVisitor visitor([&](ProbeVisitor& self, const XMLElement& elem) {
        if (std::string(elem.Value()) == "stop") {
            ++stops;
            answer = query(self);
        }
        return true;
    });
    parsed(xml)->Accept(&visitor);
    EXPECT_EQ(stops, 1);
    return answer;
}

TEST(CheckElementStack, ComparesTheAncestorsAndIgnoresTheTop) {
    const std::string xml = "<a><b><stop/></b></a>";
    EXPECT_TRUE(at_stop(xml, [](auto& v) { return v.check_element_stack(2, "a", "b"); }));
    EXPECT_FALSE(at_stop(xml, [](auto& v) { return v.check_element_stack(2, "b", "a"); }));
    EXPECT_FALSE(at_stop(xml, [](auto& v) { return v.check_element_stack(2, "a", "stop"); }));
    EXPECT_FALSE(at_stop(xml, [](auto& v) { return v.check_element_stack(1, "a"); }));
    EXPECT_FALSE(at_stop(xml, [](auto& v) { return v.check_element_stack(3, "a", "b", "stop"); }));
    EXPECT_FALSE(at_stop(xml, [](auto& v) { return v.check_element_stack(0); }));
}

TEST(CheckElementStack, WithNoNamesHoldsOnTheFirstElementOnly) {
    EXPECT_FALSE(ProbeVisitor().check_element_stack(0));
    EXPECT_TRUE(at_stop("<stop/>", [](auto& v) { return v.check_element_stack(0); }));
}

TEST(CheckElementStackWithTop, ComparesTheWholeStack) {
    const std::string xml = "<a><b><stop/></b></a>";
    EXPECT_TRUE(at_stop(xml, [](auto& v) { return v.check_element_stack_with_top(3, "a", "b", "stop"); }));
    EXPECT_FALSE(at_stop(xml, [](auto& v) { return v.check_element_stack_with_top(3, "a", "b", "c"); }));
    EXPECT_FALSE(at_stop(xml, [](auto& v) { return v.check_element_stack_with_top(2, "a", "b"); }));
    EXPECT_FALSE(
        at_stop(xml, [](auto& v) { return v.check_element_stack_with_top(4, "a", "b", "stop", "x"); }));
}

TEST(CheckElementStackWithTop, WithNoNamesHoldsOnAnEmptyStackOnly) {
    EXPECT_TRUE(ProbeVisitor().check_element_stack_with_top(0));
    EXPECT_FALSE(at_stop("<stop/>", [](auto& v) { return v.check_element_stack_with_top(0); }));
}

TEST(ElementCount, OfNoNamesIsZero) {
    ProbeVisitor visitor;
    EXPECT_EQ(visitor.get_element_count(0), 0u);
    parsed("<a/>")->Accept(&visitor);
    EXPECT_EQ(visitor.get_element_count(0), 0u);
}

TEST(ElementCount, OfANameAtTwoDepthsIsKeptByPath) {
    ProbeVisitor visitor;
    parsed("<a><x/><b><x/><x/></b></a>")->Accept(&visitor);
    EXPECT_EQ(visitor.get_element_count(2, "a", "x"), 1u);
    EXPECT_EQ(visitor.get_element_count(3, "a", "b", "x"), 2u);
    EXPECT_EQ(visitor.get_element_count(1, "x"), 0u);
    EXPECT_EQ(visitor.get_element_count(3, "a", "b", "y"), 0u);
}

TEST(ElementCount, SurvivesLeavingTheElement) {
    std::vector<unsigned int> counts;
    ProbeVisitor visitor([&counts](ProbeVisitor& self, const XMLElement&) {
        counts.push_back(self.get_element_count(2, "LIST", "MODULE"));
        return true;
    });
    parsed("<LIST><MODULE/><MODULE/><MODULE/></LIST>")->Accept(&visitor);
    EXPECT_THAT(counts, ElementsAre(0u, 1u, 2u, 3u));
    EXPECT_THAT(visitor.m_elem_counts, ElementsAre(Pair("LIST", 1u), Pair("LIST/MODULE", 3u)));
}

TEST(ElementCount, RunsOnAcrossParentsOfTheSamePath) {
    ProbeVisitor visitor;
    parsed("<a><b><c/></b><b><c/></b></a>")->Accept(&visitor);
    EXPECT_EQ(visitor.get_element_count(3, "a", "b", "c"), 2u);
}

TEST(ElementCount, AnEmptyNameIsAPartOfThePath) {
    ProbeVisitor visitor;
    parsed("<a/>")->Accept(&visitor);
    EXPECT_EQ(visitor.get_element_count(2, "", "a"), 0u);
}

TEST(ElementCount, EntryOfTheCurrentPathIsMadeWithZero) {
    ProbeVisitor visitor;
    visitor.m_elem_stack = {"a", "b"};
    EXPECT_EQ(visitor.get_elem_stack_count_entry(), 0u);
    EXPECT_THAT(visitor.m_elem_counts, ElementsAre(Pair("a/b", 0u)));
}

TEST(StickyError, LaterSiblingsAreNotEntered) {
    const auto doc = parsed("<a><good/><bad><inner/></bad><good/><good/></a><a/>");
    Paths entered;
    ProbeVisitor visitor([&entered](ProbeVisitor& self, const XMLElement& elem) {
        entered.push_back(elem.Value());
        return std::string(elem.Value()) == "bad" ? self.report_error("x") : true;
    });
    EXPECT_FALSE(doc->Accept(&visitor));
    EXPECT_THAT(entered, ElementsAre("a", "good", "bad"));
    EXPECT_THAT(visitor.m_elem_stack, ElementsAre("a", "bad"));
    EXPECT_THAT(visitor.m_elem_counts, ElementsAre(Pair("a", 1u), Pair("a/bad", 1u), Pair("a/good", 1u)));
}

TEST(StickyError, ElementOperationsOnlyReturnFalse) {
    const auto doc = parsed("<a/>");
    const XMLElement& elem = *doc->RootElement();
    ProbeVisitor visitor;
    visitor.m_elem_stack = {"other"};
    visitor.report_error("x");
    EXPECT_FALSE(visitor.xml::BaseVisitor::VisitEnter(elem, nullptr));
    // The top is another element: a visitor without an error would stop the process here.
    EXPECT_FALSE(visitor.VisitExit(elem));
    EXPECT_THAT(visitor.m_elem_stack, ElementsAre("other"));
    EXPECT_THAT(visitor.m_elem_counts, IsEmpty());
}

TEST(StickyError, IsTheResultOfAllOtherOperations) {
    const auto doc = parsed("<!--c--><a>text</a>");
    const auto* comment = doc->FirstChild()->ToComment();
    const auto* text = doc->RootElement()->FirstChild()->ToText();
    const auto* declaration = doc->NewDeclaration();
    const auto* unknown = doc->NewUnknown("u");
    ProbeVisitor visitor;
    for (const bool good : {true, false}) {
        EXPECT_EQ(visitor.VisitEnter(*doc), good);
        EXPECT_EQ(visitor.VisitExit(*doc), good);
        EXPECT_EQ(visitor.Visit(*comment), good);
        EXPECT_EQ(visitor.Visit(*text), good);
        EXPECT_EQ(visitor.Visit(*declaration), good);
        EXPECT_EQ(visitor.Visit(*unknown), good);
        visitor.report_error("x");
    }
}

TEST(StickyError, OfADocumentOperationMakesTheWalkFail) {
    ProbeVisitor visitor([](ProbeVisitor& self, const XMLElement&) { return self.report_error("x"); });
    EXPECT_FALSE(parsed("<a/>")->Accept(&visitor));
}

TEST(StickyError, AHandlersFalseAloneOnlySkipsTheSubtree) {
    Paths entered;
    ProbeVisitor visitor([&entered](ProbeVisitor&, const XMLElement& elem) {
        entered.push_back(elem.Value());
        return std::string(elem.Value()) != "skip";
    });
    EXPECT_TRUE(parsed("<a><skip><inner/></skip><b/></a>")->Accept(&visitor));
    EXPECT_THAT(entered, ElementsAre("a", "skip", "b"));
}

TEST(ChildVisitor, TakesCallbacksAndDebugModeAndNothingElse) {
    RecordingCallbacks callbacks;
    ProbeVisitor parent(&callbacks, {}, true);
    parent.m_elem_stack = {"a"};
    parent.m_elem_counts = {{"a", 1}};
    parent.report_error("x");
    const ProbeVisitor child(&parent);
    EXPECT_EQ(child.m_callbacks, &callbacks);
    EXPECT_TRUE(child.m_debug_mode);
    EXPECT_FALSE(child.m_has_error);
    EXPECT_THAT(child.m_elem_stack, IsEmpty());
    EXPECT_THAT(child.m_elem_counts, IsEmpty());
}

// Walks "<top>" itself and hands each list over to a child, which fails on an element named "bad".
struct HandOver {
    explicit HandOver(const std::string& xml) {
        ProbeVisitor parent(&callbacks, [this](ProbeVisitor& self, const XMLElement& elem) {
            parent_paths.push_back(self.get_elem_stack_key());
            return self.check_element_stack(0) || hand_over_list(self, elem);
        });
        result = parsed(xml)->Accept(&parent);
    }

    bool hand_over_list(ProbeVisitor& parent, const XMLElement& list) {
        ProbeVisitor child(&parent, [this](ProbeVisitor& self, const XMLElement& elem) {
            child_paths.push_back(self.get_elem_stack_key());
            return std::string(elem.Value()) == "bad" ? self.report_unexpected_elem(elem, "") : true;
        });
        return parent.hand_over(list, &child);
    }

    RecordingCallbacks callbacks;
    Paths parent_paths, child_paths;
    bool result = false;
};

TEST(ChildVisitor, WalksTheSubtreeInsteadOfItsParent) {
    const HandOver walk("<top><list><x><y/></x></list><list><z/></list></top>");
    EXPECT_TRUE(walk.result);
    EXPECT_THAT(walk.parent_paths, ElementsAre("top", "top/list", "top/list"));
    EXPECT_THAT(walk.child_paths, ElementsAre("list", "list/x", "list/x/y", "list", "list/z"));
}

TEST(ChildVisitor, ItsFailureIsTheParentsFailure) {
    const HandOver walk("<top>\n<list><bad/><x/></list><list/></top>");
    EXPECT_FALSE(walk.result);
    EXPECT_THAT(walk.parent_paths, ElementsAre("top", "top/list"));
    EXPECT_THAT(walk.child_paths, ElementsAre("list", "list/bad"));
    EXPECT_THAT(walk.callbacks.errors, ElementsAre("Error in 'a.xml', line 2\nUnexpected element 'bad'.\n"));
}

TEST(ChildVisitor, ItsSuccessDoesNotClearTheParentsError) {
    const auto doc = parsed("<a/>");
    ProbeVisitor parent;
    parent.report_error("x");
    ProbeVisitor child(&parent);
    EXPECT_FALSE(parent.hand_over(*doc->RootElement(), &child));
    EXPECT_FALSE(child.m_has_error);
    EXPECT_TRUE(parent.m_has_error);
}

TEST(DebugMode, PrintsEachStepOfTheWalk) {
    RecordingCallbacks callbacks;
    ProbeVisitor visitor(&callbacks, {}, true);
    parsed("<a><b/></a>")->Accept(&visitor);
    EXPECT_EQ(callbacks.debug_text,
              "[xml] entering document\n"
              "[xml] entering a\n"
              "[xml] entering a/b\n"
              "[xml] exiting a/b\n"
              "[xml] exiting a\n"
              "[xml] exiting document\n");
}

TEST(DebugMode, IsPassedOnToChildren) {
    RecordingCallbacks callbacks;
    ProbeVisitor parent(&callbacks, {}, true);
    ProbeVisitor child(&parent);
    parsed("<a/>")->RootElement()->Accept(&child);
    EXPECT_EQ(callbacks.debug_text, "[xml] entering a\n[xml] exiting a\n");
}

TEST(DebugMode, OffOrWithoutCallbacksSaysNothing) {
    RecordingCallbacks callbacks;
    ProbeVisitor quiet(&callbacks);
    parsed("<a/>")->Accept(&quiet);
    quiet.debug("text");
    EXPECT_EQ(callbacks.debug_text, "");
    ProbeVisitor unheard;
    unheard.m_debug_mode = true;
    unheard.debug("text");
    EXPECT_TRUE(parsed("<a/>")->Accept(&unheard));
}

TEST(SourceName, IsTheCallbacksOwn) {
    RecordingCallbacks callbacks;
    EXPECT_EQ(ProbeVisitor(&callbacks).get_source_name(), callbacks.source_name);
}

TEST(VisitorContracts, ParentIsNotNull) {
    EXPECT_CONTRACT(ProbeVisitor(static_cast<xml::BaseVisitor*>(nullptr)), "parent != 0");
}

TEST(VisitorContracts, NamesAreNotNull) {
    constexpr const char* NO_NAME = nullptr;
    ProbeVisitor visitor;
    visitor.m_elem_stack = {"a"};
    EXPECT_CONTRACT(visitor.check_element_stack(1, NO_NAME), "elem_name != 0");
    EXPECT_CONTRACT(visitor.check_element_stack_with_top(1, NO_NAME), "elem_name != 0");
    EXPECT_CONTRACT(visitor.get_element_count(2, "a", NO_NAME), "elem_name != 0");
}

TEST(VisitorContracts, AnElementIsLeftOnlyAfterItWasEntered) {
    const auto doc = parsed("<a/>");
    ProbeVisitor visitor;
    EXPECT_CONTRACT(visitor.VisitExit(*doc->RootElement()), "m_elem_stack.size() > 0");
    visitor.m_elem_stack = {"b"};
    EXPECT_CONTRACT(visitor.VisitExit(*doc->RootElement()), "m_elem_stack.back() == elem.Value()");
}

TEST(VisitorContracts, SourceNameNeedsCallbacks) {
    EXPECT_CONTRACT(ProbeVisitor().get_source_name(), "m_callbacks != 0");
}

} // namespace
} // namespace zan::test
